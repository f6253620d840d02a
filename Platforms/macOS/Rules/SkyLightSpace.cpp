// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/SkyLightSpace.h"

#include <utility>

namespace marrowby {

SkyLightSpace::SkyLightSpace(std::shared_ptr<SkyLightFunctions> functions)
    : functions_(std::move(functions)),
      connection_(functions_->mainConnectionID()),
      space_(functions_->spaceCreate(connection_, 1, 0)) {
    functions_->spaceSetAbsoluteLevel(connection_, space_, absoluteLevel);
    functions_->showSpaces(connection_, std::array{space_});
}

void SkyLightSpace::add(const LockScreenPanel& panel) {
    functions_->spaceAddWindowsAndRemoveFromSpaces(connection_, space_,
                                                   std::array{panel.windowNumber()}, moveOptions);
}

void SkyLightSpace::remove(const LockScreenPanel& panel) {
    functions_->removeWindowsFromSpaces(connection_, std::array{panel.windowNumber()},
                                        std::array{space_});
}

}  // namespace marrowby
