// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <span>
#include <vector>

namespace marrowby {

namespace {

const Catalogue* usedCatalogue = nullptr;

/// What is filled in is not searched again. Unknown placeholders stay.
std::string filled(std::string_view pattern, std::span<const Filling> fillings) {
    std::string text;
    while (!pattern.empty()) {
        const std::size_t open = pattern.find('{');
        const std::size_t close = pattern.find('}', open);
        if (close == std::string_view::npos) break;
        const std::string_view name = pattern.substr(open + 1, close - open - 1);
        const auto filling = std::ranges::find(fillings, name, &Filling::name);
        text += pattern.substr(0, open);
        text += filling != fillings.end() ? std::string_view(filling->value())
                                          : pattern.substr(open, close - open + 1);
        pattern.remove_prefix(close + 1);
    }
    return text.append(pattern);
}

std::span<const Filling> all(Fillings fillings) {
    return {fillings.begin(), fillings.size()};
}

}  // namespace

Filling::Filling(std::string_view name, Phrase value) : Filling(name, translated(value)) {}

void useCatalogue(const Catalogue* catalogue) {
    usedCatalogue = catalogue;
}

std::string inEnglish(Phrase phrase, Fillings fillings) {
    return filled(phrase.english(), all(fillings));
}

std::string translated(Phrase phrase, Fillings fillings) {
    return phrase::translated(phrase.english(), fillings);
}

std::string phrase::translated(const char* english, Fillings fillings) {
    // A catalogue's text for the empty key is about itself.
    if (usedCatalogue == nullptr || *english == '\0') return filled(english, all(fillings));
    return filled(usedCatalogue->text(english), all(fillings));
}

std::string phrase::counted(const char* one, const char* many, std::uint64_t count,
                            Fillings fillings) {
    std::vector<Filling> withCount(fillings);
    withCount.emplace_back("count", count);
    if (usedCatalogue != nullptr) return filled(usedCatalogue->text(one, many, count), withCount);
    return filled(count == 1 ? one : many, withCount);
}

}  // namespace marrowby
