// SPDX-License-Identifier: Apache-2.0
#include "Simulation/OnStage/StagePlatformFactory.h"
#include "Unlock/Linux/UnlockProgram.h"

#include <cstdlib>

/// Uses the models in the folder that MARROWBY_MODELS names, else in Models.
int main(int argumentCount, char** arguments) {
    const char* models = std::getenv("MARROWBY_MODELS");
    marrowby::StagePlatformFactory stage(models != nullptr ? models : "Models");
    return marrowby::UnlockProgram::run(argumentCount, arguments, stage);
}
