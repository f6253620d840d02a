#pragma once

#include "Measuring/Evidence.h"
#include "Measuring/Look.h"
#include "Measuring/Trial.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// Plays looks to the lock screen's own recognition and cues on one pack of networks, without
/// waiting. One thread.
class LookMeter {
  public:
    /// `models` holds the networks of a pack. The error is one sentence.
    [[nodiscard]] static std::expected<std::unique_ptr<LookMeter>, std::string> create(
        const std::filesystem::path& models, float threshold);
    ~LookMeter();

    /// What the pack's real-face network calls itself.
    [[nodiscard]] std::string name() const;
    [[nodiscard]] const EnrolledPeople& people() const;
    /// Takes faces of this look into the person's samples.
    [[nodiscard]] std::expected<void, std::string> enroll(const Look& look);
    /// What a look's picture shows to a scan that has seen those before it.
    [[nodiscard]] std::expected<FrameEvidence, std::string> study(
        const FaceScan& scan, const Look& look, std::size_t index,
        std::shared_ptr<const PixelBuffer> picture);

  private:
    struct Networks;
    explicit LookMeter(std::unique_ptr<Networks> networks);

    std::unique_ptr<Networks> networks_;
};

/// What each of the meters finds in a look, whose pictures are made only once. It ends with the
/// look or when all trials have ended; those that leave something out are waited for `patience` at
/// most, and strict ones not for somebody who does not turn the head.
[[nodiscard]] std::expected<std::vector<LookEvidence>, std::string> record(
    const Look& look, std::span<LookMeter* const> meters, std::span<const Trial> trials,
    TimeInterval patience);

}  // namespace marrowby
