#include "Platforms/Linux/OnnxModelFiles.h"

#include "Platforms/Linux/OnnxFile.h"

#include <array>
#include <utility>

#include <openssl/evp.h>

namespace marrowby {

namespace {

std::string sha256(const std::string& bytes) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_sha256(), nullptr) != 1)
        return {};
    constexpr const char* digits = "0123456789abcdef";
    std::string text;
    for (unsigned int i = 0; i < length; ++i) {
        text += digits[digest.at(i) >> 4U];
        text += digits[digest.at(i) & 0xfU];
    }
    return text;
}

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
    return ModelFileFacts{.sha256 = sha256(file->bytes),
                          .inputs = values(file->inputs),
                          .outputs = values(file->outputs),
                          .metadata = std::move(file->metadata)};
}

}  // namespace marrowby
