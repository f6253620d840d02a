// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/UnlockProgram.h"

int main(int argumentCount, char** arguments) {
    marrowby::PlatformFactory thisMachine;
    return marrowby::UnlockProgram::run(argumentCount, arguments, thisMachine);
}
