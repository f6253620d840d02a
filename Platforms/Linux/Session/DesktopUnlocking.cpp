// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/DesktopUnlocking.h"

#include "Platforms/Linux/Desktop/UnixClock.h"

#include <fstream>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace marrowby {

DesktopUnlocking::DesktopUnlocking(LogindWatcher& logind, const std::string& sessionBus,
                                   std::filesystem::path policy)
    : logind_(logind), shell_(sessionBus, getuid()), policy_(std::move(policy)) {}

void DesktopUnlocking::start() {
    isForbidden_ = isForbidden();
    shell_.onChange = [this] {
        const LockOpening before = opening();
        hasSeenShell_ |= shell_.shell() == ShellWatcher::Shell::own;
        if (opening() != before && onChange) onChange();
    };
    shell_.start();
}

void DesktopUnlocking::update() {
    if (std::exchange(wasSessionKnown_, isSessionKnown()) != isSessionKnown() && onChange)
        onChange();
}

LockOpening DesktopUnlocking::opening() const {
    return lockOpening(hasSeenShell_, isForbidden_, canTypeThroughKernel && canTypeThroughKernel());
}

void DesktopUnlocking::read(std::function<void(const SessionUnlockFacts&)> onRead) {
    // The session comes last: it is what changes.
    shell_.read([this, onRead = std::move(onRead)](ShellWatcher::Shell shell) {
        logind_.read([this, shell, onRead](const LogindWatcher::State& state) {
            SessionUnlockFacts facts{.isLocked = {},
                                     .lockedFor = {},
                                     .isOwn = state.isOwn,
                                     .isActive = state.isActive.value_or(false),
                                     .hasSeat = state.hasSeat,
                                     .isGoingToSleep = state.isPreparingForSleep,
                                     .shell = shell,
                                     .isForbidden = isForbidden()};
            if (state.hint != LockReading::unknown)
                facts.isLocked = state.hint == LockReading::locked;
            if (state.lockedSince) facts.lockedFor = unixtime::uptime() - *state.lockedSince;
            const bool hasChanged =
                std::exchange(isForbidden_, facts.isForbidden) != facts.isForbidden;
            onRead(facts);
            if (hasChanged && onChange) onChange();
        });
    });
}

void DesktopUnlocking::ask(std::function<void(const std::expected<void, std::string>&)> onAnswer) {
    logind_.unlock(std::move(onAnswer));
}

bool DesktopUnlocking::isForbidden() const {
    std::error_code error;
    const auto kind = std::filesystem::status(policy_, error).type();
    if (kind == std::filesystem::file_type::not_found) return false;
    std::ifstream file(policy_);
    if (!file) return true;
    std::string text;
    std::getline(file, text, '\0');
    return file.bad() || isAskingForbiddenBy(text);
}

}  // namespace marrowby
