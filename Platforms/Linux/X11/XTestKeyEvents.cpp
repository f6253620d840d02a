// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/XTestKeyEvents.h"

#include "Platforms/Linux/Desktop/Keysyms.h"
#include "Platforms/Linux/X11/ClientPrograms.h"
#include "Platforms/Linux/X11/X11ScreenCover.h"
#include "Platforms/Linux/X11/XKeyDeliveries.h"
#include "Platforms/Linux/X11/XKeyGuard.h"
#include "Platforms/Linux/X11/XKeyLayout.h"
#include "Platforms/Linux/X11/XLentKeys.h"
#include "Platforms/Linux/X11/XRawKeys.h"
#include "Platforms/Linux/X11/XcbConnection.h"
#include "UnlockCore/Foundation/SecretBytes.h"
#include "UnlockCore/Foundation/Text.h"
#include "UnlockCore/Platform/LockerTiming.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <iterator>
#include <optional>
#include <thread>
#include <utility>

#include <xcb/xcb.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon.h>

// This C header has a member named `explicit`.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#define explicit explicitly
#include <xcb/xkb.h>
#undef explicit
#pragma GCC diagnostic pop

namespace marrowby {

namespace {

bool hasXTest(const XcbConnection& connection) {
    return connection.reply<xcb_test_get_version_reply>(xcb_test_get_version(
               connection.get(), XCB_TEST_MAJOR_VERSION, XCB_TEST_MINOR_VERSION)) != nullptr;
}

/// The key for a keysym. Secret: these are a password's characters.
struct KeyUse {
    xcb_keysym_t keysym;
    xcb_keycode_t key;
    bool isLent;
};

/// Detects other people's key presses, and our own keys when they come back.
class Bystander {
  public:
    explicit Bystander(const XcbConnection& connection)
        : connection_(connection),
          rawKeys_(XRawKeys::select(connection, XRawKeys::Whose::usersOnly)) {}

    /// Reads all events that the connection has received.
    [[nodiscard]] bool isUndisturbed() {
        while (const XcbConnection::Owned<xcb_generic_event_t> event{
            xcb_poll_for_event(connection_.get())}) {
            const auto key = rawKeys_ ? rawKeys_->read(*event) : std::nullopt;
            isDisturbed_ |= key && key->down;
            // Our own key, from the guard's passive grab.
            isDisturbed_ |= (event->response_type & 0x7F) == XCB_KEY_PRESS;
        }
        return !isDisturbed_;
    }

  private:
    const XcbConnection& connection_;
    const std::optional<XRawKeys> rawKeys_;
    bool isDisturbed_ = false;
};

}  // namespace

struct XTestKeyEvents::Rules {
    Pause pause;
    std::vector<std::string> vouchedPaths;
    std::function<void(const LockerDoubt&)> onDoubt;
    std::function<void(std::string)> onUnknownLocker;
};

namespace {

/// A press and a release.
constexpr std::size_t eventsOfTap = 2;

class XTestKeyEventSource final : public KeyEventSource {
  public:
    using Rules = XTestKeyEvents::Rules;

    XTestKeyEventSource(std::unique_ptr<XcbConnection> connection, XKeyLayout layout,
                        SecretArray<KeyUse> uses, Rules rules)
        : connection_(std::move(connection)),
          layout_(std::move(layout)),
          uses_(std::move(uses)),
          rules_(std::move(rules)),
          programs_(*connection_),
          guard_(*connection_),
          lentKeys_(*connection_),
          bystander_(*connection_) {}
    XTestKeyEventSource(const XTestKeyEventSource&) = delete;
    XTestKeyEventSource& operator=(const XTestKeyEventSource&) = delete;

    ~XTestKeyEventSource() override {
        guard_.release();
        if (heldModifier_) sendRelease(*heldModifier_);
        lentKeys_.takeBack();
        if (hasClearedLocks_) lockModifiers(layout_.lockedModifiers());
        (void)synchronize();
    }

