// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDBusMessage>
#include <QObject>
#include <functional>
#include <utility>

namespace marrowby {

/// Receives one D-Bus signal from Qt. Used by DBusLink only.
class DBusSignalReceiver final : public QObject {
    Q_OBJECT

  public:
    explicit DBusSignalReceiver(std::function<void(const QDBusMessage&)> handler)
        : handler_(std::move(handler)) {}

  public Q_SLOTS:
    void receive(const QDBusMessage& message) { handler_(message); }

  private:
    std::function<void(const QDBusMessage&)> handler_;
};

}  // namespace marrowby
