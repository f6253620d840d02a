// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/DBusLink.h"

#include "Platforms/Linux/Desktop/DBusSignalReceiver.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <utility>

namespace marrowby {
namespace {

constexpr TimeInterval firstDelay{0.25};
constexpr TimeInterval longestDelay{60};

QString newName() {
    static std::atomic<std::uint64_t> last = 0;
    return QStringLiteral("marrowby-%1").arg(++last);
}

}  // namespace

struct DBusLink::Connection {
    explicit Connection(const std::string& address)
        : name(newName()),
          bus(QDBusConnection::connectToBus(QString::fromStdString(address), name)) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() { QDBusConnection::disconnectFromBus(name); }

    const QString name;
    QDBusConnection bus;
    Subscription disconnected;
    /// Parent of the pending calls.
    std::unique_ptr<QObject> calls = std::make_unique<QObject>();
};

DBusLink::DBusLink(std::string address, Handlers handlers)
    : address_(std::move(address)), handlers_(std::move(handlers)), delay_(firstDelay) {}

DBusLink::~DBusLink() = default;

void DBusLink::start() {
    if (attempts_ || address_.empty()) return;
    attempts_ = std::make_unique<QObject>();
    connect();
}

void DBusLink::connect() {
    auto connection = std::make_unique<Connection>(address_);
    if (!connection->bus.isConnected()) return connectLater();
    delay_ = firstDelay;
    connection_ = std::move(connection);
    connection_->disconnected = subscribe({.service = {},
                                           .path = "/org/freedesktop/DBus/Local",
                                           .interface = "org.freedesktop.DBus.Local",
                                           .member = "Disconnected"},
                                          [this](const QDBusMessage&) { lose(); });
    handlers_.onConnected();
}

void DBusLink::connectLater() {
    QTimer::singleShot(std::chrono::ceil<std::chrono::milliseconds>(delay_), attempts_.get(),
                       [this] { connect(); });
    delay_ = std::min(delay_ * 2, longestDelay);
}

void DBusLink::lose() {
    // Qt's thread closes the connection, and then still looks at the receivers that are left: they
    // go before it. One of them is the caller, so that it goes with the connection, later.
    const std::shared_ptr<Connection> lost = std::move(connection_);
    lost->calls.reset();
    QTimer::singleShot(0, attempts_.get(), [lost] {});
    connectLater();
    handlers_.onLost();
}

DBusLink::Subscription DBusLink::subscribe(const Signal& signal, MessageHandler handler) {
    auto receiver = std::make_unique<DBusSignalReceiver>(std::move(handler));
    connection_->bus.connect(signal.service, signal.path, signal.interface, signal.member,
                             receiver.get(), SLOT(receive(QDBusMessage)));
    return receiver;
}

DBusLink::Subscription DBusLink::watchOwner(const QString& service,
                                            std::function<void(bool)> handler) {
    auto watcher = std::make_unique<QDBusServiceWatcher>(service, connection_->bus,
                                                         QDBusServiceWatcher::WatchForOwnerChange);
    QObject::connect(
        watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, watcher.get(),
        [handler = std::move(handler)](const QString&, const QString&, const QString& owner) {
            handler(!owner.isEmpty());
        });
    return watcher;
}

void DBusLink::serve(const QString& path, QDBusVirtualObject& object) {
    connection_->bus.registerVirtualObject(path, &object);
}

void DBusLink::call(QDBusMessage message, MessageHandler handler, Activation activation) {
    message.setAutoStartService(activation == Activation::allowed);
    auto* watcher =
        new QDBusPendingCallWatcher(connection_->bus.asyncCall(message), connection_->calls.get());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [handler = std::move(handler)](QDBusPendingCallWatcher* finished) {
                         finished->deleteLater();
                         handler(finished->reply());
                     });
}

}  // namespace marrowby
