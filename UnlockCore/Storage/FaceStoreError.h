#pragma once

#include <string>
#include <variant>

namespace marrowby {

namespace facestoreerror {

struct Unreadable {
    /// The sentence of the error that reading met.
    std::string reason;
    friend bool operator==(const Unreadable&, const Unreadable&) = default;
};
struct NotLoaded {
    friend bool operator==(const NotLoaded&, const NotLoaded&) = default;
};
struct EmptyEnrolment {
    friend bool operator==(const EmptyEnrolment&, const EmptyEnrolment&) = default;
};

}  // namespace facestoreerror

/// Why the face store refuses.
struct FaceStoreError : std::variant<facestoreerror::Unreadable, facestoreerror::NotLoaded,
                                     facestoreerror::EmptyEnrolment> {
    using Unreadable = facestoreerror::Unreadable;
    using NotLoaded = facestoreerror::NotLoaded;
    using EmptyEnrolment = facestoreerror::EmptyEnrolment;
    using variant::variant;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const FaceStoreError& error);

}  // namespace marrowby
