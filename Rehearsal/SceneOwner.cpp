#include "Rehearsal/SceneOwner.h"

#include <utility>

namespace marrowby {

namespace {

class WillingOwner final : public OwnerAuthenticationContext {
  public:
    explicit WillingOwner(MainThread& mainThread) : mainThread_(mainThread) {}

    [[nodiscard]] std::expected<void, OwnerAuthenticationError> canEvaluate(
        std::int64_t /*policy*/) override {
        return {};
    }

    void evaluate(
        std::int64_t /*policy*/, const std::string& /*reason*/,
        std::function<void(std::expected<bool, OwnerAuthenticationError>)> reply) override {
        mainThread_.post([reply = std::move(reply)] { reply(true); });
    }

  private:
    MainThread& mainThread_;
};

}  // namespace

std::shared_ptr<OwnerAuthenticationContext> SceneOwner::makeContext() {
    return std::make_shared<WillingOwner>(mainThread_);
}

}  // namespace marrowby
