// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace marrowby {

/// The account that this process runs as.
struct Account {
    std::string name;
    std::filesystem::path home;

    /// `nullopt` when the user database does not know it.
    [[nodiscard]] static std::optional<Account> current();
};

}  // namespace marrowby
