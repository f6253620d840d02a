// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/KeyEvents.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace marrowby {

/// A keyboard that records its keys, and a lock screen that can end. One thread at a time.
class FakeKeyEvents final : public KeyEvents {
  public:
    struct Text {
        std::u16string units;
        bool down = false;
        friend bool operator==(const Text&, const Text&) = default;
    };
    enum class Note { fieldWoken, settled, sourceGone };
    /// In the order of time; a pause by its length.
    using Event = std::variant<KeyPress, Text, TimeInterval, Note>;

    bool trusted = true;
    bool accepts = true;
    /// No source can be had.
    bool hasNoSource = false;
    /// No screen locker has the keyboard.
    bool isAdmitted = true;
    KeyPace pace{.tapsFirst = false};
    /// The posts, text or not, that succeed.
    std::optional<std::size_t> postsUntilFailure;
    /// The lock checks that still find the screen locked.
    std::optional<std::size_t> checksUntilUnlocked;

    /// Somebody else types, or the locker is another.
    bool isDisturbed = false;
    /// Runs while the keyboard is still held.
    std::function<void()> onSettle;

    std::vector<Event> events;
    std::vector<EditingKey> keysAskedFor;
    /// The memory of the text that the source was asked for.
    const char16_t* textPlace = nullptr;

    /// The lock check of a typing.
    [[nodiscard]] std::function<bool()> stillLocked() {
        return [this] { return !checksUntilUnlocked || takeOne(*checksUntilUnlocked); };
    }

    [[nodiscard]] bool isTrusted() const override { return trusted; }
    [[nodiscard]] bool mayPost() const override { return accepts; }
    [[nodiscard]] FieldClearing clearing() const override {
        return FieldClearing::toTheEndThenBack;
    }
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> text, std::span<const EditingKey> keys) override {
        textPlace = text.data();
        keysAskedFor.assign(keys.begin(), keys.end());
        if (hasNoSource) return nullptr;
        return std::make_unique<Source>(*this);
    }
    void wakeField(const std::function<bool()>& stillLocked) override {
        if (stillLocked()) events.emplace_back(Note::fieldWoken);
    }
    void pause(TimeInterval duration) override { events.emplace_back(duration); }

    template <typename Kind>
    [[nodiscard]] std::vector<Kind> all() const {
        std::vector<Kind> found;
        for (const auto& event : events) {
            if (const auto* one = std::get_if<Kind>(&event)) found.push_back(*one);
        }
        return found;
    }

  private:
    class Source final : public KeyEventSource {
      public:
        explicit Source(FakeKeyEvents& owner) : owner_(owner) {}
        Source(const Source&) = delete;
        Source& operator=(const Source&) = delete;
        ~Source() override { owner_.events.emplace_back(Note::sourceGone); }

        [[nodiscard]] bool isAdmitted(const std::function<bool()>& /*stillLocked*/) override {
            return owner_.isAdmitted;
        }
        [[nodiscard]] KeyPace pace() const override { return owner_.pace; }
        [[nodiscard]] bool post(const KeyPress& press) override { return record(press); }
        [[nodiscard]] bool postText(std::span<const char16_t> units, bool down) override {
            return record(Text{.units = {units.begin(), units.end()}, .down = down});
        }
        [[nodiscard]] bool isUndisturbed() override { return !owner_.isDisturbed; }
        void settle(const std::function<bool()>& /*stillLocked*/) override {
            owner_.events.emplace_back(Note::settled);
            if (owner_.onSettle) owner_.onSettle();
        }

      private:
        bool record(Event event) {
            auto& left = owner_.postsUntilFailure;
            if (left && !takeOne(*left)) return false;
            owner_.events.push_back(std::move(event));
            return true;
        }

        FakeKeyEvents& owner_;
    };

    static bool takeOne(std::size_t& left) {
        if (left == 0) return false;
        --left;
        return true;
    }
};

}  // namespace marrowby
