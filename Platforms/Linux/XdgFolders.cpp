#include "Platforms/Linux/XdgFolders.h"

#include <cstdlib>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace marrowby {

namespace {

constexpr std::size_t accountBuffer = std::size_t{16} << 10;

std::optional<std::filesystem::path> absolute(const std::optional<std::string>& text) {
    if (!text || !std::filesystem::path(*text).is_absolute()) return std::nullopt;
    return *text;
}

std::optional<std::filesystem::path> homeOfAccount() {
    std::vector<char> buffer(accountBuffer);
    passwd account{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &account, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr || found->pw_dir == nullptr) {
        return std::nullopt;
    }
    return found->pw_dir;
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
        homeOfAccount());
}

}  // namespace marrowby