    /// Adds a character to type. False when no free key is left for it.
    [[nodiscard]] bool add(xcb_keysym_t keysym) {
        if (keysym == XKB_KEY_NoSymbol) return false;
        if (find(keysym)) return true;
        const auto key = layout_.key(keysym);
        lentCount_ += key ? 0U : 1U;
        if (lentCount_ > layout_.freeKeys().size()) return false;
        uses_.values()[useCount_++] = {
            .keysym = keysym, .key = key.value_or(0), .isLent = !key.has_value()};
        return true;
    }

    [[nodiscard]] bool isAdmitted(const std::function<bool()>& stillLocked) override {
        const auto doubt = admit(stillLocked);
        if (doubt && rules_.onDoubt) rules_.onDoubt(*doubt);
        if (doubt && doubt->fact == LockerDoubt::Fact::programIsUnknown && rules_.onUnknownLocker)
            rules_.onUnknownLocker(doubt->path);
        return !doubt && isUndisturbed() && synchronize();
    }

    /// Has the locker show its dialog for a harmless key, where it needs one and is admitted.
    void wakeDialog(const std::function<bool()>& stillLocked) {
        const auto locker = identify(stillLocked);
        if (locker && !pace_.dialog.empty()) (void)awaitDialog(*locker, stillLocked);
    }

    [[nodiscard]] KeyPace pace() const override {
        return {.tapsFirst = false,
                .wake = {},
                .shortcut = pace_.shortcut,
                .afterText = {},
                .afterReturn = {}};
    }

    /// Non-modifier keys are pressed and released in one stroke, because the press may end the
    /// locker.
    [[nodiscard]] bool post(const KeyPress& press) override {
        if (pace_.erasesByOneKey && press.key == EditingKey::control) return true;
        const auto key = find(pace_.erasesByOneKey && press.key == EditingKey::letterU
                                  ? xkey::eraseLine
                                  : xkey::keysym(press.key));
        if (!key || !holder_ || !releaseHeldModifiers()) return false;
        if (isModifier(*key)) {
            if (press.down) heldModifier_ = key;
            if (!stroke(XKeyGuard::Burst(guard_, &*holder_),
                        std::array{XKeyGuard::Event{.key = *key, .down = press.down}}))
                return false;
            if (!press.down) heldModifier_.reset();
        } else if (press.down && !tap(XKeyGuard::Burst(guard_, &*holder_), *key)) {
            return false;
        }
        rules_.pause(lockertiming::eventGap);
        return true;
    }

    [[nodiscard]] bool postText(std::span<const char16_t> units, bool down) override {
        if (!down) return true;
        if (!holder_ || !releaseHeldModifiers()) return false;
        const XKeyGuard::Burst burst(guard_, &*holder_);
        while (!units.empty()) {
            const auto key = find(xkb_utf32_to_keysym(takeCharacter(units)));
            if (!key || !tap(burst, *key)) return false;
        }
        return true;
    }

    [[nodiscard]] bool isUndisturbed() override {
        isStopped_ |= !bystander_.isUndisturbed();
        if (deliveries_ && holder_) {
            isStopped_ |= deliveries_->isLost() ||
                          std::ranges::any_of(deliveries_->receivers(), [&](std::uint32_t client) {
                              return client != holder_->client;
                          });
        }
        return !isStopped_;
    }

    void settle(const std::function<bool()>& stillLocked) override {
        guard_.release();
        TimeInterval sinceHandled{};
        for (TimeInterval waited{}; hasPosted_ && waited < lockertiming::handlingLimit &&
                                    sinceHandled < lockertiming::returningLimit && stillLocked();
             waited += lockertiming::returningStep) {
            rules_.pause(lockertiming::returningStep);
            sinceHandled += lockertiming::returningStep;
            (void)isUndisturbed();
            if (dialog_ && deliveries_->rawKeys(*dialog_).unhandled > 0) sinceHandled = {};
        }
        deliveries_.reset();
    }

  private:
    using Doubt = std::optional<LockerDoubt>;

    [[nodiscard]] std::span<KeyUse> used() { return uses_.values().first(useCount_); }
    [[nodiscard]] std::span<const KeyUse> used() const { return uses_.values().first(useCount_); }

