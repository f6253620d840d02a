// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Command.h"

#include <expected>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace marrowby {

namespace commandline {

struct Help {};
struct Version {};
struct SelfCheck {};
/// Runs the program, or opens the window of the one that runs.
struct Launch {
    bool isAtLogin = false;
};

}  // namespace commandline

/// What the program was started for.
struct CommandLine : std::variant<commandline::Help, commandline::Version, commandline::SelfCheck,
                                  commandline::Launch, Command> {
    using Help = commandline::Help;
    using Version = commandline::Version;
    using SelfCheck = commandline::SelfCheck;
    using Launch = commandline::Launch;
    using variant::variant;

    /// Of the program's arguments, without its name. The error is a sentence.
    [[nodiscard]] static std::expected<CommandLine, std::string> parse(
        std::span<const std::string> arguments);

    [[nodiscard]] static std::string usage();
};

}  // namespace marrowby
