#include "Rehearsal/OnStage/SceneOwner.h"

namespace marrowby {

void SceneOwner::confirmOwner(const std::string& /*reason*/, Completion completion) {
    mainThread_.post([completion = std::move(completion), confirms = *confirms_] {
        if (confirms) return completion({});
        completion(std::unexpected(OwnerCheckError(OwnerCheckError::Cancelled{})));
    });
}

}  // namespace marrowby
