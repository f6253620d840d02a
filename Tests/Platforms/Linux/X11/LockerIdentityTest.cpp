// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/LockerIdentity.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Cover = LockerFacts::Cover;
using Fact = LockerDoubt::Fact;

ClientProgram program(const char* path, std::int64_t process = 100, std::int64_t parent = 1) {
    return {.process = process,
            .parent = parent,
            .name = "any",
            .path = path,
            .isInOurFiles = true,
            .isRootsAlone = true};
}

LockerFacts lockedBy(const ClientProgram& receiver) {
    return {.isKeyboardHeld = true,
            .covers = {Cover{.overrideRedirect = true, .owner = receiver}},
            .receiver = receiver};
}

TEST(LockerIdentity, acceptsKnownLockersThatHoldTheKeyboardAndCoverTheScreen) {
    const ClientProgram i3lock = program("/usr/bin/i3lock");
    const auto with = [](LockerFacts facts, auto change) {
        change(facts);
        return facts;
    };
    ClientProgram foreignFiles = i3lock;
    foreignFiles.isInOurFiles = false;
    ClientProgram writable = i3lock;
    writable.isRootsAlone = false;

    const struct {
        const char* what;
        LockerFacts facts;
        std::optional<Fact> failed;
    } cases[] = {
        {"i3lock", lockedBy(i3lock), {}},
        {"its window belongs to a child process",
         with(lockedBy(program("/usr/bin/xscreensaver")),
              [](auto& facts) {
                  facts.covers[0]->owner = program("/usr/libexec/xscreensaver/gfx", 101, 100);
              }),
         {}},
        {"its window belongs to a child with an unreadable path",
         with(lockedBy(program("/usr/bin/ksmserver")),
              [](auto& facts) { facts.covers[0]->owner = program("", 101, 100); }),
         {}},
        {"its window belongs to its parent process",
         with(lockedBy(i3lock),
              [](auto& facts) { facts.covers[0]->owner = program("/usr/bin/parent", 1, 0); }),
         {}},
        {"no client has grabbed the keyboard",
         with(lockedBy(i3lock), [](auto& facts) { facts.isKeyboardHeld = false; }),
         Fact::keyboardIsFree},
        {"a lost display", with(lockedBy(i3lock), [](auto& facts) { facts.covers.clear(); }),
         Fact::monitorIsUncovered},
        {"one of two monitors is free",
         with(lockedBy(i3lock), [](auto& facts) { facts.covers.emplace_back(); }),
         Fact::monitorIsUncovered},
        {"a managed full-screen window, as of a video player",
         with(lockedBy(i3lock), [](auto& facts) { facts.covers[0]->overrideRedirect = false; }),
         Fact::coverIsManaged},
        {"the test key reaches no client",
         with(lockedBy(i3lock), [](auto& facts) { facts.receiver.reset(); }),
         Fact::keyReachesNobody},
        {"a menu holds the keyboard above a locker's window",
         with(lockedBy(i3lock),
              [](auto& facts) { facts.receiver = program("/usr/bin/i3lock", 7); }),
         Fact::coverIsAnothers},
        {"the window's process is gone",
         with(lockedBy(i3lock), [](auto& facts) { facts.covers[0]->owner.reset(); }),
         Fact::coverIsAnothers},
        {"a setuid program", lockedBy(program("")), Fact::programIsHidden},
        {"in a mount namespace of its own", lockedBy(foreignFiles), Fact::programIsElsewhere},
        {"in a file of the user's", lockedBy(writable), Fact::programIsChangeable},
        {"an interpreter owned by root", lockedBy(program("/usr/bin/python3.11")),
         Fact::programIsInterpreter},
        {"a terminal with a secure keyboard", lockedBy(program("/usr/bin/xterm")),
         Fact::programIsInterpreter},
        {"a game", lockedBy(program("/usr/games/sopwith")), Fact::programIsUnknown},
        {"a locker's name elsewhere", lockedBy(program("/opt/i3lock")), Fact::programIsUnknown},
    };
    for (const auto& [what, facts, failed] : cases) {
        const auto verdict = lockeridentity::judge(facts, {});
        EXPECT_EQ(verdict ? std::nullopt : std::optional(verdict.error().fact), failed) << what;
        if (!verdict) {
            EXPECT_FALSE(description(verdict.error()).empty()) << what;
        }
    }
}

