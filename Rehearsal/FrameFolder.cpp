#include "Rehearsal/FrameFolder.h"

#include "Platforms/Linux/ImageFiles.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

namespace marrowby {

namespace {

using nlohmann::json;

constexpr double fastest = 1000;

std::string pictureName(std::size_t index) {
    std::ostringstream name;
    name << std::setw(4) << std::setfill('0') << index << ".jpg";
    return name.str();
}

/// The start of every sentence: the sequence by the last part of its path.
std::string sequenceCalled(const std::filesystem::path& folder) {
    const auto name = folder.has_filename() ? folder.filename() : folder.parent_path().filename();
    return "The sequence “" + name.string() + "”";
}

/// The named value, if there is one; false when it is of another kind.
bool read(const json& object, const char* name, std::optional<double>& value) {
    const auto found = object.find(name);
    if (found == object.end()) return true;
    if (!found->is_number()) return false;
    value = found->get<double>();
    return true;
}
bool read(const json& object, const char* name, std::optional<std::string>& value) {
    const auto found = object.find(name);
    if (found == object.end()) return true;
    if (!found->is_string()) return false;
    value = found->get<std::string>();
    return true;
}

}  // namespace

std::expected<FrameFolder, std::string> FrameFolder::load(const std::filesystem::path& folder) {
    const std::string sequence = sequenceCalled(folder);
    const auto wrong = [&](const std::string& what) {
        return std::unexpected(sequence + " " + what);
    };
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) return wrong("isn’t there.");
    std::ifstream file(folder / "truth.json");
    if (!file) return wrong("has no “truth.json”.");
    const json truth = json::parse(file, nullptr, false);
    if (!truth.is_object()) return wrong("has a “truth.json” that isn’t a JSON object.");

    std::optional<double> rate;
    if (!read(truth, "fps", rate) || !rate || !(*rate > 0) || *rate > fastest) {
        return wrong("has a “truth.json” without a usable frame rate (“fps”).");
    }
    const auto listed = truth.find("frames");
    if (listed == truth.end() || !listed->is_array() || listed->empty()) {
        return wrong("has a “truth.json” without a list of “frames”.");
    }

    FrameFolder result;
    result.folder_ = folder;
    result.framesPerSecond_ = *rate;
    for (const json& entry : *listed) {
        const std::string name = pictureName(result.frames_.size());
        Truth& frame = result.frames_.emplace_back();
        if (!entry.is_object() || !read(entry, "yaw", frame.yaw) ||
            !read(entry, "pitch", frame.pitch) || !read(entry, "pose", frame.pose)) {
            return wrong("has a “truth.json” that describes “" + name + "” wrongly.");
        }
        if (!std::filesystem::is_regular_file(folder / name, error)) {
            return wrong("lacks the picture “" + name + "”.");
        }
    }
    const auto first = result.picture(0);
    if (!first) return std::unexpected(first.error());
    result.width_ = (*first)->width();
    result.height_ = (*first)->height();
    return result;
}

std::expected<std::shared_ptr<const PixelBuffer>, std::string> FrameFolder::picture(
    std::size_t index) const {
    return readPicture(folder_ / pictureName(firstPicture_ + index));
}

std::optional<FrameFolder> FrameFolder::inPose(std::string_view pose) const {
    const auto isPosed = [pose](const Truth& frame) { return frame.pose == pose; };
    const auto begin = std::ranges::find_if(frames_, isPosed);
    const auto end = std::ranges::find_if_not(begin, frames_.end(), isPosed);
    if (begin == end) return std::nullopt;
    FrameFolder run = *this;
    run.firstPicture_ += static_cast<std::size_t>(begin - frames_.begin());
    run.frames_.assign(begin, end);
    return run;
}

}  // namespace marrowby
