// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/QtStatusItem.h"

#include "Platforms/Linux/Desktop/DBusLink.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QStyle>
#include <QSystemTrayIcon>
#include <optional>
#include <utility>
#include <vector>

namespace marrowby {
namespace {

const QString trayService = QStringLiteral("org.kde.StatusNotifierWatcher");

}  // namespace

class QtStatusItem::Tray {
  public:
    Tray(QtStatusItem& item, std::string sessionBus)
        : item_(item),
          link_(std::move(sessionBus), {.onConnected = [this] { onConnected(); },
                                        .onLost =
                                            [this] {
                                                owner_.reset();
                                                icon_.reset();
                                            }}) {}

    void show(const Content& content) {
        content_ = content;
        // Qt decides with its first icon whether there is a tray, so none is made before.
        if (!std::exchange(isStarted_, true)) link_.start();
        if (icon_) icon_->show(content);
    }

  private:
    struct Icon {
        explicit Icon(QtStatusItem& item) : status(menu.addAction(QString())) {
            const auto entry = [&](Phrase title, Command command) {
                QAction* const action = menu.addAction(QString::fromStdString(translated(title)));
                QObject::connect(action, &QAction::triggered, action, [&item, command] {
                    if (const auto report = item.onCommand) report(command);
                });
                return action;
            };
            status->setEnabled(false);
            menu.addSeparator();
            entry(Phrase("Settings…"), Command::settings);
            pause = entry(Phrase("Pause"), Command::pause);
            resume = entry(Phrase("Resume"), Command::resume);
            menu.addSeparator();
            entry(Phrase("Quit"), Command::quit);
            const QIcon standIn = QApplication::style()->standardIcon(QStyle::SP_ComputerIcon);
            tray.setIcon(QIcon::fromTheme(QStringLiteral("app.quenby.unlock"), standIn));
            tray.setContextMenu(&menu);
            QObject::connect(&tray, &QSystemTrayIcon::activated, &tray,
                             [&item](QSystemTrayIcon::ActivationReason reason) {
                                 if (reason != QSystemTrayIcon::Trigger) return;
                                 if (const auto report = item.onCommand) report(Command::settings);
                             });
        }

        void show(const Content& content) {
            status->setText(QString::fromStdString(content.status));
            tray.setToolTip(QString::fromStdString(
                translated("Marrowby Unlock: {status}", {{"status", content.status}})));
            pause->setVisible(!content.isPaused);
            resume->setVisible(content.isPaused);
            tray.show();
        }

        QMenu menu;
        QAction* status;
        QAction* pause = nullptr;
        QAction* resume = nullptr;
        // Destroyed before its menu.
        QSystemTrayIcon tray;
    };

    void onConnected() {
        owner_ = link_.watchOwner(trayService, [this](bool hasOwner) { setThere(hasOwner); });
        auto question = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
        question.setArguments({trayService});
        link_.call(question, [this](const QDBusMessage& reply) {
            setThere(reply.arguments().value(0).toBool());
        });
    }

    void setThere(bool isThere) {
        if (isThere == icon_.has_value()) return;
        icon_.reset();
        if (!isThere) return;
        icon_.emplace(item_);
        icon_->show(content_);
    }

    QtStatusItem& item_;
    Content content_;
    bool isStarted_ = false;
    DBusLink link_;
    // Destroyed before the connection.
    DBusLink::Subscription owner_;
    std::optional<Icon> icon_;
};

QtStatusItem::QtStatusItem(std::string sessionBus)
    : tray_(std::make_unique<Tray>(*this, std::move(sessionBus))) {}

QtStatusItem::~QtStatusItem() = default;

void QtStatusItem::show(const Content& content) {
    tray_->show(content);
}

}  // namespace marrowby
