#include "UnlockCore/Storage/FaceStoreError.h"

namespace marrowby {

namespace {

struct Description {
    std::string operator()(const FaceStoreError::Unreadable& error) const {
        return "Your saved face couldn’t be read, so nothing was changed (writing now would "
               "replace it). " +
               error.reason;
    }
    std::string operator()(const FaceStoreError::NotLoaded& /*unused*/) const {
        return "Your saved face hasn’t been opened yet.";
    }
    std::string operator()(const FaceStoreError::EmptyEnrolment& /*unused*/) const {
        return "Nothing was captured.";
    }
};

}  // namespace

std::string description(const FaceStoreError& error) {
    return std::visit(Description(), error);
}

}  // namespace marrowby
