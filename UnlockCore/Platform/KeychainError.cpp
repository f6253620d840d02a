#include "UnlockCore/Platform/KeychainError.h"

namespace marrowby {

namespace {

struct Description {
    std::string operator()(const KeychainError::Status& status) const {
        return "Keychain: " +
               (status.message ? *status.message : "error " + std::to_string(status.code));
    }
    std::string operator()(const KeychainError::UnexpectedData& /*unused*/) const {
        return "The keychain item isn’t in the expected format.";
    }
};

}  // namespace

std::string description(const KeychainError& error) {
    return std::visit(Description(), error);
}

}  // namespace marrowby
