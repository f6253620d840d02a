// Prints what the application would hear of the session that this runs in, one line each, until it
// is killed: the notifications by name, each after "now" with the session's dictionary where that
// has changed.

#include "Platforms/Linux/DesktopSession.h"
#include "Platforms/Linux/LocalNotificationCenter.h"
#include "Platforms/Linux/QtMainThread.h"
#include "UnlockCore/Platform/LockNotifications.h"

#include <QCoreApplication>
#include <iostream>
#include <string>

namespace marrowby {
namespace {

std::string text(const LoginSession& session) {
    std::string text = "now";
    const auto dictionary = session.copyCurrentDictionary();
    if (!dictionary) return text + " unknown";
    for (const auto& [key, value] : *dictionary)
        text += " " + key + "=" + (std::get<bool>(value) ? "yes" : "no");
    return text;
}

int run(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    QtMainThread mainThread;
    LocalNotificationCenter workspaceCenter(mainThread);
    LocalNotificationCenter distributedCenter(mainThread);
    DesktopSession session(DesktopSession::Places::ofThisProcess(), mainThread, workspaceCenter,
                           distributedCenter);

    std::string last;
    const auto sayIfNew = [&] {
        const std::string now = text(session.loginSession());
        if (now == last) return;
        last = now;
        std::cout << now << '\n' << std::flush;
    };
    using namespace locknotification;
    for (NotificationCenter* center : {&workspaceCenter, &distributedCenter}) {
        for (const char* name : {screenIsLocked, screenIsUnlocked, screenSaverDidStop, willSleep,
                                 screensDidSleep, didWake, screensDidWake}) {
            (void)center->observe(name, [name, &sayIfNew] {
                sayIfNew();
                std::cout << name << '\n' << std::flush;
            });
        }
    }
    session.start();
    sayIfNew();
    return QCoreApplication::exec();
}

}  // namespace
}  // namespace marrowby

int main(int argumentCount, char** arguments) {
    return marrowby::run(argumentCount, arguments);
}
