// SPDX-License-Identifier: Apache-2.0
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

/// A private connection to one bus that reconnects by itself. One thread with Qt's event loop;
/// handlers must not destroy it.
class DBusLink {
  public:
    struct Handlers {
        /// After each connect; subscriptions and calls must be made anew.
        std::function<void()> onConnected;
        /// Subscriptions fall silent and pending calls are never answered.
        std::function<void()> onLost;
    };
    using MessageHandler = std::function<void(const QDBusMessage&)>;
    /// Unsubscribes when destroyed.
    using Subscription = std::unique_ptr<QObject>;

    struct Signal {
        /// Only signals of this well-known name's owner.
        QString service;
        QString path;
        QString interface;
        QString member;
    };

    /// With an empty address it never connects.
    DBusLink(std::string address, Handlers handlers);
    ~DBusLink();
    DBusLink(const DBusLink&) = delete;
    DBusLink& operator=(const DBusLink&) = delete;

    /// Connects at once and then retries with growing delays. Call once.
    void start();

    /// Only while connected.
    [[nodiscard]] Subscription subscribe(const Signal& signal, MessageHandler handler);
    /// Reports each change of the service's owner: whether it has one now. Only while connected.
    [[nodiscard]] Subscription watchOwner(const QString& service,
                                          std::function<void(bool)> handler);
    /// Exports the object at the path. Only while connected.
    void serve(const QString& path, QDBusVirtualObject& object);
    enum class Activation { never, allowed };
    /// The reply may be an error. Only while connected.
    void call(QDBusMessage message, MessageHandler handler,
              Activation activation = Activation::never);

  private:
    struct Connection;

    void connect();
    void connectLater();
    void lose();

    const std::string address_;
    const Handlers handlers_;
    std::unique_ptr<Connection> connection_;
    std::unique_ptr<QObject> attempts_;
    TimeInterval delay_;
};

}  // namespace marrowby
