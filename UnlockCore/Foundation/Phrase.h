// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace marrowby {

/// An English text for the user, which is its key in the catalogue. Literals only: xgettext finds
/// them by this class's name and by the functions below.
class Phrase {
  public:
    constexpr Phrase() = default;
    template <std::size_t N>
    consteval explicit Phrase(const char (&english)[N]) : english_(english) {}

    [[nodiscard]] constexpr const char* english() const { return english_; }
    [[nodiscard]] constexpr bool empty() const { return *english_ == '\0'; }

    friend constexpr bool operator==(Phrase a, Phrase b) {
        return std::string_view(a.english_) == b.english_;
    }

  private:
    const char* english_ = "";
};

/// What stands for a placeholder such as {name}.
class Filling {
  public:
    /// Text that is nobody's to translate, or is translated already.
    Filling(std::string_view name, std::string value) : name_(name), value_(std::move(value)) {}
    /// Translated.
    Filling(std::string_view name, Phrase value);
    template <std::integral T>
    Filling(std::string_view name, T value) : Filling(name, std::to_string(value)) {}

    [[nodiscard]] std::string_view name() const { return name_; }
    [[nodiscard]] const std::string& value() const { return value_; }

  private:
    std::string_view name_;
    std::string value_;
};

using Fillings = std::initializer_list<Filling>;

/// A language's texts. Any thread.
class Catalogue {
  public:
    virtual ~Catalogue() = default;
    /// The English text itself where it has none.
    [[nodiscard]] virtual std::string text(const char* english) const = 0;
    /// The form for this count.
    [[nodiscard]] virtual std::string text(const char* one, const char* many,
                                           std::uint64_t count) const = 0;
};

/// Before any thread is started; the catalogue stays. Without one, and after null, all is English.
void useCatalogue(const Catalogue* catalogue);

/// The phrase without its placeholders' braces, in English whatever the language.
[[nodiscard]] std::string inEnglish(Phrase phrase, Fillings fillings = {});

/// In the user's language; empty for the empty phrase.
[[nodiscard]] std::string translated(Phrase phrase, Fillings fillings = {});

namespace phrase {

[[nodiscard]] std::string translated(const char* english, Fillings fillings);
[[nodiscard]] std::string counted(const char* one, const char* many, std::uint64_t count,
                                  Fillings fillings);

}  // namespace phrase

template <std::size_t N>
[[nodiscard]] std::string translated(const char (&english)[N], Fillings fillings = {}) {
    return phrase::translated(english, fillings);
}

/// With {count} in either form.
template <std::size_t N, std::size_t M>
[[nodiscard]] std::string counted(const char (&one)[N], const char (&many)[M], std::uint64_t count,
                                  Fillings fillings = {}) {
    return phrase::counted(one, many, count, fillings);
}

}  // namespace marrowby
