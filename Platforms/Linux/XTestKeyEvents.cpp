#include "Platforms/Linux/XTestKeyEvents.h"

#include "Platforms/Linux/X11LockerTraceReader.h"
#include "Platforms/Linux/XKeyLayout.h"
#include "Platforms/Linux/XRawKeys.h"
#include "Platforms/Linux/XcbConnection.h"
#include "UnlockCore/Foundation/SecretBytes.h"
#include "UnlockCore/Foundation/Text.h"
#include "UnlockCore/Platform/KeyCodes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <thread>
#include <utility>

#include <xcb/xcb.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon.h>

// This header of C has a member of that name.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#define explicit explicitly
#include <xcb/xkb.h>
#undef explicit
#pragma GCC diagnostic pop

namespace marrowby {

namespace {

// How much of what was sent libxcb may keep in its buffer, in requests of the smallest size.
constexpr int requestsInBuffer = 16384 / 4;

bool hasXTest(const XcbConnection& connection) {
    return connection.reply<xcb_test_get_version_reply>(xcb_test_get_version(
               connection.get(), XCB_TEST_MAJOR_VERSION, XCB_TEST_MINOR_VERSION)) != nullptr;
}

/// Which key gives a keysym, and whether it was lent to it. The characters of a password.
struct KeyUse {
    xcb_keysym_t keysym;
    xcb_keycode_t key;
    bool isLent;
};

/// Notices who else is at the keyboard of a display, and whether its locker stays the same.
class Bystander {
  public:
    explicit Bystander(const XcbConnection& connection)
        : connection_(connection),
          rawKeys_(XRawKeys::select(connection, XRawKeys::Whose::usersOnly)),
          reader_(connection),
          holder_(holder()) {}

    /// Reads all that the connection has got.
    [[nodiscard]] bool isUndisturbed() {
        while (const XcbConnection::Owned<xcb_generic_event_t> event{
            xcb_poll_for_event(connection_.get())}) {
            const auto key = rawKeys_ ? rawKeys_->read(*event) : std::nullopt;
            hasOthersKeys_ |= key && key->down;
        }
        return !hasOthersKeys_ && (!holder_ || holder() == holder_);
    }

  private:
    [[nodiscard]] std::optional<LockHolder> holder() const {
        const auto traces = reader_.read();
        return traces ? lockHolder(*traces) : std::nullopt;
    }

    const XcbConnection& connection_;
    const std::optional<XRawKeys> rawKeys_;
    const X11LockerTraceReader reader_;
    /// Nothing where the screen is not known to be locked by a window.
    const std::optional<LockHolder> holder_;
    bool hasOthersKeys_ = false;
};

class XTestKeyEventSource final : public KeyEventSource {
  public:
    XTestKeyEventSource(std::unique_ptr<XcbConnection> connection, XKeyLayout layout,
                        SecretArray<KeyUse> uses, XTestKeyEvents::Pause pause)
        : connection_(std::move(connection)),
          layout_(std::move(layout)),
          uses_(std::move(uses)),
          pause_(std::move(pause)),
          bystander_(*connection_) {}
    XTestKeyEventSource(const XTestKeyEventSource&) = delete;
    XTestKeyEventSource& operator=(const XTestKeyEventSource&) = delete;

    ~XTestKeyEventSource() override {
        for (const auto& use : used()) {
            if (use.isLent) map(use.key, XCB_NO_SYMBOL);
        }
        if (layout_.lockedModifiers() != 0) lockModifiers(layout_.lockedModifiers());
        for (int i = 0; i < requestsInBuffer; ++i)
            xcb_no_operation(connection_->get());
        (void)synchronize();
    }

    /// Finds or lends a key for `keysym`. False where no key is free.
    [[nodiscard]] bool add(xcb_keysym_t keysym) {
        if (keysym == XKB_KEY_NoSymbol) return false;
        if (find(keysym)) return true;
        auto key = layout_.key(keysym);
        const bool isLent = !key;
        if (isLent) {
            if (lentCount_ == layout_.freeKeys().size()) return false;
            key = layout_.freeKeys()[lentCount_++];
        }
        uses_.values()[useCount_++] = {.keysym = keysym, .key = *key, .isLent = isLent};
        return true;
    }

    /// Takes effect of what was added.
    [[nodiscard]] bool borrow() {
        for (const auto& use : used()) {
            if (use.isLent) map(use.key, use.keysym);
        }
        if (layout_.lockedModifiers() != 0) lockModifiers(0);
        if (!synchronize()) return false;
        if (lentCount_ > 0) pause_(xkey::lendingTime);
        return true;
    }

    [[nodiscard]] bool post(const KeyPress& press) override {
        if (!releaseHeldModifiers()) return false;
        const auto key = find(press.code);
        return key && send(*key, press.down) && synchronize();
    }

