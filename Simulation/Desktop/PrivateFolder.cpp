// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/PrivateFolder.h"

#include <cstdlib>
#include <system_error>

namespace marrowby {

std::expected<PrivateFolder, std::string> PrivateFolder::create() {
    std::error_code error;
    std::string name = (std::filesystem::temp_directory_path(error) / "marrowby-XXXXXX").string();
    if (error || ::mkdtemp(name.data()) == nullptr) {
        return std::unexpected("No private folder could be made for the rehearsal’s data.");
    }
    return PrivateFolder(name);
}

PrivateFolder::~PrivateFolder() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
}

std::vector<std::string> homeVariables(const std::filesystem::path& folder) {
    std::vector<std::string> variables;
    for (const char* name : {"HOME", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME"})
        variables.push_back(std::string(name) + "=" + folder.string());
    return variables;
}

}  // namespace marrowby
