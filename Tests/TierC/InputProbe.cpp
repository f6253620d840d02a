// SPDX-License-Identifier: Apache-2.0

// Types through the kernel's own keyboard, and reads what comes of it as the program does and as a
// desktop would. Prints a line for each fact.

#include "Platforms/Linux/Input/EvdevDevices.h"
#include "Platforms/Linux/Input/EvdevInputIdle.h"
#include "Platforms/Linux/Input/EvdevSpaceKeys.h"
#include "Platforms/Linux/Input/UinputKeyEvents.h"
#include "Platforms/Linux/X11/XTestKeyEvents.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>

#include <linux/input.h>
#include <xkbcommon/xkbcommon.h>

namespace marrowby {
namespace {

constexpr const char* inputs = "/dev/input";
constexpr const char* germanLayout = "de";
constexpr std::string_view password = "Käse & 3 Öfen ß";

void tell(bool isSo, std::string_view fact) {
    std::cout << (isSo ? "ok: " : "NO: ") << fact << '\n' << std::flush;
}

bool waitFor(const std::function<bool()>& condition) {
    const QDeadlineTimer deadline(std::chrono::seconds(30));
    while (!condition() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return condition();
}

/// What a desktop with a German layout makes of the virtual keyboards' keys.
class Desktop {
  public:
    [[nodiscard]] bool hasKeyboard() {
        devices_.refresh();
        for (const auto& [path, device] : devices_.all()) {
            if (device.description.isVirtual) path_ = path;
        }
        return !path_.empty();
    }
    /// All text since the last call, with control characters.
    [[nodiscard]] std::string readText() {
        std::string text;
        devices_.drain(path_, [&](const input_event& event) {
            if (event.type != EV_KEY || event.value > 1) return;
            constexpr xkb_keycode_t firstCode = 8;
            const xkb_keycode_t key = event.code + firstCode;
            if (event.value == 1) {
                std::array<char, 8> character{};
                xkb_state_key_get_utf8(state_.get(), key, character.data(), character.size());
                text += character.data();
            }
            xkb_state_update_key(state_.get(), key, event.value == 1 ? XKB_KEY_DOWN : XKB_KEY_UP);
        });
        return text;
    }

  private:
    template <auto Unref>
    struct Release {
        void operator()(auto* object) const { Unref(object); }
    };

    EvdevDevices devices_{inputs};
    std::string path_;
    std::unique_ptr<xkb_context, Release<xkb_context_unref>> context_{
        xkb_context_new(XKB_CONTEXT_NO_FLAGS)};
    const xkb_rule_names names_{.rules = nullptr,
                                .model = nullptr,
                                .layout = germanLayout,
                                .variant = nullptr,
                                .options = nullptr};
    std::unique_ptr<xkb_keymap, Release<xkb_keymap_unref>> keymap_{
        xkb_keymap_new_from_names(context_.get(), &names_, XKB_KEYMAP_COMPILE_NO_FLAGS)};
    std::unique_ptr<xkb_state, Release<xkb_state_unref>> state_{xkb_state_new(keymap_.get())};
};

int run(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    int guardsLeft = std::numeric_limits<int>::max();
    UinputKeyEvents keyEvents(
        {.model = {}, .layout = germanLayout, .variant = {}, .options = {}},
        [&] { return guardsLeft-- > 0; }, &XTestKeyEvents::sleep);
    Desktop desktop;
    std::string text;
    /// Reads meanwhile, as the kernel keeps 64 events for a reader.
    const auto type = [&] {
        std::atomic<bool> isTyped = false;
        std::atomic<bool> isOver = false;
        text.clear();
        std::thread typing([&] {
            const auto* bytes = reinterpret_cast<const std::uint8_t*>(password.data());
            isTyped = keystrokeinjector::typePassword(keyEvents, {bytes, password.size()},
                                                      [] { return true; })
                          .outcome()
                          .has_value();
            isOver = true;
        });
        (void)waitFor([&] {
            const bool wasOver = isOver;
            text += desktop.readText();
            return wasOver;
        });
        typing.join();
        return isTyped.load();
    };

    tell(keyEvents.isTrusted() && waitFor([&] { return desktop.hasKeyboard(); }),
         "the kernel makes a keyboard, which is known as a program's");

    const EvdevInputIdle idle(inputs);
    EvdevSpaceKeys spaceKeys(inputs);
    int synthetic = 0;
    int real = 0;
    const auto listening =
        spaceKeys.listen([&](SpaceKeys::Press press) { ++(press.isSynthetic ? synthetic : real); });
    (void)idle.sinceLastInput();
    XTestKeyEvents::sleep(TimeInterval(2));
    const auto before = idle.sinceLastInput();
    const bool isTyped = type();
    const auto after = idle.sinceLastInput();
    const std::string whole = "\x15" + std::string(password) + "\r";
    tell(isTyped && text == whole, "the field is cleared, the password typed and Return pressed");
    tell(before && after && *before > TimeInterval(1) && *after < *before,
         "idle time ends with a key");
    tell(waitFor([&] { return synthetic == 4; }) && real == 0,
         "each Space is heard once, as a program's");

    // The clearing asks for each of its keys, too.
    guardsLeft = 9;
    const bool isTypedUnguarded = type();
    tell(!isTypedUnguarded && text.size() > 1 && text.size() < whole.size() &&
             whole.starts_with(text),
         "typing ends where the lock does: after " + std::to_string(text.size()) + " bytes");
    guardsLeft = std::numeric_limits<int>::max();
    tell(type() && text == whole, "no key is left held");
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace marrowby

int main(int argumentCount, char** arguments) {
    return marrowby::run(argumentCount, arguments);
}
