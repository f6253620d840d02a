// SPDX-License-Identifier: Apache-2.0
#include "Tests/Platforms/Linux/MockServices.h"

#include <QDBusArgument>
#include <cstdlib>

namespace marrowby {
namespace {

// The system's Python, which has the packaged mocks.
constexpr const char* python = "/usr/bin/python3";

bool hasMocks() {
    static const bool has = [] {
        const auto import = ChildProcess::start(
            {.arguments = {python, "-c", "import dbusmock"}, .environment = {}});
        constexpr TimeInterval patience{60};
        return import && import->waitEnded(patience) && import->exitStatus() == EXIT_SUCCESS;
    }();
    return has;
}

}  // namespace

std::unique_ptr<PrivateBus> startBusForMocks() {
    if (!hasMocks()) return nullptr;
    return PrivateBus::create(PrivateBus::Installed::unknown).value_or(nullptr);
}

MockService startMock(const PrivateBus& bus, const QString& service, const QStringList& arguments) {
    ChildProcess::Program program{.arguments = {python, "-m", "dbusmock"}, .environment = {}};
    for (const QString& argument : arguments)
        program.arguments.push_back(argument.toStdString());
    auto mock = bus.serve(service.toStdString(), std::move(program));
    return mock ? std::make_unique<ChildProcess>(*std::move(mock)) : nullptr;
}

std::vector<QVariantList> callsOfMock(const PrivateBus& bus, const QString& service,
                                      const QString& path, const QString& method) {
    const auto list =
        bus.call(service, path, "org.freedesktop.DBus.Mock", "GetMethodCalls", {method})
            .value<QDBusArgument>();
    std::vector<QVariantList> all;
    list.beginArray();
    while (!list.atEnd()) {
        qulonglong time = 0;
        list.beginStructure();
        list >> time >> all.emplace_back();
        list.endStructure();
    }
    list.endArray();
    return all;
}

std::unique_ptr<PrivateKeyring> startKeyring(const PrivateBus& bus,
                                             const std::filesystem::path& home,
                                             const std::string& password) {
    auto keyring = PrivateKeyring::start(bus, home, password);
    return keyring ? std::make_unique<PrivateKeyring>(*std::move(keyring)) : nullptr;
}

}  // namespace marrowby