TEST(LockerIdentity, followsALockerIntoTheBackground) {
    const ClientProgram ended{.process = 90, .hasEnded = true};
    const ClientProgram i3lock = program("/usr/bin/i3lock");
    const ClientProgram hotkeys = program("/usr/bin/xbindkeys", 101);
    const ClientProgram another = program("/usr/bin/i3lock", 102);
    const struct {
        const char* what;
        std::vector<ClientProgram> heirs;
        std::optional<ClientProgram> followed;
    } cases[] = {
        {"nobody has its connection", {}, {}},
        {"the only one", {i3lock}, i3lock},
        {"a single successor, though no locker", {hotkeys}, hotkeys},
        {"the locker among others", {hotkeys, i3lock}, i3lock},
        {"two lockers", {i3lock, another}, {}},
        {"two other programs", {hotkeys, program("/usr/bin/xcape", 103)}, {}},
    };
    for (const auto& one : cases) {
        const auto facts = lockeridentity::inherited(lockedBy(ended), one.heirs, {});
        ASSERT_EQ(facts.has_value(), one.followed.has_value()) << one.what;
        if (!facts) continue;
        EXPECT_EQ(facts->receiver->process, one.followed->process) << one.what;
        EXPECT_EQ(facts->covers[0]->owner->process, one.followed->process) << one.what;
        const auto verdict = lockeridentity::judge(*facts, {});
        EXPECT_EQ(verdict.has_value(), one.followed->path == i3lock.path) << one.what;
    }
}

TEST(LockerIdentity, acceptsConfirmedLockersExceptInterpretersAndUserFiles) {
    const std::vector<std::string> vouched{"/opt/lock/mylock", "/usr/bin/perl", "/srv/a/lock"};
    EXPECT_TRUE(lockeridentity::judge(lockedBy(program("/opt/lock/mylock")), vouched));
    EXPECT_FALSE(lockeridentity::judge(lockedBy(program("/opt/lock/other")), vouched));
    EXPECT_FALSE(lockeridentity::judge(lockedBy(program("/usr/bin/perl")), vouched));
    ClientProgram users = program("/srv/a/lock");
    users.isRootsAlone = false;
    EXPECT_FALSE(lockeridentity::judge(lockedBy(users), vouched));
}

TEST(LockerIdentity, recognisesInterpretersByNameAndVersion) {
    for (const char* path :
         {"/usr/bin/python3.11", "/usr/bin/bash", "/bin/sh", "/usr/bin/perl", "/usr/bin/perl5.36.0",
          "/usr/bin/gjs-console", "/usr/bin/node", "/usr/lib/x86_64-linux-gnu/ld-linux-x86-64.so.2",
          "/usr/bin/lua5.4", "/usr/lib/jvm/java-17/bin/java", "/usr/bin/qemu-x86_64"})
        EXPECT_TRUE(lockeridentity::isInterpreter(path)) << path;
    for (const char* path : {"/usr/bin/i3lock", "/usr/bin/shlock", "/usr/bin/envlock",
                             "/usr/bin/xscreensaver", "/usr/bin/nodelock"})
        EXPECT_FALSE(lockeridentity::isInterpreter(path)) << path;
}

TEST(LockerIdentity, replacesControlCharactersInPaths) {
    const std::string text =
        description({.fact = Fact::programIsUnknown, .path = "/srv/a\n\x1B[2J"});
    EXPECT_EQ(text, "“/srv/a??[2J”, which holds the keyboard, isn’t a known screen locker");
}

}  // namespace
}  // namespace marrowby
