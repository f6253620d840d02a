#pragma once

#include "Measuring/Look.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Liveness/LivenessCue.h"
#include "UnlockCore/Liveness/LivenessDecision.h"
#include "UnlockCore/Liveness/LivenessMode.h"

#include <expected>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace marrowby {

/// What the lock screen would have made of one look.
struct LookResult {
    Look::Purpose purpose = Look::Purpose::genuine;
    std::string attack;
    std::string person;
    std::string name;
    /// Until the look ended: with its last picture, a denial, or opened.
    std::size_t frames = 0;
    std::size_t framesWithFace = 0;
    LivenessDecision decision;
    /// Some frame's face was confirmed to be live, and matched the person, if enrolled.
    bool isOpened = false;
    /// From the first frame with a face to the one that opened.
    std::optional<TimeInterval> timeToOpen;
    /// The real-face model's mean over the look's frames.
    std::optional<double> live;
    /// The highest level of each cue with any confidence.
    std::map<LivenessCue, float> levels;
    struct Likeness {
        /// Of the look's most alike frame.
        float similarity = -1;
        /// Some frame matched.
        bool matches = false;
    };
    /// By enrolled person.
    std::map<std::string, Likeness> likeness;
};

/// Plays looks to the lock screen's own recognition and liveness, without waiting. One thread.
class LookMeter {
  public:
    struct Settings {
        /// Holds the four networks of the standard pack.
        std::filesystem::path models;
        LivenessMode mode = LivenessMode::standard;
        /// Other cues than the lock screen's own.
        std::optional<std::set<LivenessCue>> enabledCues;
        float threshold = 0.5F;
    };

    /// The error is one sentence.
    [[nodiscard]] static std::expected<std::unique_ptr<LookMeter>, std::string> create(
        const Settings& settings);
    ~LookMeter();

    /// Takes faces of this look into the person's samples.
    [[nodiscard]] std::expected<void, std::string> enroll(const Look& look);
    [[nodiscard]] std::expected<LookResult, std::string> measure(const Look& look);

  private:
    struct Networks;
    LookMeter(Settings settings, std::unique_ptr<Networks> networks);

    Settings settings_;
    std::unique_ptr<Networks> networks_;
};

}  // namespace marrowby
