// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

namespace marrowby {

/// The texts in the language that the system chose for the application, from its bundle's
/// Localizable.strings and Localizable.stringsdict.
class BundleCatalogue final : public Catalogue {
  public:
    [[nodiscard]] std::string text(const char* english) const override;
    [[nodiscard]] std::string text(const char* one, const char* many,
                                   std::uint64_t count) const override;
};

}  // namespace marrowby
