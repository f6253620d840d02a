#pragma once

#import <Foundation/Foundation.h>

namespace marrowby {

/// The object as it is, counted until it goes: for what a framework gives out and its caller has to
/// release.
[[nodiscard]] id counted(id object);

[[nodiscard]] int countedAlive();

}  // namespace marrowby