    [[nodiscard]] std::optional<xcb_keycode_t> find(xcb_keysym_t keysym) const {
        const auto found = std::ranges::find(used(), keysym, &KeyUse::keysym);
        if (found == used().end()) return std::nullopt;
        return found->key;
    }

    [[nodiscard]] bool isModifier(xcb_keycode_t key) const {
        return std::ranges::find(layout_.modifierKeys(), key) != layout_.modifierKeys().end();
    }

    /// The locker that keys would reach; its pace and the holder of the keyboard become known.
    [[nodiscard]] std::expected<ClientProgram, LockerDoubt> identify(
        const std::function<bool()>& stillLocked) {
        guard_.arm();
        LockerFacts facts;
        XKeyHolder holder;
        const auto doubtIs = [&](LockerDoubt::Fact fact) {
            const auto verdict = lockeridentity::judge(facts, rules_.vouchedPaths);
            return !verdict && verdict.error().fact == fact;
        };
        readCovers(facts, holder);
        // A locker may grab the keyboard before its window is mapped.
        for (TimeInterval waited{}; doubtIs(LockerDoubt::Fact::monitorIsUncovered) &&
                                    waited < lockertiming::coverLimit && stillLocked();
             waited += lockertiming::dialogStep) {
            rules_.pause(lockertiming::dialogStep);
            readCovers(facts, holder);
        }
        // Only the receiver is unknown: worth a test key.
        if (doubtIs(LockerDoubt::Fact::keyReachesNobody)) {
            deliveries_ = XKeyDeliveries::create(*connection_);
            if (const auto client = tapReceiver()) {
                holder.client = *client;
                facts.receiver = programs_.behind(*client);
                if (facts.receiver) holder.process = facts.receiver->process;
            }
        }
        if (facts.receiver && facts.receiver->hasEnded) {
            if (auto inherited =
                    lockeridentity::inherited(facts, programs_.heirs(), rules_.vouchedPaths))
                facts = std::move(*inherited);
        }
        const auto verdict = lockeridentity::judge(facts, rules_.vouchedPaths);
        if (!verdict) return std::unexpected(verdict.error());
        if (!facts.receiver)
            return std::unexpected(LockerDoubt{.fact = LockerDoubt::Fact::keyReachesNobody});
        pace_ = verdict->pace;
        holder_ = std::move(holder);
        return *std::move(facts.receiver);
    }

    /// `nullopt` when ready for the first key.
    [[nodiscard]] Doubt admit(const std::function<bool()>& stillLocked) {
        const auto locker = identify(stillLocked);
        if (!locker) return locker.error();
        if (!chooseKeys()) return LockerDoubt{.fact = LockerDoubt::Fact::keysAreReserved};
        if (!pace_.dialog.empty() && !awaitDialog(*locker, stillLocked))
            return LockerDoubt{.fact = LockerDoubt::Fact::dialogIsMissing, .path = locker->path};
        const auto hasReadAll = [&] { return programs_.hasReadAll(locker->process); };
        if (pace_.needsEventLoop)
            give(stillLocked, [&] { return ClientPrograms::isInEventLoop(locker->process); });
        // After the locker has handled the test key: many lose a MappingNotify that arrives during
        // a key lookup.
        give(stillLocked, hasReadAll);
        const bool isLending = borrow();
        if (isLending) give(stillLocked, hasReadAll);
        const auto needed = std::max(pace_.wake, isLending ? pace_.lending : TimeInterval{});
        if (needed > TimeInterval{}) rules_.pause(needed);
        return std::nullopt;
    }

    void readCovers(LockerFacts& facts, XKeyHolder& holder) const {
        facts = {.isKeyboardHeld = guard_.isKeyboardHeld(), .covers = {}, .receiver = {}};
        holder.covers.clear();
        for (const auto& window : X11ScreenCover::read(*connection_)) {
            auto& cover = facts.covers.emplace_back();
            if (!window) continue;
            cover = {.overrideRedirect = window->overrideRedirect,
                     .owner = programs_.behind(window->id)};
            holder.covers.push_back(window->id);
        }
    }

