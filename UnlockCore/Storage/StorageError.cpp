#include "UnlockCore/Storage/StorageError.h"

namespace marrowby {

namespace {

struct Description {
    // The system's own errors bring their localized text with them.
    std::string operator()(const OwnerCheckFailure& error) const { return error.message; }
    std::string operator()(const FileError& error) const { return error.message; }
    template <typename Error>
    std::string operator()(const Error& error) const {
        return std::string(description(error));
    }
};

}  // namespace

std::string description(const StorageError& error) {
    return std::visit(Description(), error);
}

}  // namespace marrowby
