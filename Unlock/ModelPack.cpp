#include "Unlock/ModelPack.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <map>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace marrowby {

namespace {

using Json = nlohmann::json;
using Values = std::vector<ModelFileFacts::Value>;

constexpr const char* identifierKey = "marrowby.model.identifier";

struct Role {
    const char* key;
    const char* name;
};
constexpr std::array roles{
    Role{"finder", "the face finder"}, Role{"landmarks", "the finder of face landmarks"},
    Role{"embedder", "the face model"}, Role{"realFace", "the real-face model"}};

/// What the manifest says of one network.
struct Entry {
    std::string name;
    std::string file;
    std::string identifier;
    std::string sha256;
    Values inputs;
    Values outputs;
};

Values values(const Json& list) {
    Values result;
    for (const Json& value : list) {
        result.push_back({value.at("name").get<std::string>(),
                          value.at("shape").get<std::vector<std::int64_t>>()});
    }
    return result;
}

struct Manifest {
    std::string name;
    /// By role.
    std::map<std::string, Entry> networks;
};

/// Throws what the JSON library throws for anything that is not as it should be.
Manifest read(const Json& manifest) {
    Manifest result{.name = manifest.at("name"), .networks = {}};
    for (const Json& network : manifest.at("networks")) {
        Entry entry{.name = network.at("name"),
                    .file = network.at("file"),
                    .identifier = network.at("identifier"),
                    .sha256 = network.at("sha256"),
                    .inputs = values(network.at("inputs")),
                    .outputs = values(network.at("outputs"))};
        result.networks.emplace(network.at("role").get<std::string>(), std::move(entry));
    }
    return result;
}

std::expected<Manifest, ModelPackError> readManifest(const std::filesystem::path& path) {
    std::ifstream stream(path);
    if (!stream) return std::unexpected(ModelPackError{ModelPack::manifestFile, "isn’t there"});
    try {
        return read(Json::parse(stream));
    } catch (const Json::exception&) {
        return std::unexpected(ModelPackError{ModelPack::manifestFile, "is damaged"});
    }
}

/// Why the file is not what its entry says; empty when it is.
std::string fault(const Entry& entry, const std::filesystem::path& folder,
                  const ModelFiles& files) {
    // A name, not a way out of the folder.
    if (std::filesystem::path(entry.file).filename() != entry.file)
        return "lies outside of the pack";
    const auto facts = files.facts(folder / entry.file);
    std::error_code error;
    if (!facts && !std::filesystem::exists(folder / entry.file, error)) return "isn’t there";
    if (!facts || facts->sha256 != entry.sha256) return "was changed";
    const auto found = facts->metadata.find(identifierKey);
    const std::string identifier = found == facts->metadata.end() ? "" : found->second;
    if (identifier != entry.identifier) {
        return "says it is “" + identifier + "”, not “" + entry.identifier + "”";
    }
    if (facts->inputs != entry.inputs) return "takes other inputs than its description says";
    if (facts->outputs != entry.outputs) return "gives other outputs than its description says";
    return {};
}

}  // namespace

std::string description(const ModelPackError& error) {
    return "The model pack can’t be used: " + error.name + " " + error.reason + ".";
}

std::expected<ModelPack, ModelPackError> ModelPack::read(const std::filesystem::path& folder,
                                                         const ModelFiles& files) {
    const auto manifest = readManifest(folder / manifestFile);
    if (!manifest) return std::unexpected(manifest.error());
    const auto& networks = manifest->networks;
    for (const Role& role : roles) {
        const auto entry = networks.find(role.key);
        if (entry == networks.end()) {
            return std::unexpected(ModelPackError{role.name, "is missing"});
        }
        if (auto reason = fault(entry->second, folder, files); !reason.empty()) {
            return std::unexpected(ModelPackError{
                entry->second.name + " (" + entry->second.file + ")", std::move(reason)});
        }
    }
    return ModelPack{.folder = folder,
                     .name = manifest->name,
                     .embedderFile = networks.at("embedder").file,
                     .embedderIdentifier = networks.at("embedder").identifier,
                     .realFaceFile = networks.at("realFace").file,
                     .finderFile = networks.at("finder").file,
                     .landmarksFile = networks.at("landmarks").file,
                     .realFaceIdentifier = networks.at("realFace").identifier};
}

}  // namespace marrowby
