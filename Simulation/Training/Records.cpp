// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Training/Records.h"

#include <fstream>
#include <system_error>

namespace marrowby {

template <typename Record>
std::expected<void, std::string> RecordFile<Record>::finish() const {
    const std::filesystem::path unfinished = path_.string() + ".unfinished";
    std::ofstream stream(unfinished, std::ios::binary);
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): streams write chars.
    stream.write(reinterpret_cast<const char*>(content_.data()),
                 static_cast<std::streamsize>(content_.size()));
    stream.close();
    std::error_code error;
    if (stream) std::filesystem::rename(unfinished, path_, error);
    if (!stream || error) return std::unexpected(path_.string() + " couldn’t be written.");
    return {};
}

template class RecordFile<records::Face>;
template class RecordFile<records::Scene>;

}  // namespace marrowby
