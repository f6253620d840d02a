// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/FreedesktopNotices.h"

#include "Platforms/Linux/Desktop/DBusLink.h"

#include <QStringList>
#include <QVariantMap>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace marrowby {
namespace {

const QString noticesService = QStringLiteral("org.freedesktop.Notifications");
const QString noticesPath = QStringLiteral("/org/freedesktop/Notifications");
const QString buttonKey = QStringLiteral("confirm");
/// Of a press on the notice itself.
const QString noticeKey = QStringLiteral("default");
constexpr std::int32_t staysUp = 0;
constexpr std::int32_t asTheServerLikes = -1;

QDBusMessage method(const char* name, const QVariantList& arguments = {}) {
    auto message = QDBusMessage::createMethodCall(noticesService, noticesPath, noticesService,
                                                  QString::fromLatin1(name));
    message.setArguments(arguments);
    return message;
}

}  // namespace

class FreedesktopNotices::Server {
  public:
    Server(FreedesktopNotices& notices, std::string busAddress,
           std::function<void(const std::string&)> onUnavailable)
        : notices_(notices),
          onUnavailable_(std::move(onUnavailable)),
          link_(std::move(busAddress),
                {.onConnected = [this] { onConnected(); }, .onLost = [this] { onLost(); }}) {}

    void show(const Notice& notice) {
        withdraw();
        wanted_ = notice;
        if (!std::exchange(isStarted_, true)) {
            link_.start();
            if (!isConnected_) tell();
        } else if (isConnected_) {
            ask();
        }
        if (!isConnected_) dropBrief();
    }

    void withdraw() {
        wanted_.reset();
        forget();
    }

  private:
    void onConnected() {
        isConnected_ = true;
        const auto on = [this](const char* member, DBusLink::MessageHandler handler) {
            subscriptions_.push_back(link_.subscribe({.service = noticesService,
                                                      .path = noticesPath,
                                                      .interface = noticesService,
                                                      .member = QString::fromLatin1(member)},
                                                     std::move(handler)));
        };
        on("ActionInvoked", [this](const QDBusMessage& signal) {
            const QString key = signal.arguments().value(1).toString();
            if (isShown(signal) && (key == buttonKey || key == noticeKey)) press();
        });
        on("NotificationClosed", [this](const QDBusMessage& signal) {
            if (!isShown(signal)) return;
            shown_.reset();
            wanted_.reset();
        });
        subscriptions_.push_back(link_.watchOwner(noticesService, [this](bool hasOwner) {
            const bool wasShown = std::exchange(shown_, std::nullopt).has_value();
            ++asked_;
            if (wasShown) dropBrief();
            if (hasOwner && wanted_) ask();
        }));
        if (wanted_) ask();
    }

    void onLost() {
        isConnected_ = false;
        subscriptions_.clear();
        shown_.reset();
        ++asked_;
        dropBrief();
    }
    /// Shown later, it would be no news.
    void dropBrief() {
        if (wanted_ && wanted_->isBrief) wanted_.reset();
    }

    [[nodiscard]] bool isShown(const QDBusMessage& signal) const {
        return shown_ && signal.arguments().value(0).toUInt() == *shown_;
    }

    void press() {
        // Without a button there is no answer to a second press.
        withdraw();
        if (const auto report = notices_.onPressed) report();
    }

    void ask() {
        forget();
        link_.call(
            method("GetCapabilities"),
            [this, asked = asked_](const QDBusMessage& reply) {
                if (asked != asked_ || !wanted_) return;
                const bool isThere = reply.type() == QDBusMessage::ReplyMessage;
                const bool hasButtons =
                    isThere &&
                    reply.arguments().value(0).toStringList().contains(QStringLiteral("actions"));
                if (hasButtons || (isThere && wanted_->isBrief))
                    return notify(*wanted_, hasButtons);
                dropBrief();
                tell();
            },
            DBusLink::Activation::allowed);
    }

    void notify(const Notice& notice, bool hasButtons) {
        const auto text = [](const std::string& utf8) { return QString::fromStdString(utf8); };
        const QString button = text(notice.button);
        const QStringList actions =
            hasButtons ? QStringList{noticeKey, button, buttonKey, button} : QStringList();
        QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("app.quenby.unlock")}};
        // Not kept in a list of past ones.
        if (notice.isBrief) hints.insert(QStringLiteral("transient"), true);
        link_.call(method("Notify", {QStringLiteral("Marrowby Unlock"), std::uint32_t{0},
                                     QStringLiteral("app.quenby.unlock"), text(notice.title),
                                     text(notice.text), actions, hints,
                                     notice.isBrief ? asTheServerLikes : staysUp}),
                   [this, asked = asked_](const QDBusMessage& reply) {
                       if (reply.type() != QDBusMessage::ReplyMessage) return;
                       const std::uint32_t id = reply.arguments().value(0).toUInt();
                       if (asked == asked_) {
                           shown_ = id;
                       } else {
                           close(id);
                       }
                   });
    }

    /// Takes away the one that is shown, or on its way.
    void forget() {
        ++asked_;
        if (const auto id = std::exchange(shown_, std::nullopt)) close(*id);
    }

    void close(std::uint32_t id) {
        link_.call(method("CloseNotification", {id}), [](const QDBusMessage&) {});
    }

    void tell() {
        if (const auto report = std::exchange(onUnavailable_, {}))
            report("The desktop shows no notification with a button: confirm in the settings.");
    }

    FreedesktopNotices& notices_;
    std::function<void(const std::string&)> onUnavailable_;
    std::optional<Notice> wanted_;
    /// Its number at the server.
    std::optional<std::uint32_t> shown_;
    /// Replies to an earlier question come too late.
    std::uint64_t asked_ = 0;
    bool isStarted_ = false;
    bool isConnected_ = false;
    DBusLink link_;
    // Destroyed before the connection.
    std::vector<DBusLink::Subscription> subscriptions_;
};

FreedesktopNotices::FreedesktopNotices(std::string busAddress,
                                       std::function<void(const std::string&)> onUnavailable)
    : server_(std::make_unique<Server>(*this, std::move(busAddress), std::move(onUnavailable))) {}

FreedesktopNotices::~FreedesktopNotices() = default;

void FreedesktopNotices::show(const Notice& notice) {
    server_->show(notice);
}

void FreedesktopNotices::withdraw() {
    server_->withdraw();
}

}  // namespace marrowby
