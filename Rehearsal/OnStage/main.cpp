#include "Rehearsal/OnStage/StageSurroundings.h"
#include "Unlock/Linux/UnlockProgram.h"

#include <cstdlib>

int main(int argumentCount, char** arguments) {
    const char* shared = std::getenv("MARROWBY_SHARED");
    const std::filesystem::path folder = shared != nullptr ? shared : "../shared";
    marrowby::StageSurroundings stage(folder / "models");
    return marrowby::UnlockProgram::run(argumentCount, arguments, stage);
}
