// SPDX-License-Identifier: Apache-2.0
#import "Platforms/macOS/BundleCatalogue.h"

#import "Platforms/macOS/FoundationText.h"

#include <algorithm>
#include <limits>

namespace marrowby {

std::string BundleCatalogue::text(const char* english) const {
    NSString* const key = foundationText(english);
    return plainText([NSBundle.mainBundle localizedStringForKey:key value:key table:nil]);
}

std::string BundleCatalogue::text(const char* one, const char* many, std::uint64_t count) const {
    NSString* const missing = foundationText(count == 1 ? one : many);
    NSString* const found = [NSBundle.mainBundle localizedStringForKey:foundationText(one)
                                                                 value:missing
                                                                 table:nil];
    // Not of a stringsdict: the text itself, in which a percent sign is one.
    if (found == missing || [found isEqualToString:missing]) return plainText(missing);
    const auto counted =
        static_cast<long>(std::min<std::uint64_t>(count, std::numeric_limits<long>::max()));
    // The count chooses the form; {count} is filled in later.
    return plainText([NSString localizedStringWithFormat:found, counted]);
}

}  // namespace marrowby
