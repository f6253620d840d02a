// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeKeyEvents.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <sys/mman.h>

namespace marrowby {
namespace {

using Note = FakeKeyEvents::Note;
using Text = FakeKeyEvents::Text;

class KeystrokeInjector : public testing::Test {
  protected:
    KeystrokeTyping type(std::string_view password) {
        return keystrokeinjector::typePassword(
            keyEvents_, {reinterpret_cast<const std::uint8_t*>(password.data()), password.size()},
            keyEvents_.stillLocked());
    }

    [[nodiscard]] bool hasPressedReturn() const {
        return std::ranges::any_of(keyEvents_.all<KeyPress>(), [](const KeyPress& press) {
            return press.key == EditingKey::enter;
        });
    }

    FakeKeyEvents keyEvents_;
};

TEST_F(KeystrokeInjector, typesInChunksAndPressesReturn) {
    EXPECT_TRUE(type("nineteen characters😀!").outcome());
    EXPECT_TRUE(hasPressedReturn());
    EXPECT_EQ(keyEvents_.all<Text>(), (std::vector<Text>{{u"nineteen characters", true},
                                                         {u"nineteen characters", false},
                                                         {u"😀!", true},
                                                         {u"😀!", false}}));
}

TEST_F(KeystrokeInjector, doesNothingWithoutTrustValidTextAndEveryKey) {
    keyEvents_.trusted = false;
    EXPECT_EQ(type("secret").outcome(), std::unexpected(KeystrokeError::noAccessibility));
    keyEvents_.trusted = true;
    keyEvents_.accepts = false;
    EXPECT_EQ(type("secret").outcome(), std::unexpected(KeystrokeError::noAccessibility));
    keyEvents_.accepts = true;
    EXPECT_EQ(type("a\xC3").outcome(), std::unexpected(KeystrokeError::invalidText));
    keyEvents_.hasNoSource = true;
    EXPECT_EQ(type("secret").outcome(), std::unexpected(KeystrokeError::eventFailed));
    using enum EditingKey;
    EXPECT_EQ(keyEvents_.keysAskedFor, (std::vector{shift, command, rightArrow, backspace, enter}));
    EXPECT_TRUE(keyEvents_.events.empty());
    keyEvents_.hasNoSource = false;
    keyEvents_.isAdmitted = false;
    EXPECT_EQ(type("secret").outcome(), std::unexpected(KeystrokeError::noLocker));
    EXPECT_TRUE(keyEvents_.all<KeyPress>().empty());
}

TEST_F(KeystrokeInjector, stopsAtTheCheckThatFindsTheScreenUnlocked) {
    // Before the clearing, before each of three chunks, before Return.
    const std::string password(45, 'a');
    const std::size_t chunks = 3;
    for (std::size_t checks = 0; checks <= chunks + 1; ++checks) {
        keyEvents_ = {};
        keyEvents_.checksUntilUnlocked = checks;
        EXPECT_EQ(type(password).outcome(), std::unexpected(KeystrokeError::notLocked));
        EXPECT_EQ(keyEvents_.all<KeyPress>().size(), checks == 0 ? 0U : 8U);
        EXPECT_EQ(keyEvents_.all<Text>().size(), checks == 0 ? 0U : 2 * (checks - 1));
        EXPECT_FALSE(hasPressedReturn());
    }
    keyEvents_ = {};
    keyEvents_.isDisturbed = true;
    EXPECT_EQ(type(password).outcome(), std::unexpected(KeystrokeError::notLocked));
    EXPECT_TRUE(keyEvents_.all<KeyPress>().empty());
}

TEST_F(KeystrokeInjector, returnsTheKeyboardOnceOnEveryPathAndOnlyAfterTheOutcome) {
    // Eight keys of the clearing, a chunk down and up, Return down and up.
    const std::size_t posts = 12;
    for (std::size_t succeeding = 0; succeeding <= posts; ++succeeding) {
        keyEvents_ = {};
        keyEvents_.postsUntilFailure = succeeding;
        {
            KeystrokeTyping typing = type("secret");
            EXPECT_EQ(typing.outcome().has_value(), succeeding == posts);
            const KeystrokeTyping moved = std::move(typing);
            EXPECT_EQ(keyEvents_.all<KeyPress>().size() + keyEvents_.all<Text>().size(),
                      succeeding);
            EXPECT_TRUE(keyEvents_.all<Note>().empty());
        }
        EXPECT_EQ(keyEvents_.all<Note>(), (std::vector{Note::settled, Note::sourceGone}));
    }
}

/// Whether the page that begins with `secret` still belongs to this process.
bool isMapped(const char16_t* secret) {
    return ::msync(const_cast<char16_t*>(secret), 1, MS_ASYNC) == 0 || errno != ENOMEM;
}

TEST_F(KeystrokeInjector, keepsNoDecodedTextWithTheOutcome) {
    const KeystrokeTyping typed = type("secret");
    EXPECT_NE(keyEvents_.textPlace, nullptr);
    EXPECT_FALSE(isMapped(keyEvents_.textPlace));
    keyEvents_.postsUntilFailure = 9;
    const KeystrokeTyping failed = type("secret");
    EXPECT_FALSE(isMapped(keyEvents_.textPlace));
}

}  // namespace
}  // namespace marrowby
