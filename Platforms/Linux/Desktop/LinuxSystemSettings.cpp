// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/LinuxSystemSettings.h"

#include "UnlockCore/Platform/AtomicFile.h"

#include <cstdint>
#include <span>
#include <sstream>
#include <string_view>
#include <utility>

namespace marrowby {

namespace {

constexpr std::size_t entryLimit = std::size_t{64} << 10;

/// Quotes an argument of an Exec line, then escapes it again as a string value of a desktop entry.
std::string execArgument(std::string_view argument) {
    std::string result = "\"";
    for (const char character : argument) {
        if (character == '%') result += '%';
        if (character == '\\') {
            result += "\\\\\\";
        } else if (std::string_view("\"`$").contains(character)) {
            result += "\\\\";
        }
        result += character;
    }
    return result + '"';
}

std::string entryFor(const std::string& program) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Marrowby Unlock\n"
           "Comment=Unlocks the screen with your face\n"
           "Icon=app.quenby.unlock\n"
           "Exec=" +
           execArgument(program) + " " + LinuxSystemSettings::atLoginFlag +
           "\n"
           "TryExec=" +
           program +
           "\n"
           "Terminal=false\n"
           "NoDisplay=true\n";
}

std::span<const std::uint8_t> bytes(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

LinuxSystemSettings::LinuxSystemSettings(FileSystem& files, const std::filesystem::path& configHome,
                                         std::filesystem::path program)
    : files_(files),
      entry_(configHome / "autostart" / "app.quenby.unlock.desktop"),
      program_(std::move(program)) {}

bool LinuxSystemSettings::open(Pane /*pane*/) {
    return false;
}

bool LinuxSystemSettings::opensAtLogin() const {
    const auto content = files_.read(entry_, entryLimit);
    if (!content) return false;
    std::istringstream lines(std::string(content->begin(), content->end()));
    for (std::string line; std::getline(lines, line);) {
        if (line == "Hidden=true" || line == "X-GNOME-Autostart-enabled=false") return false;
    }
    return true;
}

bool LinuxSystemSettings::setOpensAtLogin(bool opens) {
    if (opens)
        return atomicfile::replace(files_, entry_, bytes(entryFor(program_.string()))).has_value();
    return !files_.exists(entry_) || files_.remove(entry_).has_value();
}

}  // namespace marrowby
