// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/OnnxFile.h"

#include "UnlockCore/Foundation/Phrase.h"

#include <array>
#include <fstream>
#include <limits>
#include <set>
#include <system_error>
#include <utility>

#include <onnx/onnx_pb.h>
#include <openssl/evp.h>

namespace marrowby {

namespace {

std::unexpected<std::string> refused(const std::filesystem::path& path, Phrase why) {
    return std::unexpected(translated(why, {{"file", path.filename().string()}}));
}

OnnxFile::Value value(const onnx::ValueInfoProto& info) {
    OnnxFile::Value result{.name = info.name(), .isFloatTensor = false, .shape = {}};
    if (!info.type().has_tensor_type()) return result;
    const auto& tensor = info.type().tensor_type();
    result.isFloatTensor = tensor.elem_type() == onnx::TensorProto::FLOAT;
    for (const auto& dimension : tensor.shape().dim()) {
        const std::int64_t size = dimension.has_dim_value() ? dimension.dim_value() : 0;
        result.shape.push_back(size > 0 ? size : 0);
    }
    return result;
}

}  // namespace

std::string OnnxFile::sha256() const {
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

std::expected<OnnxFile, std::string> OnnxFile::read(const OnnxSource& from) {
    const std::filesystem::path& path = from.path;
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return refused(path, Phrase("The model “{file}” isn’t there."));
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error) return refused(path, Phrase("The model “{file}” couldn’t be read."));
    if (size > largestFile) return refused(path, Phrase("The model “{file}” is too large."));

    OnnxFile file;
    file.bytes.resize(static_cast<std::size_t>(size));
    std::ifstream stream(path, std::ios::binary);
    if (!stream.read(file.bytes.data(), static_cast<std::streamsize>(size))) {
        return refused(path, Phrase("The model “{file}” couldn’t be read."));
    }
    if (!from.sha256.empty() && file.sha256() != from.sha256)
        return refused(path, Phrase("The model “{file}” was changed."));
    static_assert(largestFile <= std::numeric_limits<int>::max());
    onnx::ModelProto model;
    if (!model.ParseFromArray(file.bytes.data(), static_cast<int>(size)) ||
        model.graph().node().empty() || model.graph().output().empty()) {
        return refused(path, Phrase("The model “{file}” is damaged or not an ONNX file."));
    }

    std::set<std::string> weights;
    for (const auto& weight : model.graph().initializer())
        weights.insert(weight.name());
    for (const auto& input : model.graph().input()) {
        if (!weights.contains(input.name())) file.inputs.push_back(value(input));
    }
    for (const auto& output : model.graph().output())
        file.outputs.push_back(value(output));
    for (const auto& entry : model.metadata_props())
        file.metadata[entry.key()] = entry.value();
    return file;
}

}  // namespace marrowby
