// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/ModelPack.h"

#include "Unlock/Model/PublishedModels.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace marrowby {

namespace {

using Json = nlohmann::json;
using Values = std::vector<ModelFileFacts::Value>;

constexpr const char* identifierKey = "marrowby.model.identifier";

constexpr auto isNotThere = Phrase("{name} isn’t there");

struct Role {
    const char* key;
    Phrase name;
};
constexpr std::array roles{Role{"finder", Phrase("the face finder")},
                           Role{"landmarks", Phrase("the finder of face landmarks")},
                           Role{"embedder", Phrase("the face model")},
                           Role{"realFace", Phrase("the real-face model")}};

/// A manifest entry.
struct Entry {
    std::string name;
    std::string file;
    std::string identifier;
    std::string sha256;
    /// SHA-256 of the files it was made from, where given.
    std::vector<std::string> origins;
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

/// The rehearsal's models come from no file: words stand there instead.
std::vector<std::string> origins(const Json& model) {
    std::vector<std::string> result;
    const auto list = model.find("origin");
    if (list == model.end() || !list->is_array()) return result;
    for (const Json& origin : *list)
        result.push_back(origin.at("sha256").get<std::string>());
    return result;
}

struct Manifest {
    std::string name;
    /// By role.
    std::map<std::string, Entry> models;
};

/// Throws what the JSON library throws on any malformed entry.
Manifest read(const Json& manifest) {
    Manifest result{.name = manifest.at("name"), .models = {}};
    for (const Json& model : manifest.at("models")) {
        Entry entry{.name = model.at("name"),
                    .file = model.at("file"),
                    .identifier = model.at("identifier"),
                    .sha256 = model.at("sha256"),
                    .origins = origins(model),
                    .inputs = values(model.at("inputs")),
                    .outputs = values(model.at("outputs"))};
        result.models.emplace(model.at("role").get<std::string>(), std::move(entry));
    }
    return result;
}

std::expected<Manifest, ModelPackError> readManifest(const std::filesystem::path& path) {
    std::ifstream stream(path);
    const Filling name("name", ModelPack::manifestFile);
    if (!stream) return std::unexpected(ModelPackError{translated(isNotThere, {name})});
    try {
        return read(Json::parse(stream));
    } catch (const Json::exception&) {
        return std::unexpected(ModelPackError{translated("{name} is damaged", {name})});
    }
}

bool isAsPublished(const Manifest& manifest) {
    for (const Role& role : roles) {
        std::vector<std::string> published;
        for (const PublishedFile& file : publishedFiles) {
            if (file.role == role.key) published.emplace_back(file.sha256);
        }
        const Entry& entry = manifest.models.at(role.key);
        if (entry.origins != published) return false;
        if (entry.sha256 != published.front() && role.key == std::string_view("finder"))
            return false;
    }
    return manifest.name == ModelPack::standardName;
}

/// Why the file is not what its entry says; empty when it is.
std::string fault(const Entry& entry, const std::filesystem::path& folder,
                  const ModelFiles& files) {
    const Filling name("name", entry.name + " (" + entry.file + ")");
    // A plain name: no path out of the folder.
    if (std::filesystem::path(entry.file).filename() != entry.file)
        return translated("{name} lies outside of the pack", {name});
    const auto facts = files.facts(folder / entry.file);
    std::error_code error;
    if (!facts && !std::filesystem::exists(folder / entry.file, error))
        return translated(isNotThere, {name});
    if (!facts || facts->sha256 != entry.sha256) return translated("{name} was changed", {name});
    const auto found = facts->metadata.find(identifierKey);
    const std::string identifier = found == facts->metadata.end() ? "" : found->second;
    if (identifier != entry.identifier) {
        return translated("{name} says it is “{found}”, not “{expected}”",
                          {name, {"found", identifier}, {"expected", entry.identifier}});
    }
    if (facts->inputs != entry.inputs)
        return translated("{name} takes other inputs than its description says", {name});
    if (facts->outputs != entry.outputs)
        return translated("{name} gives other outputs than its description says", {name});
    return {};
}

}  // namespace

std::string description(const ModelPackError& error) {
    return translated("The model pack can’t be used: {reason}.", {{"reason", error.reason}});
}

std::expected<ModelPack, ModelPackError> ModelPack::read(const std::filesystem::path& folder,
                                                         const ModelFiles& files) {
    const auto manifest = readManifest(folder / manifestFile);
    if (!manifest) return std::unexpected(manifest.error());
    const auto& models = manifest->models;
    ModelSums sums;
    for (const Role& role : roles) {
        const auto entry = models.find(role.key);
        if (entry == models.end()) {
            return std::unexpected(
                ModelPackError{translated("{name} is missing", {{"name", role.name}})});
        }
        if (auto reason = fault(entry->second, folder, files); !reason.empty()) {
            return std::unexpected(ModelPackError{std::move(reason)});
        }
        sums.emplace(role.key, entry->second.sha256);
    }
    return ModelPack{.folder = folder,
                     .name = manifest->name,
                     .embedderFile = models.at("embedder").file,
                     .embedderIdentifier = models.at("embedder").identifier,
                     .realFaceFile = models.at("realFace").file,
                     .finderFile = models.at("finder").file,
                     .landmarksFile = models.at("landmarks").file,
                     .realFaceIdentifier = models.at("realFace").identifier,
                     .sums = std::move(sums),
                     .isPublished = isAsPublished(*manifest)};
}

std::string ModelPack::sumOf(const std::string& role) const {
    const auto found = sums.find(role);
    return found == sums.end() ? "" : found->second;
}

std::string ModelPack::title() const {
    return translated(knownAs(), {{"detail", name}});
}

Phrase ModelPack::knownAs() const {
    if (isPublished) return Phrase("{detail}, as published");
    return name == standardName ? Phrase("{detail} by its name only, not as published")
                                : Phrase("{detail}");
}

}  // namespace marrowby
