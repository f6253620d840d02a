#include "Tests/Platforms/Linux/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <filesystem>
#include <fstream>

namespace marrowby {
namespace {

constexpr int patience = 60'000;
// The system's Python, which has the packaged mocks.
constexpr const char* python = "/usr/bin/python3";

PrivateBus::Program run(const QString& program, const QStringList& arguments,
                        const QProcessEnvironment& environment) {
    PrivateBus::Program process(new QProcess);
    process->setProcessEnvironment(environment);
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(program, arguments);
    if (!process->waitForStarted(patience)) return nullptr;
    return process;
}

bool hasMocks() {
    static const bool has = [] {
        const auto import =
            run(python, {"-c", "import dbusmock"}, QProcessEnvironment::systemEnvironment());
        return import && import->waitForFinished(patience) && import->exitCode() == 0;
    }();
    return has;
}

}  // namespace

void PrivateBus::Kill::operator()(QProcess* process) const {
    process->kill();
    process->waitForFinished(patience);
    delete process;
}

std::unique_ptr<PrivateBus> PrivateBus::start() {
    std::unique_ptr<PrivateBus> bus(new PrivateBus);
    if (!hasMocks() || !bus->startDaemon()) return nullptr;
    return bus;
}

std::string PrivateBus::address() const {
    return "unix:path=" + (folder_.path() / "socket").string();
}

bool PrivateBus::startDaemon() {
    const auto file = folder_.path() / "bus.conf";
    std::ofstream(file) << "<busconfig><listen>" << address() << "</listen>"
                        << R"(<auth>EXTERNAL</auth><policy context="default">)"
                        << R"(<allow user="*"/><allow own="*"/><allow send_destination="*"/>)"
                        << R"(<allow eavesdrop="true"/></policy></busconfig>)";
    std::filesystem::remove(folder_.path() / "socket");
    daemon_ =
        run("dbus-daemon",
            {"--nofork", "--print-address", "--config-file", QString::fromStdString(file.string())},
            QProcessEnvironment::systemEnvironment());
    return daemon_ && daemon_->waitForReadyRead(patience);
}

PrivateBus::Program PrivateBus::mock(const QString& service, const QStringList& arguments) const {
    return serve(service, python, QStringList{"-m", "dbusmock"} + arguments,
                 QProcessEnvironment::systemEnvironment());
}

PrivateBus::Program PrivateBus::serve(const QString& service, const QString& program,
                                      const QStringList& arguments, QProcessEnvironment environment,
                                      const QByteArray& input) const {
    environment.insert("DBUS_SYSTEM_BUS_ADDRESS", QString::fromStdString(address()));
    environment.insert("DBUS_SESSION_BUS_ADDRESS", QString::fromStdString(address()));
    auto process = run(program, arguments, environment);
    if (process) {
        process->write(input);
        process->closeWriteChannel();
    }
    const QDeadlineTimer deadline(patience);
    while (process && !hasOwner(service)) {
        if (deadline.hasExpired() || process->waitForFinished(10)) return nullptr;
    }
    return process;
}

bool PrivateBus::hasOwner(const QString& service) const {
    return call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                "NameHasOwner", {service})
        .toBool();
}

QVariant PrivateBus::call(const QString& service, const QString& path, const QString& interface,
                          const QString& method, const QVariantList& arguments) const {
    const QString name = "test";
    const auto bus = QDBusConnection::connectToBus(QString::fromStdString(address()), name);
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    const QDBusMessage reply = bus.call(message, QDBus::Block, patience);
    QDBusConnection::disconnectFromBus(name);
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0) : QVariant();
}

}  // namespace marrowby
