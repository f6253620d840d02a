// Asks the system, as the application does, whether the user is there, and prints what came of
// it. With "withdraw", the asking ends by itself after a second.

#include "Platforms/Linux/BusAddress.h"
#include "Platforms/Linux/PolkitOwnerAuthentication.h"
#include "UnlockCore/Storage/DeviceOwnerCheck.h"

#include <QCoreApplication>
#include <QTimer>
#include <chrono>
#include <iostream>
#include <optional>
#include <string_view>

int main(int argumentCount, char** arguments) {
    using namespace marrowby;
    const QCoreApplication application(argumentCount, arguments);
    std::optional<PolkitOwnerAuthentication> authentication(busaddress::system());
    // Within the loop, which a reply that comes at once ends.
    QTimer::singleShot(0, [&] {
        DeviceOwnerCheck(*authentication).confirmOwner("open it", [](const auto& outcome) {
            std::cout << (outcome ? "confirmed" : description(outcome.error())) << '\n'
                      << std::flush;
            QCoreApplication::quit();
        });
    });
    if (argumentCount > 1 && std::string_view(arguments[1]) == "withdraw") {
        QTimer::singleShot(std::chrono::seconds(1), [&] { authentication.reset(); });
    }
    return QCoreApplication::exec();
}
