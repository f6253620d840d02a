// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/DeviceOwnerCheck.h"

#include <memory>
#include <utility>

namespace marrowby {

namespace {

constexpr std::int64_t userCancel = -2;
constexpr std::int64_t systemCancel = -4;
constexpr std::int64_t appCancel = -9;

/// Other domains use the same codes with other meanings.
bool isCancel(const OwnerAuthenticationError& error) {
    if (error.domain != OwnerAuthenticationError::authenticationDomain) return false;
    return error.code == userCancel || error.code == systemCancel || error.code == appCancel;
}

OwnerCheck::Result outcome(const std::expected<bool, OwnerAuthenticationError>& reply) {
    if (reply && *reply) return {};
    if (reply || isCancel(reply.error()))
        return std::unexpected(OwnerCheckError(OwnerCheckError::Cancelled{}));
    return std::unexpected(OwnerCheckFailure{reply.error().message});
}

}  // namespace

std::expected<void, std::string> DeviceOwnerCheck::canConfirm() {
    const auto possible = authentication_.makeContext()->canEvaluate(deviceOwnerAuthentication);
    if (possible) return {};
    return std::unexpected(possible.error().message);
}

void DeviceOwnerCheck::confirmOwner(const std::string& reason, Completion completion) {
    const std::shared_ptr<OwnerAuthenticationContext> context = authentication_.makeContext();
    if (const auto possible = context->canEvaluate(deviceOwnerAuthentication); !possible) {
        completion(std::unexpected(
            OwnerCheckError(OwnerCheckError::Unavailable{possible.error().message})));
        return;
    }
    // The reply retains the context: releasing it would dismiss the prompt.
    context->evaluate(
        deviceOwnerAuthentication, reason,
        [context, completion = std::move(completion)](
            std::expected<bool, OwnerAuthenticationError> reply) { completion(outcome(reply)); });
}

}  // namespace marrowby