    /// The client that receives a tap of Shift.
    [[nodiscard]] std::optional<std::uint32_t> tapReceiver() {
        if (!deliveries_ || !tapHarmless(xkey::leftShift, nullptr)) return std::nullopt;
        std::vector<std::uint32_t> receivers;
        while (receivers.empty()) {
            receivers = deliveries_->receivers();
            if (receivers.empty() && !deliveries_->wait(lockertiming::deliveryLimit))
                return std::nullopt;
        }
        if (receivers.size() != 1) return std::nullopt;
        return receivers.front();
    }

    /// Taps a key that reveals nothing about the password.
    [[nodiscard]] bool tapHarmless(xcb_keysym_t keysym, const XKeyHolder* holder) const {
        const auto key = layout_.key(keysym);
        if (!key) return false;
        const std::array events{XKeyGuard::Event{.key = *key, .down = true},
                                XKeyGuard::Event{.key = *key, .down = false}};
        return guard_.send(events, holder) == XKeyGuard::Sent::toHolder;
    }

    /// Moves characters of keys that the guard could not grab, such as other programs' hotkeys, to
    /// free keys.
    [[nodiscard]] bool chooseKeys() {
        std::vector<xcb_keycode_t> free;
        std::ranges::copy_if(layout_.freeKeys(), std::back_inserter(free),
                             [&](xcb_keycode_t key) { return guard_.covers(key); });
        std::vector<xcb_keycode_t> lent;
        for (auto& use : used()) {
            if (pace_.erasesByOneKey && use.keysym == xkey::leftControl)
                use = {.keysym = xkey::eraseLine, .key = 0, .isLent = true};
            use.isLent |= !guard_.covers(use.key) && !isModifier(use.key);
            if (!use.isLent) continue;
            if (lent.size() == free.size()) return false;
            use.key = free[lent.size()];
            lent.push_back(use.key);
        }
        lentKeys_.note(lent);
        return true;
    }

    /// Maps the chosen keys; true when any was lent.
    [[nodiscard]] bool borrow() {
        bool isLending = false;
        // Server grab: Xlib drops MappingNotify events that arrive while a client fetches the
        // keymap.
        xcb_grab_server(connection_->get());
        for (const auto& use : used()) {
            if (!use.isLent) continue;
            lentKeys_.lend(use.key, use.keysym);
            isLending = true;
        }
        hasClearedLocks_ = layout_.lockedModifiers() != 0;
        if (hasClearedLocks_) lockModifiers(0);
        xcb_ungrab_server(connection_->get());
        (void)synchronize();
        return isLending;
    }

    [[nodiscard]] std::optional<std::uint32_t> dialogAmong(
        const std::vector<std::uint32_t>& clients, const ClientProgram& locker) const {
        for (const auto client : clients) {
            const auto program = programs_.behind(client);
            if (program && lockeridentity::isDialog(*program, locker, pace_)) return client;
        }
        return std::nullopt;
    }

    /// Waits until the locker's dialog takes keys. A locker that has just started ignores keys for
    /// a while, so it is tapped again.
    [[nodiscard]] bool awaitDialog(const ClientProgram& locker,
                                   const std::function<bool()>& stillLocked) {
        TimeInterval untilTap = lockertiming::dialogTapStep;
        for (TimeInterval waited{}; waited < lockertiming::dialogLimit && stillLocked();
             waited += lockertiming::dialogStep) {
            const auto dialog = dialogAmong(programs_.clients(), locker);
            const Sight sight = dialog ? look(*dialog) : Sight::none;
            if (sight == Sight::there) {
                dialog_ = dialog;
                return true;
            }
            if (sight == Sight::coming) untilTap = lockertiming::dialogTapStep;
            if (sight == Sight::dubious) untilTap = {};
            if (untilTap <= TimeInterval{}) {
                untilTap = lockertiming::dialogTapStep;
                if (!holder_ || !tapHarmless(xkey::leftShift, &*holder_)) return false;
            }
            untilTap -= lockertiming::dialogStep;
            rules_.pause(lockertiming::dialogStep);
        }
        return false;
    }

