#include "UnlockCore/Storage/StorageError.h"

namespace marrowby {

namespace {

struct Description {
    const PlatformWords& words;

    // The system's own errors bring their localized text with them.
    std::string operator()(const OwnerCheckFailure& error) const { return error.message; }
    std::string operator()(const FileError& error) const { return error.message; }
    std::string operator()(VaultError error) const { return description(error, words); }
    std::string operator()(const KeychainError& error) const { return description(error, words); }
    std::string operator()(const OwnerCheckError& error) const { return description(error, words); }
    template <typename Error>
    std::string operator()(const Error& error) const {
        return std::string(description(error));
    }
};

}  // namespace

std::string description(const StorageError& error, const PlatformWords& words) {
    return std::visit(Description{.words = words}, error);
}

}  // namespace marrowby
