// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QVariantList>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <signal.h>
#include <unistd.h>

namespace marrowby {

namespace {

constexpr TimeInterval serviceLimit{60};
constexpr int callMilliseconds = 60'000;
constexpr TimeInterval askInterval{0.01};

}  // namespace

std::expected<std::unique_ptr<PrivateBus>, std::string> PrivateBus::create(
    Installed services, std::vector<std::string> environment) {
    auto folder = PrivateFolder::create();
    if (!folder) return std::unexpected(folder.error());
    std::unique_ptr<PrivateBus> bus(new PrivateBus(*std::move(folder), std::move(environment)));
    std::ofstream(bus->folder_.path() / "bus.conf")
        << "<busconfig><type>session</type><listen>" << bus->address() << "</listen>"
        << (services == Installed::started ? "<standard_session_servicedirs/>" : "")
        << R"(<auth>EXTERNAL</auth><policy context="default">)"
        << R"(<allow user="*"/><allow own="*"/><allow send_destination="*"/>)"
        << R"(<allow eavesdrop="true"/></policy></busconfig>)";
    if (auto started = bus->startDaemon(); !started) return std::unexpected(started.error());
    return bus;
}

std::string PrivateBus::address() const {
    return "unix:path=" + (folder_.path() / "socket").string();
}

std::expected<void, std::string> PrivateBus::startDaemon() {
    std::filesystem::remove(folder_.path() / "socket");
    auto isListening = Pipe::create();
    if (!isListening) return std::unexpected(isListening.error());
    auto daemon = ChildProcess::start(
        {.arguments = {"dbus-daemon", "--nofork", "--nopidfile", "--print-address", "--config-file",
                       (folder_.path() / "bus.conf").string()},
         .environment = environment_,
         .standardOutput = isListening->writing.get(),
         .endSignal = SIGKILL});
    if (!daemon) return std::unexpected(daemon.error());
    isListening->writing.close();
    if (isListening->readLine(serviceLimit).empty())
        return std::unexpected("dbus-daemon does not start.");
    daemon_ = std::make_unique<ChildProcess>(*std::move(daemon));
    return {};
}

std::expected<ChildProcess, std::string> PrivateBus::serve(const std::string& service,
                                                           ChildProcess::Program program,
                                                           std::string_view input) const {
    auto text = Pipe::create();
    if (!text) return std::unexpected(text.error());
    for (const char* kind : {"SESSION", "SYSTEM"})
        program.environment.push_back("DBUS_" + std::string(kind) + "_BUS_ADDRESS=" + address());
    program.standardInput = text->reading.get();
    program.endSignal = SIGKILL;
    auto process = ChildProcess::start(program);
    if (!process) return std::unexpected(process.error());
    const auto written = ::write(text->writing.get(), input.data(), input.size());
    text->writing.close();
    const QDeadlineTimer deadline(callMilliseconds);
    while (written == std::ssize(input) && !deadline.hasExpired()) {
        const auto reply =
            call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                 "NameHasOwner", {QString::fromStdString(service)});
        if (reply.toBool()) return process;
        if (process->waitEnded(askInterval)) break;
    }
    return std::unexpected(program.arguments.front() + " did not come up on a private bus.");
}

QVariant PrivateBus::call(const QString& service, const QString& path, const QString& interface,
                          const QString& method, const QVariantList& arguments) const {
    const QString name = QStringLiteral("private-bus");
    const auto bus = QDBusConnection::connectToBus(QString::fromStdString(address()), name);
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    const QDBusMessage reply = bus.call(message, QDBus::Block, callMilliseconds);
    QDBusConnection::disconnectFromBus(name);
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0) : QVariant();
}

}  // namespace marrowby
