#pragma once

#include <optional>
#include <string>

/// Whether this process can open windows, from the environment and its X display.
namespace marrowby::graphicalsession {

/// A sentence for the user; `nullopt` when windows can be opened.
[[nodiscard]] std::optional<std::string> problem();

}  // namespace marrowby::graphicalsession