    enum class Sight {
        none,
        coming,
        /// It may end at the tap that it has handled.
        dubious,
        there,
    };

    [[nodiscard]] Sight look(std::uint32_t dialog) {
        switch (pace_.dialogSign) {
            case LockerPace::DialogSign::client:
                break;
            case LockerPace::DialogSign::window:
                return showsWindowOf(dialog) ? Sight::there : Sight::coming;
            case LockerPace::DialogSign::rawKeys: {
                // Reads what was delivered.
                (void)isUndisturbed();
                const auto keys = deliveries_->rawKeys(dialog);
                if (keys.unhandled > 0) return Sight::coming;
                if (keys.received == 0) return Sight::none;
                return keys.received < lockertiming::tapsOfDialog * eventsOfTap ? Sight::dubious
                                                                                : Sight::there;
            }
        }
        return Sight::there;
    }

    /// Waits a limited time for a condition. Not every locker shows it, so a timeout is no failure.
    void give(const std::function<bool()>& stillLocked, const std::function<bool()>& holds) const {
        for (TimeInterval waited{}; waited < lockertiming::busyLimit && stillLocked() && !holds();
             waited += lockertiming::busyStep) {
            rules_.pause(lockertiming::busyStep);
        }
    }

    /// Whether a window of `client` is viewable, at any depth.
    [[nodiscard]] bool showsWindowOf(std::uint32_t client) const {
        std::vector<xcb_window_t> open{connection_->root()};
        const auto mask = xcb_get_setup(connection_->get())->resource_id_mask;
        while (!open.empty()) {
            const auto window = open.back();
            open.pop_back();
            const auto tree = connection_->reply<xcb_query_tree_reply>(
                xcb_query_tree(connection_->get(), window));
            if (!tree) continue;
            for (const auto child :
                 std::span(xcb_query_tree_children(tree.get()),
                           static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())))) {
                open.push_back(child);
                if ((child & ~mask) != (client & ~mask)) continue;
                const auto attributes = connection_->reply<xcb_get_window_attributes_reply>(
                    xcb_get_window_attributes(connection_->get(), child));
                if (attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE) return true;
            }
        }
        return false;
    }

    void lockModifiers(std::uint8_t modifiers) const {
        xcb_xkb_latch_lock_state(connection_->get(), XCB_XKB_ID_USE_CORE_KBD, 0xFF, modifiers, 0, 0,
                                 0xFF, 0, 0);
    }

    /// Releases the modifiers that are held down, before the first stroke.
    [[nodiscard]] bool releaseHeldModifiers() {
        if (std::exchange(hasPosted_, true)) return true;
        const auto keymap =
            connection_->reply<xcb_query_keymap_reply>(xcb_query_keymap(connection_->get()));
        if (!keymap) return false;
        for (const auto key : layout_.modifierKeys()) {
            if (((keymap->keys[key / 8] >> (key % 8)) & 1) != 0) sendRelease(key);
        }
        return true;
    }

    /// Unguarded: a release reveals nothing.
    void sendRelease(xcb_keycode_t key) const {
        xcb_test_fake_input(connection_->get(), XCB_KEY_RELEASE, key, XCB_CURRENT_TIME, XCB_NONE, 0,
                            0, 0);
        connection_->flush();
    }

    [[nodiscard]] bool tap(const XKeyGuard::Burst& burst, xcb_keycode_t key) {
        return stroke(burst, std::array{XKeyGuard::Event{.key = key, .down = true},
                                        XKeyGuard::Event{.key = key, .down = false}});
    }

    [[nodiscard]] bool stroke(const XKeyGuard::Burst& burst,
                              std::span<const XKeyGuard::Event> events) {
        if (!isUndisturbed()) return false;
        const auto sent = burst.send(events);
        isStopped_ |= sent == XKeyGuard::Sent::toNobody;
        return sent == XKeyGuard::Sent::toHolder && isUndisturbed();
    }

