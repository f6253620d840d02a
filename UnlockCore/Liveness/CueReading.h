#pragma once

namespace marrowby {

/// One cue in one frame: how strongly it is present and how far the measurement can be trusted,
/// both 0…1. Two zeros mean that nothing was measured.
struct CueReading {
    float level = 0;
    float confidence = 0;

    friend bool operator==(const CueReading&, const CueReading&) = default;
};

}  // namespace marrowby
