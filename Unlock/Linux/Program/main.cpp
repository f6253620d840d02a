#include "Unlock/Linux/UnlockProgram.h"

int main(int argumentCount, char** arguments) {
    marrowby::UnlockSurroundings thisMachine;
    return marrowby::UnlockProgram::run(argumentCount, arguments, thisMachine);
}