    /// Waits until the server has processed all requests; false when the display is lost.
    [[nodiscard]] bool synchronize() const {
        return connection_->reply<xcb_get_input_focus_reply>(
                   xcb_get_input_focus(connection_->get())) != nullptr;
    }

    std::unique_ptr<XcbConnection> connection_;
    XKeyLayout layout_;
    SecretArray<KeyUse> uses_;
    std::size_t useCount_ = 0;
    std::size_t lentCount_ = 0;
    const Rules rules_;
    const ClientPrograms programs_;
    XKeyGuard guard_;
    XLentKeys lentKeys_;
    Bystander bystander_;
    std::unique_ptr<XKeyDeliveries> deliveries_;
    LockerPace pace_;
    std::optional<XKeyHolder> holder_;
    std::optional<std::uint32_t> dialog_;
    std::optional<xcb_keycode_t> heldModifier_;
    bool hasClearedLocks_ = false;
    bool hasPosted_ = false;
    bool isStopped_ = false;
};

bool isControl(char32_t character) {
    return character < 0x20 || character == 0x7F;
}

std::unique_ptr<XTestKeyEventSource> makeXTestSource(const std::string& displayName,
                                                     XTestKeyEventSource::Rules rules,
                                                     std::span<const char16_t> text,
                                                     std::span<const EditingKey> keys) {
    auto connection = XcbConnection::create(displayName);
    if (!connection || !hasXTest(**connection)) return nullptr;
    auto layout = XKeyLayout::read(**connection);
    auto uses = SecretArray<KeyUse>::create(text.size() + keys.size());
    if (!layout || !uses) return nullptr;
    auto source = std::make_unique<XTestKeyEventSource>(std::move(*connection), std::move(*layout),
                                                        std::move(*uses), std::move(rules));
    for (const auto key : keys) {
        if (!source->add(xkey::keysym(key))) return nullptr;
    }
    while (!text.empty()) {
        const char32_t character = takeCharacter(text);
        if (isControl(character) || !source->add(xkb_utf32_to_keysym(character))) return nullptr;
    }
    return source;
}

}  // namespace

void XTestKeyEvents::sleep(TimeInterval duration) {
    std::this_thread::sleep_for(duration);
}

XTestKeyEvents::XTestKeyEvents(std::string displayName, Pause pause)
    : displayName_(std::move(displayName)), pause_(std::move(pause)) {}

XTestKeyEvents::~XTestKeyEvents() = default;

void XTestKeyEvents::vouchFor(const std::vector<std::string>& paths) {
    const MutexLock lock(mutex_);
    vouched_ = paths;
}

void XTestKeyEvents::setUnknownLockerHandler(const std::function<void(std::string path)>& handler) {
    const MutexLock lock(mutex_);
    onUnknownLocker_ = handler;
}

bool XTestKeyEvents::isTrusted() const {
    const MutexLock lock(mutex_);
    // A lost display is only noticed by reading.
    if (trusted_) trusted_->discardEvents();
    if (!trusted_ || trusted_->hasError()) {
        auto connection = XcbConnection::create(displayName_);
        trusted_ = connection && hasXTest(**connection) ? std::move(*connection) : nullptr;
        if (trusted_) XLentKeys::repair(*trusted_);
    }
    return trusted_ != nullptr;
}

XTestKeyEvents::Rules XTestKeyEvents::rules() const {
    const MutexLock lock(mutex_);
    return {.pause = pause_,
            .vouchedPaths = vouched_,
            .onDoubt = onDoubt,
            .onUnknownLocker = onUnknownLocker_};
}

void XTestKeyEvents::wakeField(const std::function<bool()>& stillLocked) {
    const auto source = makeXTestSource(displayName_, rules(), {}, {});
    if (source) source->wakeDialog(stillLocked);
}

std::unique_ptr<KeyEventSource> XTestKeyEvents::makeSource(std::span<const char16_t> text,
                                                           std::span<const EditingKey> keys) {
    return makeXTestSource(displayName_, rules(), text, keys);
}

}  // namespace marrowby
