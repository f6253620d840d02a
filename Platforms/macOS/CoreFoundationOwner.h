#pragma once

#include <memory>
#include <type_traits>

#include <CoreFoundation/CoreFoundation.h>

namespace marrowby {

struct CoreFoundationRelease {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};

/// What a function with Create or Copy in its name gives.
template <typename Ref>
using CoreFoundationOwner = std::unique_ptr<std::remove_pointer_t<Ref>, CoreFoundationRelease>;

}  // namespace marrowby
