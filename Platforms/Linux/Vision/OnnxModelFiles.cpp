// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/OnnxModelFiles.h"

#include "Platforms/Linux/Vision/OnnxFile.h"

#include <utility>

namespace marrowby {

namespace {

std::vector<ModelFileFacts::Value> values(const std::vector<OnnxFile::Value>& from) {
    std::vector<ModelFileFacts::Value> result;
    result.reserve(from.size());
    for (const OnnxFile::Value& value : from)
        result.push_back({value.name, value.shape});
    return result;
}

}  // namespace

std::expected<ModelFileFacts, std::string> OnnxModelFiles::facts(
    const std::filesystem::path& path) const {
    auto file = OnnxFile::read(path);
    if (!file) return std::unexpected(file.error());
    return ModelFileFacts{.sha256 = file->sha256(),
                          .inputs = values(file->inputs),
                          .outputs = values(file->outputs),
                          .metadata = std::move(file->metadata)};
}

}  // namespace marrowby
