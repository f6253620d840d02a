// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Storage/FaceIdentityCoding.h"

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Foundation/Text.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

namespace marrowby::faceidentitycoding {

namespace {

using Json = nlohmann::ordered_json;
using Error = FaceIdentityCodingError;
template <typename Value>
using Result = std::expected<Value, Error>;

// Bounds, far above what enrolment makes.
constexpr std::size_t mostIdentities = 1000;
constexpr std::size_t mostSamples = 1000;
constexpr std::size_t longestEmbedding = 4096;
constexpr std::size_t longestText = 4096;
constexpr std::size_t mostModels = 16;

std::unexpected<Error> refusal(std::string reason) {
    return std::unexpected<Error>({.reason = std::move(reason)});
}

std::string quoted(const char* key) {
    return "“" + std::string(key) + "”";
}

bool isWritable(std::string_view text) {
    return text.size() <= longestText &&
           isValidUTF8({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

bool isFinite(Date date) {
    return std::isfinite(date.time_since_epoch().count());
}

bool isWritable(const FaceSample& sample) {
    for (const float value : sample.embedding) {
        if (!std::isfinite(value)) return false;
    }
    return sample.embedding.size() <= longestEmbedding && isFinite(sample.capturedAt) &&
           (!sample.pose || isWritable(*sample.pose)) &&
           (!sample.quality || std::isfinite(*sample.quality));
}

bool isWritable(const FaceIdentity& identity) {
    for (const FaceSample& sample : identity.samples) {
        if (!isWritable(sample)) return false;
    }
    for (const auto& [role, sum] : identity.models) {
        if (!isWritable(role) || !isWritable(sum)) return false;
    }
    return identity.samples.size() <= mostSamples && identity.models.size() <= mostModels &&
           isWritable(identity.name) && isWritable(identity.modelIdentifier) &&
           isFinite(identity.createdAt);
}

/// A float widens to a double without loss, and doubles are written so that they read back the
/// same.
Json encoded(const FaceSample& sample) {
    Json embedding = Json::array();
    for (const float value : sample.embedding)
        embedding.push_back(double{value});
    Json json;
    json["embedding"] = std::move(embedding);
    if (sample.pose) json["pose"] = *sample.pose;
    json["capturedAt"] = sample.capturedAt.time_since_epoch().count();
    if (sample.quality) json["quality"] = double{*sample.quality};
    return json;
}

Json encoded(const FaceIdentity& identity) {
    Json samples = Json::array();
    for (const FaceSample& sample : identity.samples)
        samples.push_back(encoded(sample));
    Json json;
    json["id"] = identity.id.string();
    json["name"] = identity.name;
    json["samples"] = std::move(samples);
    json["modelIdentifier"] = identity.modelIdentifier;
    json["dimension"] = identity.dimension;
    json["createdAt"] = identity.createdAt.time_since_epoch().count();
    json["isEnabled"] = identity.isEnabled;
    for (const auto& [role, sum] : identity.models)
        json["models"][role] = sum;
    return json;
}

constexpr auto tooLong = Phrase("{key} is too long");

/// Reads the values of one JSON object. Keeps the first error; values read after it are empty.
class ObjectReader {
  public:
    ObjectReader(const Json& json, std::optional<Error>& problem) : json_(json), problem_(problem) {
        if (!json.is_object()) refuse(Phrase("an entry isn’t an object"));
    }

    [[nodiscard]] const Json* required(const char* key) {
        const Json* value = find(key);
        if (value == nullptr) refuse(Phrase("{key} is missing"), key);
        return value;
    }

    /// Null counts as missing.
    [[nodiscard]] const Json* optional(const char* key) const {
        const Json* value = find(key);
        return value != nullptr && !value->is_null() ? value : nullptr;
    }

    [[nodiscard]] const Json* list(const char* key, std::size_t most) {
        const Json* value = required(key);
        if (value == nullptr) return nullptr;
        if (!value->is_array()) return refuse(Phrase("{key} isn’t a list"), key);
        if (value->size() > most) return refuse(tooLong, key);
        return value;
    }

    [[nodiscard]] std::string text(const char* key, const Json* value) {
        if (value == nullptr) return {};
        const auto* string = value->get_ptr<const std::string*>();
        if (string == nullptr || string->size() > longestText) {
            refuse(string == nullptr ? Phrase("{key} isn’t text") : tooLong, key);
            return {};
        }
        return *string;
    }

    [[nodiscard]] float real(const char* key, const Json* value) {
        if (value == nullptr) return 0;
        const double wide =
            value->is_number() ? value->get<double>() : std::numeric_limits<double>::quiet_NaN();
        if (!(std::abs(wide) <= double{std::numeric_limits<float>::max()})) {
            refuse(Phrase("{key} isn’t a 32-bit number"), key);
            return 0;
        }
        return static_cast<float>(wide);
    }

    [[nodiscard]] Date date(const char* key) {
        const Json* value = required(key);
        if (value == nullptr) return {};
        if (!value->is_number()) {
            refuse(Phrase("{key} isn’t a date"), key);
            return {};
        }
        return Date(TimeInterval(value->get<double>()));
    }

    [[nodiscard]] std::int64_t integer(const char* key) {
        const Json* value = required(key);
        if (value == nullptr) return 0;
        const auto* natural = value->get_ptr<const Json::number_unsigned_t*>();
        if (!value->is_number_integer() ||
            (natural != nullptr && !std::in_range<std::int64_t>(*natural))) {
            refuse(Phrase("{key} isn’t a whole number"), key);
            return 0;
        }
        return value->get<std::int64_t>();
    }

    [[nodiscard]] bool boolean(const char* key) {
        const Json* value = required(key);
        if (value == nullptr) return false;
        if (!value->is_boolean()) refuse(Phrase("{key} isn’t true or false"), key);
        return value->is_boolean() && value->get<bool>();
    }

    [[nodiscard]] std::map<std::string, std::string> texts(const char* key, const Json* value,
                                                           std::size_t most) {
        std::map<std::string, std::string> result;
        if (!value->is_object() || value->size() > most) {
            refuse(value->is_object() ? tooLong : Phrase("{key} isn’t an object"), key);
            return result;
        }
        for (const auto& [name, one] : value->items()) {
            if (name.size() > longestText) refuse(tooLong, key);
            result.emplace(name, text(key, &one));
        }
        return result;
    }

    [[nodiscard]] UUID uuid(const char* key) {
        const Json* value = required(key);
        if (value == nullptr) return {};
        const auto* string = value->get_ptr<const std::string*>();
        const auto id = string != nullptr ? UUID::parse(*string) : std::nullopt;
        if (!id) refuse(Phrase("{key} isn’t an identifier"), key);
        return id.value_or(UUID());
    }

  private:
    [[nodiscard]] const Json* find(const char* key) const {
        if (!json_.is_object()) return nullptr;
        const auto found = json_.find(key);
        return found != json_.end() ? &*found : nullptr;
    }

    const Json* refuse(Phrase reason, const char* key = "") {
        if (!problem_) problem_ = Error{translated(reason, {{"key", quoted(key)}})};
        return nullptr;
    }

    const Json& json_;
    std::optional<Error>& problem_;
};

FaceSample decodedSample(const Json& json, std::optional<Error>& problem) {
    ObjectReader object(json, problem);
    FaceSample sample;
    if (const Json* values = object.list("embedding", longestEmbedding)) {
        sample.embedding.reserve(values->size());
        for (const Json& value : *values) {
            sample.embedding.push_back(object.real("embedding", &value));
        }
    }
    if (const Json* pose = object.optional("pose")) sample.pose = object.text("pose", pose);
    sample.capturedAt = object.date("capturedAt");
    if (const Json* quality = object.optional("quality")) {
        sample.quality = object.real("quality", quality);
    }
    return sample;
}

FaceIdentity decodedIdentity(const Json& json, std::optional<Error>& problem) {
    ObjectReader object(json, problem);
    FaceIdentity identity;
    identity.id = object.uuid("id");
    identity.name = object.text("name", object.required("name"));
    if (const Json* samples = object.list("samples", mostSamples)) {
        for (const Json& sample : *samples) {
            identity.samples.push_back(decodedSample(sample, problem));
        }
    }
    identity.modelIdentifier = object.text("modelIdentifier", object.required("modelIdentifier"));
    identity.dimension = object.integer("dimension");
    identity.createdAt = object.date("createdAt");
    identity.isEnabled = object.boolean("isEnabled");
    // Older versions kept none.
    if (const Json* models = object.optional("models"))
        identity.models = object.texts("models", models, mostModels);
    return identity;
}

}  // namespace

Result<std::string> encode(std::span<const FaceIdentity> identities) {
    if (identities.size() > mostIdentities) return refusal(translated("there are too many faces"));
    Json json = Json::array();
    for (const FaceIdentity& identity : identities) {
        if (!isWritable(identity)) return refusal(translated("a value can’t be written"));
        json.push_back(encoded(identity));
    }
    return json.dump();
}

Result<std::vector<FaceIdentity>> decode(std::span<const std::uint8_t> text) {
    const std::string_view characters(reinterpret_cast<const char*>(text.data()), text.size());
    const Json json = Json::parse(characters, nullptr, false);
    if (!json.is_array()) return refusal(translated("it isn’t a list"));
    if (json.size() > mostIdentities) return refusal(translated("there are too many faces"));
    std::vector<FaceIdentity> identities;
    std::optional<Error> problem;
    for (const Json& entry : json) {
        identities.push_back(decodedIdentity(entry, problem));
        if (problem) return std::unexpected(std::move(*problem));
    }
    return identities;
}

}  // namespace marrowby::faceidentitycoding
