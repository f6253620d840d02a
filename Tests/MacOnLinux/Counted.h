// SPDX-License-Identifier: Apache-2.0
#pragma once

#import <Foundation/Foundation.h>

namespace marrowby {

/// Counts the object until it is deallocated: for objects that the caller of a framework must
/// release.
[[nodiscard]] id counted(id object);

[[nodiscard]] int countedAlive();

}  // namespace marrowby
