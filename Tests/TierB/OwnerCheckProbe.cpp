// SPDX-License-Identifier: Apache-2.0

// Runs the application's owner check and prints the result. With "withdraw", cancels it after a
// second.

#include "Platforms/Linux/Desktop/BusAddress.h"
#include "Platforms/Linux/Secrets/PolkitOwnerCheck.h"
#include "Unlock/Linux/LinuxWords.h"
#include "UnlockCore/Storage/StorageError.h"

#include <QCoreApplication>
#include <QTimer>
#include <chrono>
#include <iostream>
#include <optional>
#include <string_view>
#include <variant>

int main(int argumentCount, char** arguments) {
    using namespace marrowby;
    const QCoreApplication application(argumentCount, arguments);
    std::optional<PolkitOwnerCheck> check(busaddress::system());
    // Within the event loop, which an immediate reply ends.
    QTimer::singleShot(0, [&] {
        check->confirmOwner("open it", [](const OwnerCheck::Result& outcome) {
            const auto text = [](const auto& error) {
                return description(StorageError(error), linuxWords);
            };
            std::cout << (outcome ? "confirmed" : std::visit(text, outcome.error())) << '\n'
                      << std::flush;
            QCoreApplication::quit();
        });
    });
    if (argumentCount > 1 && std::string_view(arguments[1]) == "withdraw") {
        QTimer::singleShot(std::chrono::seconds(1), [&] { check.reset(); });
    }
    return QCoreApplication::exec();
}
