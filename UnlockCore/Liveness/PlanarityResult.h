#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace marrowby {

/// Whether a face moved as one plane, as a picture does, or as a head with a nose in front. The
/// medians over the measured pairs are absent without any.
struct PlanarityResult {
    enum class Verdict { noEvidence, planar, depth, unclear };

    std::int64_t pairs = 0;
    /// The nose's displacement against the plane of the face, relative to the face's motion.
    std::optional<double> ratio;
    /// The same displacement in parts of the distance between the eyes.
    std::optional<double> residual;
    /// The face's motion in parts of the distance between the eyes.
    std::optional<double> motion;
    Verdict verdict = Verdict::noEvidence;

    friend bool operator==(const PlanarityResult&, const PlanarityResult&) = default;
};

[[nodiscard]] constexpr std::string_view rawValue(PlanarityResult::Verdict verdict) {
    switch (verdict) {
        case PlanarityResult::Verdict::noEvidence:
            return "noEvidence";
        case PlanarityResult::Verdict::planar:
            return "planar";
        case PlanarityResult::Verdict::depth:
            return "depth";
        case PlanarityResult::Verdict::unclear:
            return "unclear";
    }
    return {};
}

}  // namespace marrowby
