// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/ScreenSaverWatcher.h"

#include "Platforms/Linux/Desktop/DBusLink.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

namespace marrowby {

class ScreenSaverWatcher::Savers {
  public:
    Savers(ScreenSaverWatcher& watcher, std::string busAddress)
        : watcher_(watcher),
          link_(std::move(busAddress),
                {.onConnected = [this] { onConnected(); }, .onLost = [this] { lose(); }}) {}

    void start() { link_.start(); }

    [[nodiscard]] bool isBusLost() const { return isBusLost_; }
    [[nodiscard]] std::string_view active() const {
        const auto* const saver = std::ranges::find(savers_, LockReading::locked, &Saver::reading);
        return saver == savers_.end() ? std::string_view() : saver->service;
    }

  private:
    struct Saver {
        /// Also the name of its interface.
        const char* service;
        const char* path;
        LockReading reading = LockReading::unknown;
        /// Number of the service's restarts.
        std::uint64_t generation = 0;
    };

    void onConnected() {
        isBusLost_ = false;
        for (Saver& saver : savers_) {
            const QString service = QString::fromLatin1(saver.service);
            subscriptions_.push_back(link_.subscribe(
                {.service = service,
                 .path = QString::fromLatin1(saver.path),
                 .interface = service,
                 .member = QStringLiteral("ActiveChanged")},
                [this, &saver](const QDBusMessage& signal) { set(saver, signal); }));
            subscriptions_.push_back(link_.watchOwner(service, [this, &saver](bool hasOwner) {
                forget(saver);
                if (hasOwner) read(saver);
            }));
            read(saver);
        }
    }

    void read(Saver& saver) {
        const QString service = QString::fromLatin1(saver.service);
        const auto getActive = QDBusMessage::createMethodCall(
            service, QString::fromLatin1(saver.path), service, QStringLiteral("GetActive"));
        link_.call(
            getActive, [this, &saver, generation = saver.generation](const QDBusMessage& reply) {
                if (generation == saver.generation && reply.type() == QDBusMessage::ReplyMessage)
                    set(saver, reply);
            });
    }

    /// Takes the first value of a reply or a signal.
    void set(Saver& saver, const QDBusMessage& message) {
        const QVariant value = message.arguments().value(0);
        if (value.typeId() != QMetaType::Bool) return;
        saver.reading = value.toBool() ? LockReading::locked : LockReading::unlocked;
        report();
    }

    void forget(Saver& saver) {
        ++saver.generation;
        saver.reading = LockReading::unknown;
        report();
    }

    void lose() {
        isBusLost_ = true;
        subscriptions_.clear();
        for (Saver& saver : savers_)
            saver.reading = LockReading::unknown;
        report();
        if (watcher_.onBusLost) watcher_.onBusLost();
    }

    void report() { watcher_.set(std::ranges::max(savers_, {}, &Saver::reading).reading); }

    ScreenSaverWatcher& watcher_;
    std::array<Saver, 6> savers_{{
        {.service = "org.freedesktop.ScreenSaver", .path = "/org/freedesktop/ScreenSaver"},
        {.service = "org.freedesktop.ScreenSaver", .path = "/ScreenSaver"},
        {.service = "org.gnome.ScreenSaver", .path = "/org/gnome/ScreenSaver"},
        {.service = "org.mate.ScreenSaver", .path = "/org/mate/ScreenSaver"},
        {.service = "org.cinnamon.ScreenSaver", .path = "/org/cinnamon/ScreenSaver"},
        {.service = "org.xfce.ScreenSaver", .path = "/org/xfce/ScreenSaver"},
    }};
    bool isBusLost_ = false;
    DBusLink link_;
    // Destroyed before the connection.
    std::vector<DBusLink::Subscription> subscriptions_;
};

ScreenSaverWatcher::ScreenSaverWatcher(std::string busAddress)
    : savers_(std::make_unique<Savers>(*this, std::move(busAddress))) {}

ScreenSaverWatcher::~ScreenSaverWatcher() = default;

void ScreenSaverWatcher::start() {
    savers_->start();
}

LockReading ScreenSaverWatcher::reading() const {
    const MutexLock lock(mutex_);
    return reading_;
}

bool ScreenSaverWatcher::isBusLost() const {
    return savers_->isBusLost();
}

std::string_view ScreenSaverWatcher::activeSaver() const {
    return savers_->active();
}

void ScreenSaverWatcher::set(LockReading reading) {
    {
        const MutexLock lock(mutex_);
        if (reading_ == reading) return;
        reading_ = reading;
    }
    if (onChange) onChange();
}

}  // namespace marrowby
