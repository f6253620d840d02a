// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/XdgFolders.h"

#include "Platforms/Linux/Desktop/Account.h"

#include <cstdlib>

namespace marrowby {

namespace {

std::optional<std::filesystem::path> absolute(const std::optional<std::string>& text) {
    if (!text || !std::filesystem::path(*text).is_absolute()) return std::nullopt;
    return *text;
}

}  // namespace

std::optional<XdgFolders> XdgFolders::of(const Environment& environment,
                                         const std::optional<std::filesystem::path>& accountHome) {
    std::optional<std::filesystem::path> home = absolute(environment("HOME"));
    if (!home) home = accountHome;
    const auto data = absolute(environment("XDG_DATA_HOME"));
    const auto config = absolute(environment("XDG_CONFIG_HOME"));
    if ((!data || !config) && (!home || !home->is_absolute())) return std::nullopt;
    return XdgFolders{.dataHome = data ? *data : *home / ".local/share",
                      .configHome = config ? *config : *home / ".config"};
}

std::optional<XdgFolders> XdgFolders::current() {
    return of(
        [](const char* name) -> std::optional<std::string> {
            const char* value = std::getenv(name);
            return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
        },
        Account::current().transform([](const Account& account) { return account.home; }));
}

}  // namespace marrowby
