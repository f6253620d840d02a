#include "Rehearsal/TemporaryFolder.h"

#include <cstdlib>
#include <system_error>

namespace marrowby {

std::expected<TemporaryFolder, std::string> TemporaryFolder::create() {
    std::error_code error;
    std::string name = (std::filesystem::temp_directory_path(error) / "marrowby-XXXXXX").string();
    if (error || ::mkdtemp(name.data()) == nullptr) {
        return std::unexpected("No private folder could be made for the rehearsal’s data.");
    }
    return TemporaryFolder(name);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
}

}  // namespace marrowby
