// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/ShellWatcher.h"

#include "Platforms/Linux/Desktop/DBusLink.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace marrowby {
namespace {

QDBusMessage userOfOwner(const QString& name) {
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    QDBusMessage message = QDBusMessage::createMethodCall(
        bus, QStringLiteral("/org/freedesktop/DBus"), bus, QStringLiteral("GetConnectionUnixUser"));
    message.setArguments({name});
    return message;
}

}  // namespace

class ShellWatcher::Names {
  public:
    Names(ShellWatcher& watcher, std::string busAddress, std::uint32_t user)
        : watcher_(watcher),
          user_(user),
          link_(std::move(busAddress),
                {.onConnected = [this] { onConnected(); }, .onLost = [this] { forget(); }}) {}

    void start() { link_.start(); }

    [[nodiscard]] Shell shell() const {
        // The user's own shell counts before a foreign name.
        return std::ranges::max(names_, {}, &Name::shell).shell;
    }

    void read(const std::function<void(Shell)>& onRead) {
        if (subscriptions_.empty()) return;
        const auto left = std::make_shared<std::size_t>(names_.size());
        for (Name& name : names_) {
            ask(name, [this, left, onRead] {
                if (--*left == 0) onRead(shell());
            });
        }
    }

  private:
    struct Name {
        const char* service;
        Shell shell = Shell::none;
        /// Number of the owner's changes.
        std::uint64_t generation = 0;
    };

    void onConnected() {
        for (Name& name : names_) {
            subscriptions_.push_back(
                link_.watchOwner(QString::fromLatin1(name.service), [this, &name](bool hasOwner) {
                    ++name.generation;
                    set(name, Shell::none);
                    if (hasOwner) ask(name, [] {});
                }));
            ask(name, [] {});
        }
    }

    void forget() {
        subscriptions_.clear();
        for (Name& name : names_) {
            ++name.generation;
            set(name, Shell::none);
        }
    }

    void ask(Name& name, std::function<void()> onAnswer) {
        link_.call(userOfOwner(QString::fromLatin1(name.service)),
                   [this, &name, generation = name.generation,
                    onAnswer = std::move(onAnswer)](const QDBusMessage& reply) {
                       if (generation == name.generation) set(name, shellOf(reply));
                       onAnswer();
                   });
    }

    [[nodiscard]] Shell shellOf(const QDBusMessage& reply) const {
        if (reply.type() != QDBusMessage::ReplyMessage) return Shell::none;
        bool isNumber = false;
        const std::uint32_t user = reply.arguments().value(0).toUInt(&isNumber);
        return isNumber && user == user_ ? Shell::own : Shell::foreign;
    }

    void set(Name& name, Shell shell) {
        const Shell before = this->shell();
        name.shell = shell;
        if (before != this->shell() && watcher_.onChange) watcher_.onChange();
    }

    ShellWatcher& watcher_;
    const std::uint32_t user_;
    std::array<Name, 2> names_{{{.service = "org.gnome.Shell"}, {.service = "org.kde.KWin"}}};
    DBusLink link_;
    // Destroyed before the connection.
    std::vector<DBusLink::Subscription> subscriptions_;
};

ShellWatcher::ShellWatcher(std::string busAddress, std::uint32_t user)
    : names_(std::make_unique<Names>(*this, std::move(busAddress), user)) {}

ShellWatcher::~ShellWatcher() = default;

void ShellWatcher::start() {
    names_->start();
}

ShellWatcher::Shell ShellWatcher::shell() const {
    return names_->shell();
}

void ShellWatcher::read(const std::function<void(Shell)>& onRead) {
    names_->read(onRead);
}

}  // namespace marrowby