    [[nodiscard]] bool postText(std::span<const char16_t> units, bool down) override {
        if (!down) return true;
        if (!releaseHeldModifiers()) return false;
        while (!units.empty()) {
            const auto key = find(xkb_utf32_to_keysym(takeCharacter(units)));
            if (!key || !send(*key, true) || !send(*key, false)) return false;
        }
        return synchronize();
    }

    [[nodiscard]] bool isUndisturbed() override { return bystander_.isUndisturbed(); }

    void settle(const std::function<bool()>& stillLocked) override {
        if (!hasPosted_) return;
        TimeInterval waited{};
        while (waited < xkey::returningLimit && stillLocked()) {
            pause_(xkey::returningStep);
            waited += xkey::returningStep;
        }
    }

  private:
    [[nodiscard]] std::span<const KeyUse> used() const { return uses_.values().first(useCount_); }

    [[nodiscard]] std::optional<xcb_keycode_t> find(xcb_keysym_t keysym) const {
        const auto found = std::ranges::find(used(), keysym, &KeyUse::keysym);
        if (found == used().end()) return std::nullopt;
        return found->key;
    }

    /// The same on both levels, so that Shift changes nothing.
    void map(xcb_keycode_t key, xcb_keysym_t keysym) const {
        const std::array<xcb_keysym_t, 2> levels{keysym, keysym};
        xcb_change_keyboard_mapping(connection_->get(), 1, key, levels.size(), levels.data());
    }

    void lockModifiers(std::uint8_t modifiers) const {
        xcb_xkb_latch_lock_state(connection_->get(), XCB_XKB_ID_USE_CORE_KBD, 0xFF, modifiers, 0, 0,
                                 0xFF, 0, 0);
    }

    /// Keys that somebody keeps pressed, once.
    [[nodiscard]] bool releaseHeldModifiers() {
        if (std::exchange(hasPosted_, true)) return true;
        const auto keymap =
            connection_->reply<xcb_query_keymap_reply>(xcb_query_keymap(connection_->get()));
        if (!keymap) return false;
        return std::ranges::all_of(layout_.modifierKeys(), [&](xcb_keycode_t key) {
            const bool isHeld = ((keymap->keys[key / 8] >> (key % 8)) & 1) != 0;
            return !isHeld || send(key, false);
        });
    }

    [[nodiscard]] bool send(xcb_keycode_t key, bool down) const {
        xcb_test_fake_input(connection_->get(), down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, key,
                            XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        connection_->flush();
        pause_(xkey::eventGap);
        return !connection_->hasError();
    }

    /// Waits until the server has taken everything; false when it is gone.
    [[nodiscard]] bool synchronize() const {
        return connection_->reply<xcb_get_input_focus_reply>(
                   xcb_get_input_focus(connection_->get())) != nullptr;
    }

    std::unique_ptr<XcbConnection> connection_;
    XKeyLayout layout_;
    SecretArray<KeyUse> uses_;
    std::size_t useCount_ = 0;
    std::size_t lentCount_ = 0;
    XTestKeyEvents::Pause pause_;
    Bystander bystander_;
    bool hasPosted_ = false;
};

bool isControl(char32_t character) {
    return character < 0x20 || character == 0x7F;
}

}  // namespace

void XTestKeyEvents::sleep(TimeInterval duration) {
    std::this_thread::sleep_for(duration);
}

XTestKeyEvents::XTestKeyEvents(std::string displayName, Pause pause)
    : displayName_(std::move(displayName)), pause_(std::move(pause)) {}

XTestKeyEvents::~XTestKeyEvents() = default;

bool XTestKeyEvents::isTrusted() const {
    const MutexLock lock(mutex_);
    // Reading what has come is what notices a lost display.
    if (trusted_) trusted_->discardEvents();
    if (!trusted_ || trusted_->hasError()) {
        auto connection = XcbConnection::create(displayName_);
        trusted_ = connection && hasXTest(**connection) ? std::move(*connection) : nullptr;
    }
    return trusted_ != nullptr;
}

std::unique_ptr<KeyEventSource> XTestKeyEvents::makeSource(std::span<const char16_t> text,
                                                           std::span<const std::uint32_t> codes) {
    auto connection = XcbConnection::create(displayName_);
    if (!connection || !hasXTest(**connection)) return nullptr;
    auto layout = XKeyLayout::read(**connection);
    auto uses = SecretArray<KeyUse>::create(text.size() + codes.size());
    if (!layout || !uses) return nullptr;
    auto source = std::make_unique<XTestKeyEventSource>(std::move(*connection), std::move(*layout),
                                                        std::move(*uses), pause_);
    for (const auto code : codes) {
        if (!source->add(code)) return nullptr;
    }
    while (!text.empty()) {
        const char32_t character = takeCharacter(text);
        if (isControl(character) || !source->add(xkb_utf32_to_keysym(character))) return nullptr;
    }
    if (!source->borrow()) return nullptr;
    return source;
}

}  // namespace marrowby
