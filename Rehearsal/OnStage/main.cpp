#include "Rehearsal/OnStage/StagePlatformFactory.h"
#include "Unlock/Linux/UnlockProgram.h"

#include <cstdlib>

/// On the networks in the folder that MARROWBY_NETWORKS names, else in Models.
int main(int argumentCount, char** arguments) {
    const char* networks = std::getenv("MARROWBY_NETWORKS");
    marrowby::StagePlatformFactory stage(networks != nullptr ? networks : "Models");
    return marrowby::UnlockProgram::run(argumentCount, arguments, stage);
}
