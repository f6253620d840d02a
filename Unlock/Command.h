// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace marrowby {

/// What the user tells the running program from a terminal.
struct Command {
    enum class Verb : std::uint8_t { status, doctor, look, pause, resume, settings, quit };

    /// Longest pause: a week.
    static constexpr std::int64_t maxMinutes = 10080;

    Verb verb = Verb::status;
    /// Of a pause; none lasts until it is ended.
    std::optional<std::int64_t> minutes{};
    friend bool operator==(const Command&, const Command&) = default;

    /// The error is a sentence.
    [[nodiscard]] static std::expected<Command, std::string> parse(
        std::span<const std::string> words);
};

/// The name on the command line.
[[nodiscard]] std::string_view rawValue(Command::Verb verb);

struct CommandReply {
    /// The process's exit status.
    enum class Status : std::uint8_t {
        done = 0,
        /// Not ready, not recognised, or refused.
        no = 1,
        misused = 2,
        /// No running program answered.
        unreached = 3,
    };

    Status status = Status::done;
    /// Lines without a line break at the end; may be empty.
    std::string text{};
    friend bool operator==(const CommandReply&, const CommandReply&) = default;
};

/// Called once.
using CommandAnswer = std::function<void(const CommandReply&)>;

}  // namespace marrowby
