#include "Rehearsal/SceneDirectory.h"

#include <algorithm>
#include <utility>

namespace marrowby {

class SceneDirectory::Account final : public Node, public Record {
  public:
    explicit Account(const SceneDirectory& directory) : directory_(directory) {}

    [[nodiscard]] Result<std::unique_ptr<Record>> record(const std::string& /*type*/,
                                                         const std::string& /*name*/) override {
        return std::make_unique<Account>(directory_);
    }
    [[nodiscard]] Result<void> verifyPassword(std::span<const std::uint8_t> password) override {
        if (directory_.isRight(password)) return {};
        return std::unexpected(DirectoryError{.domain = directoryErrorDomain,
                                              .code = directoryInvalidCredentials,
                                              .message = "The password is wrong."});
    }

  private:
    const SceneDirectory& directory_;
};

void SceneDirectory::setPassword(std::string password) {
    const MutexLock lock(mutex_);
    password_ = std::move(password);
}

Directory::Result<std::unique_ptr<Directory::Node>> SceneDirectory::openNode(
    std::uint32_t /*type*/) {
    return std::make_unique<Account>(*this);
}

bool SceneDirectory::isRight(std::span<const std::uint8_t> password) const {
    const MutexLock lock(mutex_);
    return std::ranges::equal(password, password_, {}, {},
                              [](char c) { return static_cast<std::uint8_t>(c); });
}

}  // namespace marrowby
