#include "Rehearsal/SceneOwner.h"

#include "Platforms/Linux/PolkitOwnerAuthentication.h"

namespace marrowby {

namespace {

class SceneContext final : public OwnerAuthenticationContext {
  public:
    SceneContext(MainThread& mainThread, std::shared_ptr<const bool> confirms)
        : mainThread_(mainThread), confirms_(std::move(confirms)) {}

    [[nodiscard]] std::expected<void, OwnerAuthenticationError> canEvaluate(
        std::int64_t /*policy*/) override {
        return {};
    }

    void evaluate(
        std::int64_t /*policy*/, const std::string& /*reason*/,
        std::function<void(std::expected<bool, OwnerAuthenticationError>)> reply) override {
        mainThread_.post([reply = std::move(reply), confirms = *confirms_] {
            if (confirms) return reply(true);
            reply(std::unexpected(
                OwnerAuthenticationError{.domain = OwnerAuthenticationError::authenticationDomain,
                                         .code = PolkitOwnerAuthentication::cancelledByUser,
                                         .message = "cancelled"}));
        });
    }

  private:
    MainThread& mainThread_;
    const std::shared_ptr<const bool> confirms_;
};

}  // namespace

std::shared_ptr<OwnerAuthenticationContext> SceneOwner::makeContext() {
    return std::make_shared<SceneContext>(mainThread_, confirms_);
}

}  // namespace marrowby
