// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Storage/AppDataFolder.h"

#include <string>

namespace marrowby {

AppDataFolder AppDataFolder::in(const std::filesystem::path& base,
                                std::optional<std::string_view> testTag) {
    std::string name = "Marrowby Unlock";
    if (testTag) name.append(" (test-").append(*testTag).append(")");
    return {base / name};
}

}  // namespace marrowby
