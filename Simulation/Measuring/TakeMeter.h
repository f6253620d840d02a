// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Measuring/Evidence.h"
#include "Simulation/Measuring/Take.h"
#include "Simulation/Measuring/Trial.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// Plays takes to the lock screen's own recognition and cues on one model pack, without waiting.
/// One thread.
class TakeMeter {
  public:
    /// `models` is the folder of a pack. The error is one sentence.
    [[nodiscard]] static std::expected<std::unique_ptr<TakeMeter>, std::string> create(
        const std::filesystem::path& models, float threshold);
    ~TakeMeter();

    /// The identifier of the pack's real-face model.
    [[nodiscard]] std::string name() const;
    [[nodiscard]] const EnrolledPeople& people() const;
    /// Adds faces of this take to the person's samples.
    [[nodiscard]] std::expected<void, std::string> enroll(const Take& take);
    /// The evidence in a take's next picture.
    [[nodiscard]] std::expected<FrameEvidence, std::string> study(
        const FaceScan& scan, const Take& take, std::size_t index,
        std::shared_ptr<const PixelBuffer> picture);

  private:
    struct Pipeline;
    explicit TakeMeter(std::unique_ptr<Pipeline> pipeline);

    std::unique_ptr<Pipeline> pipeline_;
};

/// The evidence of each meter in a take, whose pictures are made only once. Ends with the take or
/// when all trials have ended; trials that leave a cue out are waited for at most `patience`, and
/// strict ones not for a person who does not turn the head.
[[nodiscard]] std::expected<std::vector<TakeEvidence>, std::string> record(
    const Take& take, std::span<TakeMeter* const> meters, std::span<const Trial> trials,
    TimeInterval patience);

}  // namespace marrowby
