// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/TakeFolders.h"

#include "Platforms/Linux/Pictures/ImageFiles.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

namespace marrowby {

namespace {

namespace fs = std::filesystem;

bool isPicture(const fs::path& file) {
    constexpr std::array<std::string_view, 4> endings{".jpg", ".jpeg", ".png", ".bmp"};
    return std::ranges::find(endings, file.extension().string()) != endings.end();
}

/// What the path from the data set's folder says about a take; nothing for a path of another shape.
std::optional<Take> labelled(const fs::path& relative) {
    const std::vector<std::string> parts(relative.begin(), relative.end());
    const auto is = [&](std::string_view purpose, std::size_t length) {
        return parts.size() >= length && parts[0] == purpose;
    };
    Take take;
    take.label.name = relative.generic_string();
    if (is("attack", 3)) {
        take.label.purpose = Take::Purpose::attack;
        take.label.attack = parts[1];
        take.label.person = parts[2];
    } else if (is("genuine", 2) || is("enrol", 2)) {
        take.label.purpose =
            parts[0] == "enrol" ? Take::Purpose::enrolment : Take::Purpose::genuine;
        take.label.person = parts[1];
    } else {
        return std::nullopt;
    }
    return take;
}

double rateIn(const fs::path& folder, double usual) {
    std::ifstream file(folder / "truth.json");
    const auto truth = nlohmann::json::parse(file, nullptr, false);
    if (!truth.is_object() || !truth.contains("fps") || !truth["fps"].is_number()) return usual;
    const auto rate = truth["fps"].get<double>();
    return rate > 0 ? rate : usual;
}

}  // namespace

std::expected<std::vector<Take>, std::string> takesBelow(const fs::path& folder,
                                                         double usualFramesPerSecond) {
    std::map<fs::path, std::vector<fs::path>> pictures;
    std::error_code error;
    for (fs::recursive_directory_iterator
             entry(folder, fs::directory_options::follow_directory_symlink, error),
         end;
         !error && entry != end; entry.increment(error)) {
        if (isPicture(entry->path())) pictures[entry->path().parent_path()].push_back(*entry);
    }
    if (error) return std::unexpected("The folder “" + folder.string() + "” couldn’t be read.");

    std::vector<Take> takes;
    for (auto& [place, files] : pictures) {
        auto take = labelled(place.lexically_relative(folder));
        if (!take) {
            return std::unexpected(
                "The pictures in “" + place.string() +
                "” have no label: wanted are the folders enrol/PERSON, genuine/PERSON and "
                "attack/KIND/PERSON.");
        }
        std::ranges::sort(files);
        take->framesPerSecond = rateIn(place, usualFramesPerSecond);
        take->pictureCount = files.size();
        take->picture = [sorted = std::move(files)](std::size_t i) {
            return readPicture(sorted.at(i));
        };
        takes.push_back(*std::move(take));
    }
    if (takes.empty()) {
        return std::unexpected("The folder “" + folder.string() + "” holds no pictures.");
    }
    return takes;
}

}  // namespace marrowby
