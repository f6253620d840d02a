// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace marrowby {

/// While it lives, every text of the catalogue stands between ⟦ and ⟧: what is shown outside of
/// these would stay English in any language.
class PseudoCatalogue final : public Catalogue {
  public:
    PseudoCatalogue() { useCatalogue(this); }
    PseudoCatalogue(const PseudoCatalogue&) = delete;
    PseudoCatalogue& operator=(const PseudoCatalogue&) = delete;
    ~PseudoCatalogue() override { useCatalogue(nullptr); }

    [[nodiscard]] std::string text(const char* english) const override {
        return std::string(open).append(english).append(close);
    }
    [[nodiscard]] std::string text(const char* one, const char* many,
                                   std::uint64_t count) const override {
        return text(count == 1 ? one : many);
    }

    /// What of a shown text is in no catalogue.
    [[nodiscard]] static std::string outside(std::string_view shown) {
        std::string rest;
        int depth = 0;
        while (!shown.empty()) {
            if (shown.starts_with(open)) {
                ++depth;
                shown.remove_prefix(open.size());
            } else if (shown.starts_with(close)) {
                --depth;
                shown.remove_prefix(close.size());
            } else {
                if (depth == 0) rest += shown.front();
                shown.remove_prefix(1);
            }
        }
        return rest;
    }

  private:
    static constexpr std::string_view open = "⟦";
    static constexpr std::string_view close = "⟧";
};

}  // namespace marrowby
