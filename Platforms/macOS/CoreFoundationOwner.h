// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <type_traits>

#include <CoreFoundation/CoreFoundation.h>

namespace marrowby {

struct CoreFoundationRelease {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};

/// Owns the result of a Create or Copy function.
template <typename Ref>
using CoreFoundationOwner = std::unique_ptr<std::remove_pointer_t<Ref>, CoreFoundationRelease>;

}  // namespace marrowby
