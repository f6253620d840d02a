#pragma once

namespace marrowby {

/// What a face does.
struct Expression {
    /// 0 open … 1 shut.
    float blink = 0;
    /// Where the eyes look, in radians from straight out of the head: positive to the person's
    /// left, and down. Up to about 0.5.
    float gazeYaw = 0;
    float gazePitch = 0;
    /// 0 closed … 1 wide open (about 25 mm).
    float mouthOpening = 0;
};

}  // namespace marrowby
