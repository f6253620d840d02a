// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/LocalOwnerAuthentication.h"

#include "Platforms/macOS/FoundationText.h"

#include <utility>

#import <LocalAuthentication/LocalAuthentication.h>

namespace marrowby {

namespace {

OwnerAuthenticationError plainError(NSError* error) {
    return {.domain = plainText(error.domain),
            .code = error.code,
            .message = plainText(error.localizedDescription)};
}

class LocalContext final : public OwnerAuthenticationContext {
  public:
    [[nodiscard]] std::expected<void, OwnerAuthenticationError> canEvaluate(
        std::int64_t policy) override {
        NSError* error = nil;
        if ([context_ canEvaluatePolicy:static_cast<LAPolicy>(policy) error:&error]) return {};
        return std::unexpected(plainError(error));
    }

    void evaluate(
        std::int64_t policy, const std::string& reason,
        std::function<void(std::expected<bool, OwnerAuthenticationError>)> reply) override {
        const auto answer = std::make_shared<const decltype(reply)>(std::move(reply));
        @try {
            [context_ evaluatePolicy:static_cast<LAPolicy>(policy)
                     localizedReason:foundationText(reason)
                               reply:^(BOOL success, NSError* error) {
                                 if (!success && error) {
                                     (*answer)(std::unexpected(plainError(error)));
                                 } else {
                                     (*answer)(success != NO);
                                 }
                               }];
        } @catch (NSException* exception) {
            (*answer)(
                std::unexpected(OwnerAuthenticationError{.domain = plainText(exception.name),
                                                         .code = 0,
                                                         .message = plainText(exception.reason)}));
        }
    }

  private:
    LAContext* context_ = [[LAContext alloc] init];
};

}  // namespace

std::shared_ptr<OwnerAuthenticationContext> LocalOwnerAuthentication::makeContext() {
    return std::make_shared<LocalContext>();
}

}  // namespace marrowby
