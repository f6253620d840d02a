// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/CommandLine.h"

#include "Platforms/Linux/Desktop/LinuxSystemSettings.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>

namespace marrowby {

std::expected<CommandLine, std::string> CommandLine::parse(std::span<const std::string> arguments) {
    if (arguments.empty()) return Launch{};
    if (std::ranges::find(arguments, "--help") != arguments.end()) return Help{};
    const std::string& first = arguments.front();
    if (arguments.size() == 1) {
        if (first == "--version") return Version{};
        if (first == "--self-check") return SelfCheck{};
        if (first == LinuxSystemSettings::atLoginFlag) return Launch{.isAtLogin = true};
    }
    return Command::parse(arguments);
}

std::string CommandLine::usage() {
    return translated(
        "marrowby-unlock [COMMAND | --at-login | --self-check | --help | --version]\n"
        "Unlocks the screen with your face. Started once more, it opens the window of the one\n"
        "that runs.\n\n"
        "Commands to the one that runs:\n"
        "  status           says in a line whether it can unlock; status 0 when it can\n"
        "  doctor           says in a line each what an unlock needs, and what to do about "
        "what\n"
        "                   is missing; status 0 when all is there\n"
        "  look             looks for the face in front of the camera as at the lock screen,\n"
        "                   and types nothing; status 0 when it would unlock\n"
        "  pause [MINUTES]  looks for nobody, until resumed at the latest when it ends\n"
        "  resume           ends the pause\n"
        "  settings         opens the settings\n"
        "  quit             ends it\n\n"
        "  --at-login       the session starts it: opens no window\n"
        "  --self-check     the part of doctor that needs no running program\n"
        "  --help           this\n"
        "  --version        its version\n\n"
        "Status 1 means no, 2 an unknown argument, 3 that no running program answered.\n");
}

}  // namespace marrowby
