// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace marrowby {

/// Keeps the data of a test build apart; none for the usual one. `chosen`: the user default
/// "sharedNamespace"; `testTag`: from the application's bundle.
[[nodiscard]] std::optional<std::string> sharedNamespace(std::optional<std::string> chosen,
                                                         const std::optional<std::string>& testTag);

}  // namespace marrowby
