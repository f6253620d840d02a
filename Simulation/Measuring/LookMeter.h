#pragma once

#include "Simulation/Measuring/Evidence.h"
#include "Simulation/Measuring/Look.h"
#include "Simulation/Measuring/Trial.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// Plays looks to the lock screen's own recognition and cues on one model pack, without waiting.
/// One thread.
class LookMeter {
  public:
    /// `models` is the folder of a pack. The error is one sentence.
    [[nodiscard]] static std::expected<std::unique_ptr<LookMeter>, std::string> create(
        const std::filesystem::path& models, float threshold);
    ~LookMeter();

    /// The identifier of the pack's real-face model.
    [[nodiscard]] std::string name() const;
    [[nodiscard]] const EnrolledPeople& people() const;
    /// Adds faces of this look to the person's samples.
    [[nodiscard]] std::expected<void, std::string> enroll(const Look& look);
    /// The evidence in a look's next picture.
    [[nodiscard]] std::expected<FrameEvidence, std::string> study(
        const FaceScan& scan, const Look& look, std::size_t index,
        std::shared_ptr<const PixelBuffer> picture);

  private:
    struct Pipeline;
    explicit LookMeter(std::unique_ptr<Pipeline> pipeline);

    std::unique_ptr<Pipeline> pipeline_;
};

/// The evidence of each meter in a look, whose pictures are made only once. Ends with the look or
/// when all trials have ended; trials that leave a cue out are waited for at most `patience`, and
/// strict ones not for a person who does not turn the head.
[[nodiscard]] std::expected<std::vector<LookEvidence>, std::string> record(
    const Look& look, std::span<LookMeter* const> meters, std::span<const Trial> trials,
    TimeInterval patience);

}  // namespace marrowby
