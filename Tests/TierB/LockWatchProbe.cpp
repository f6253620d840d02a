// Prints what the application would hear of the session that this runs in, one line each, until it
// is killed: "now" with the session's dictionary whenever that has changed, and the notifications
// by name.

#include "Platforms/Linux/BusAddress.h"
#include "Platforms/Linux/LinuxLoginSession.h"
#include "Platforms/Linux/LocalNotificationCenter.h"
#include "Platforms/Linux/LogindWatcher.h"
#include "Platforms/Linux/QtMainThread.h"
#include "Platforms/Linux/ScreenSaverWatcher.h"
#include "Platforms/Linux/SessionAnnouncer.h"
#include "Platforms/Linux/X11LockWatcher.h"
#include "Platforms/Linux/X11LoginSession.h"
#include "UnlockCore/Platform/LockNotifications.h"

#include <QCoreApplication>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

namespace marrowby {
namespace {

std::string text(const LinuxLoginSession& session) {
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
    LocalNotificationCenter displayCenter(mainThread);

    const char* displayName = std::getenv("DISPLAY");
    std::unique_ptr<X11LoginSession> display;
    if (displayName) {
        auto opened = X11LoginSession::create(displayName);
        if (opened) display = std::move(*opened);
    }
    LogindWatcher logind(busaddress::system(), mainThread);
    ScreenSaverWatcher savers(busaddress::session());
    const LinuxLoginSession session(logind, savers, display.get());
    SessionAnnouncer announcer(session, workspaceCenter, distributedCenter);

    std::string last;
    const auto update = [&] {
        announcer.update();
        const std::string now = text(session);
        if (now == last) return;
        last = now;
        std::cout << now << '\n' << std::flush;
    };
    using namespace locknotification;
    for (NotificationCenter* center : {&workspaceCenter, &distributedCenter}) {
        for (const char* name : {screenIsLocked, screenIsUnlocked, screenSaverDidStop, willSleep,
                                 screensDidSleep, didWake, screensDidWake})
            (void)center->observe(name, [name] { std::cout << name << '\n' << std::flush; });
    }
    for (const char* name : {screenIsLocked, screenIsUnlocked})
        (void)displayCenter.observe(name, update);
    logind.onChange = update;
    savers.onChange = update;
    std::unique_ptr<X11LockWatcher> displayWatcher;
    if (display) {
        auto created = X11LockWatcher::create(displayName, displayCenter,
                                              [&](const std::string&) { update(); });
        if (created) displayWatcher = std::move(*created);
    }
    logind.start();
    savers.start();
    update();
    return QCoreApplication::exec();
}

}  // namespace
}  // namespace marrowby

int main(int argumentCount, char** arguments) {
    return marrowby::run(argumentCount, arguments);
}
