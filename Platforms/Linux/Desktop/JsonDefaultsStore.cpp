// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/JsonDefaultsStore.h"

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Platform/AtomicFile.h"

#include <algorithm>
#include <span>
#include <type_traits>
#include <utility>

#include <nlohmann/json.hpp>

namespace marrowby {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t largestFile = std::size_t{1} << 20;
constexpr int mostKeptAside = 100;
constexpr int indentation = 4;

bool areTexts(const Json& json) {
    return std::ranges::all_of(json, [](const Json& entry) { return entry.is_string(); });
}

DefaultsValue decoded(const Json& json) {
    if (json.is_boolean()) return json.get<bool>();
    if (json.is_number_float()) return json.get<double>();
    if (json.is_number_unsigned()) {
        const auto value = json.get<std::uint64_t>();
        return std::in_range<std::int64_t>(value) ? DefaultsValue(static_cast<std::int64_t>(value))
                                                  : DefaultsValue();
    }
    if (json.is_number_integer()) return json.get<std::int64_t>();
    if (json.is_string()) return json.get<std::string>();
    if (json.is_array() && areTexts(json)) return json.get<std::vector<std::string>>();
    return {};
}

struct Encoder {
    Json operator()(std::monostate /*unused*/) const { return nullptr; }
    template <typename Value>
    Json operator()(const Value& value) const {
        return value;
    }
};

}  // namespace

struct JsonDefaultsStore::Document {
    Json values = Json::object();
};

JsonDefaultsStore::JsonDefaultsStore(FileSystem& fileSystem, std::filesystem::path path)
    : fileSystem_(fileSystem), path_(std::move(path)), document_(std::make_unique<Document>()) {
    if (fileSystem_.exists(path_)) load();
}

JsonDefaultsStore::~JsonDefaultsStore() = default;

void JsonDefaultsStore::load() {
    const auto bytes = fileSystem_.read(path_, largestFile);
    if (!bytes) {
        mayWrite_ = false;
        readProblem_ = translated("The settings couldn’t be read and won’t be saved: {reason}.",
                                  {{"reason", bytes.error().message}});
        return;
    }
    Json read = Json::parse(bytes->begin(), bytes->end(), nullptr, false);
    if (read.is_object()) {
        document_->values = std::move(read);
    } else {
        setAside();
    }
}

void JsonDefaultsStore::setAside() {
    for (int number = 1; number <= mostKeptAside; ++number) {
        std::filesystem::path aside = path_;
        aside += ".damaged-" + std::to_string(number);
        if (fileSystem_.exists(aside)) continue;
        if (const auto renamed = fileSystem_.rename(path_, aside); !renamed) break;
        readProblem_ = translated("The settings were damaged. They’re kept in {file}.",
                                  {{"file", aside.filename().string()}});
        return;
    }
    mayWrite_ = false;
    readProblem_ = translated(
        "The settings are damaged and couldn’t be put aside, so changes won’t be saved.");
}

std::optional<DefaultsValue> JsonDefaultsStore::value(const std::string& key) const {
    const auto found = document_->values.find(key);
    if (found == document_->values.end()) return std::nullopt;
    return decoded(*found);
}

void JsonDefaultsStore::set(const std::string& key, DefaultsValue value) {
    if (std::holds_alternative<std::monostate>(value)) return;
    if (isSaved_ && this->value(key) == value) return;
    document_->values[key] = std::visit(Encoder(), value);
    save();
}

void JsonDefaultsStore::remove(const std::string& key) {
    if (document_->values.erase(key) == 0 && isSaved_) return;
    save();
}

void JsonDefaultsStore::save() {
    isSaved_ = false;
    if (!mayWrite_) return;
    const std::string text =
        document_->values.dump(indentation, ' ', false, Json::error_handler_t::replace) + "\n";
    const auto written = atomicfile::replace(
        fileSystem_, path_,
        std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    isSaved_ = written.has_value();
    writeProblem_ = isSaved_ ? std::nullopt
                             : std::optional(translated("The settings couldn’t be saved: {reason}.",
                                                        {{"reason", written.error().message}}));
}

}  // namespace marrowby
