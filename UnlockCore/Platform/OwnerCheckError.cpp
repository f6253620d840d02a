#include "UnlockCore/Platform/OwnerCheckError.h"

namespace marrowby {

namespace {

struct Description {
    std::string operator()(const OwnerCheckError::Unavailable& error) const {
        return "macOS can’t check it’s you right now. " + error.explanation;
    }
    std::string operator()(const OwnerCheckError::Cancelled& /*unused*/) const {
        return "Cancelled.";
    }
};

}  // namespace

std::string description(const OwnerCheckError& error) {
    return std::visit(Description(), error);
}

}  // namespace marrowby
