#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <QDBusMessage>
#include <QString>
#include <functional>
#include <memory>
#include <string>

class QDBusVirtualObject;
class QObject;

namespace marrowby {

/// A private connection to one bus, made again when the bus went away and came back. One thread
/// with Qt's event loop, whose handlers must not destroy it. For the adapters of this folder only.
class DBusLink {
  public:
    struct Handlers {
        /// Each time; subscriptions and calls are to be made anew.
        std::function<void()> onConnected;
        /// What was subscribed to stays silent, calls under way are never answered.
        std::function<void()> onLost;
    };
    using MessageHandler = std::function<void(const QDBusMessage&)>;
    /// Ends with its holder.
    using Subscription = std::unique_ptr<QObject>;

    struct Signal {
        /// Only what the owner of this well-known name sends.
        QString service;
        QString path;
        QString interface;
        QString member;
    };

    /// An empty address is never connected to.
    DBusLink(std::string address, Handlers handlers);
    ~DBusLink();
    DBusLink(const DBusLink&) = delete;
    DBusLink& operator=(const DBusLink&) = delete;

    /// Tries at once, and while there is no bus after a growing delay. Once.
    void start();

    /// Only while connected.
    [[nodiscard]] Subscription subscribe(const Signal& signal, MessageHandler handler);
    /// Whenever the service's owner changes, with whether it has one now. Only while connected.
    [[nodiscard]] Subscription watchOwner(const QString& service,
                                          std::function<void(bool)> handler);
    /// Lets the object answer what this connection is called at the path. Only while connected.
    void serve(const QString& path, QDBusVirtualObject& object);
    /// Calls without starting a service for it; the reply may be an error. Only while connected.
    void call(QDBusMessage message, MessageHandler handler);

  private:
    struct Connection;

    void connect();
    void connectLater();
    void lose();

    const std::string address_;
    const Handlers handlers_;
    std::unique_ptr<Connection> connection_;
    /// Owns the timer of the next attempt.
    std::unique_ptr<QObject> attempts_;
    TimeInterval delay_;
};

}  // namespace marrowby
