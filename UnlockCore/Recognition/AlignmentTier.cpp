#include "UnlockCore/Recognition/AlignmentTier.h"

namespace marrowby {

std::optional<AlignmentTier> alignmentTier(std::string_view text) {
    for (const AlignmentTier tier : {AlignmentTier::fivePoint, AlignmentTier::twoPoint}) {
        if (rawValue(tier) == text) return tier;
    }
    return std::nullopt;
}

std::string_view rawValue(AlignmentTier tier) {
    switch (tier) {
        case AlignmentTier::fivePoint:
            return "5-point";
        case AlignmentTier::twoPoint:
            return "2-point";
    }
    return {};
}

}  // namespace marrowby
