// SPDX-License-Identifier: Apache-2.0
#include "Simulation/OnStage/StagePlatformFactory.h"
#include "Unlock/Linux/UnlockProgram.h"

#include <cstdlib>

/// What the leak sanitizer would report of Qt 6.4 itself, where its stacks are whole
/// (fast_unwind_on_malloc=0): what its Wayland client asks for, and the errors of the interfaces
/// that its tray icon asks for.
// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming): the sanitizer's name.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:QtWaylandClient::\nleak:libQt6WaylandClient.so\nleak:QGenericUnixTheme::"
           "createPlatformSystemTrayIcon\n";
}
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)

/// Uses the models in the folder that MARROWBY_MODELS names, else in Models.
int main(int argumentCount, char** arguments) {
    const char* models = std::getenv("MARROWBY_MODELS");
    marrowby::StagePlatformFactory stage(models != nullptr ? models : "Models");
    return marrowby::UnlockProgram::run(argumentCount, arguments, stage);
}
