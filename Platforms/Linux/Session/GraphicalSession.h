#pragma once

#include <optional>
#include <string>

/// Whether windows can be opened here, by the environment and the display that it names.
namespace marrowby::graphicalsession {

/// The sentence for the user; nothing where they can.
[[nodiscard]] std::optional<std::string> problem();

}  // namespace marrowby::graphicalsession
