// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessCue.h"

namespace marrowby {

namespace {

struct Words {
    std::string_view rawValue;
    LivenessCueRole role;
    std::string_view title;
    std::string_view description;
    std::string_view denialMessage;
};

Words words(LivenessCue cue) {
    switch (cue) {
        case LivenessCue::realFace:
            return {"realFace", LivenessCueRole::model, "Real-face model",
                    "MiniFASNet’s judgement, frame by frame: a live face, or a print or a screen.",
                    "The real-face model saw a photo or a screen, not a face."};
        case LivenessCue::planar:
            return {"planar", LivenessCueRole::deny, "Flat motion",
                    "The face moved as one flat plane, as a photo or a screen does, not as a head "
                    "with a nose in front.",
                    "The face moved as one flat picture does."};
        case LivenessCue::moire:
            return {"moire", LivenessCueRole::deny, "Screen pattern",
                    "A fine regular pattern in the skin: a screen’s pixels seen by the camera.",
                    "A screen’s pixel pattern showed in the face."};
        case LivenessCue::glossGlare:
            return {
                "glossGlare", LivenessCueRole::deny, "Glare",
                "One large flat highlight: glass or a screen, not skin’s small scattered shine.",
                "Glare like a screen’s: this looks like a photo on a display."};
        case LivenessCue::deviceDetected:
            return {"deviceDetected", LivenessCueRole::deny, "Device frame",
                    "A phone- or tablet-shaped rectangle around the face.",
                    "A device’s frame around the face: this looks like a photo or a screen."};
        case LivenessCue::headTurn:
            return {"headTurn", LivenessCueRole::confirm, "Head turn",
                    "The head turned a little, and the nose moved against the cheeks as only a "
                    "head’s does.",
                    "This didn’t look like a real face."};
    }
    return {};
}

}  // namespace

std::optional<LivenessCue> livenessCue(std::string_view text) {
    for (const LivenessCue cue : allLivenessCues) {
        if (rawValue(cue) == text) return cue;
    }
    return std::nullopt;
}

std::string_view rawValue(LivenessCue cue) {
    return words(cue).rawValue;
}
LivenessCueRole role(LivenessCue cue) {
    return words(cue).role;
}
std::string_view title(LivenessCue cue) {
    return words(cue).title;
}
std::string_view description(LivenessCue cue) {
    return words(cue).description;
}
std::string_view denialMessage(LivenessCue cue) {
    return words(cue).denialMessage;
}

}  // namespace marrowby
