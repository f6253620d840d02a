// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessCue.h"

namespace marrowby {

namespace {

struct Words {
    std::string_view rawValue;
    LivenessCueRole role;
    Phrase title;
    Phrase description;
    Phrase denialMessage;
};

Words words(LivenessCue cue) {
    switch (cue) {
        case LivenessCue::realFace:
            return {
                "realFace", LivenessCueRole::model, Phrase("Real-face model"),
                Phrase(
                    "MiniFASNet’s judgement, frame by frame: a live face, or a print or a screen."),
                Phrase("The real-face model saw a photo or a screen, not a face.")};
        case LivenessCue::planar:
            return {
                "planar", LivenessCueRole::deny, Phrase("Flat motion"),
                Phrase(
                    "The face moved as one flat plane, as a photo or a screen does, not as a head "
                    "with a nose in front."),
                Phrase("The face moved as one flat picture does.")};
        case LivenessCue::moire:
            return {
                "moire", LivenessCueRole::deny, Phrase("Screen pattern"),
                Phrase("A fine regular pattern in the skin: a screen’s pixels seen by the camera."),
                Phrase("A screen’s pixel pattern showed in the face.")};
        case LivenessCue::glossGlare:
            return {"glossGlare", LivenessCueRole::deny, Phrase("Glare"),
                    Phrase("One large flat highlight: glass or a screen, not skin’s small "
                           "scattered shine."),
                    Phrase("Glare like a screen’s: this looks like a photo on a display.")};
        case LivenessCue::deviceDetected:
            return {
                "deviceDetected", LivenessCueRole::deny, Phrase("Device frame"),
                Phrase("A phone- or tablet-shaped rectangle around the face."),
                Phrase("A device’s frame around the face: this looks like a photo or a screen.")};
        case LivenessCue::headTurn:
            return {
                "headTurn", LivenessCueRole::confirm, Phrase("Head turn"),
                Phrase("The head turned a little, and the nose moved against the cheeks as only a "
                       "head’s does."),
                Phrase("This didn’t look like a real face.")};
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
Phrase title(LivenessCue cue) {
    return words(cue).title;
}
Phrase description(LivenessCue cue) {
    return words(cue).description;
}
Phrase denialMessage(LivenessCue cue) {
    return words(cue).denialMessage;
}

}  // namespace marrowby
