// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/Account.h"

#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace marrowby {

std::optional<Account> Account::current() {
    std::vector<char> buffer(std::size_t{16} << 10);
    passwd account{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &account, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr || found->pw_name == nullptr || found->pw_dir == nullptr) {
        return std::nullopt;
    }
    return Account{.name = found->pw_name, .home = found->pw_dir};
}

}  // namespace marrowby
