#include "Kit/LockScreenSpace.h"

#include <array>
#include <utility>

namespace marrowby {

LockScreenSpace::LockScreenSpace(std::shared_ptr<SkyLightFunctions> functions)
    : functions_(std::move(functions)),
      connection_(functions_->mainConnectionID()),
      space_(functions_->spaceCreate(connection_, 1, 0)) {
    functions_->spaceSetAbsoluteLevel(connection_, space_, absoluteLevel);
    functions_->showSpaces(connection_, std::array{space_});
}

void LockScreenSpace::add(const LockScreenPanel& window) {
    functions_->spaceAddWindowsAndRemoveFromSpaces(connection_, space_,
                                                   std::array{window.windowNumber()}, moveOptions);
}

void LockScreenSpace::remove(const LockScreenPanel& window) {
    functions_->removeWindowsFromSpaces(connection_, std::array{window.windowNumber()},
                                        std::array{space_});
}

}  // namespace marrowby
