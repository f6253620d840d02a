// SPDX-License-Identifier: Apache-2.0

// Prints the lock events of its session, one per line, until it is killed; before an event "now"
// and the lock state if that has changed.

#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Session/DesktopSession.h"

#include <QCoreApplication>
#include <iostream>
#include <string>

namespace marrowby {
namespace {

std::string text(const LockState& state) {
    const auto fact = [](const char* what, std::optional<bool> value) {
        return std::string(what) + (!value ? "unknown" : *value ? "yes" : "no");
    };
    return fact("now locked=", state.isScreenLocked) + fact(" onConsole=", state.isOnConsole);
}

const char* nameOf(LockEvent event) {
    switch (event) {
        case LockEvent::screenLocked:
            return "screenLocked";
        case LockEvent::screenUnlocked:
            return "screenUnlocked";
        case LockEvent::willSleep:
            return "willSleep";
        case LockEvent::wake:
            return "wake";
    }
    return "";
}

int run(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    QtMainThread mainThread;
    DesktopSession session(DesktopSession::Places::ofThisProcess(), mainThread);

    std::string last;
    const auto sayIfNew = [&] {
        const std::string now = text(session.lockState().state());
        if (now == last) return;
        last = now;
        std::cout << now << '\n' << std::flush;
    };
    session.lockEvents().onEvent = [&](LockEvent event) {
        sayIfNew();
        std::cout << nameOf(event) << '\n' << std::flush;
    };
    session.lockEvents().start();
    session.start();
    sayIfNew();
    return QCoreApplication::exec();
}

}  // namespace
}  // namespace marrowby

int main(int argumentCount, char** arguments) {
    return marrowby::run(argumentCount, arguments);
}
