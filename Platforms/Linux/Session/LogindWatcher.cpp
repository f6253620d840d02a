// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/LogindWatcher.h"

#include "Platforms/Linux/Desktop/DBusLink.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/Session/LogindProperties.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QVariantMap>
#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

#include <unistd.h>

namespace marrowby {
namespace {

const QString logindName = QStringLiteral("org.freedesktop.login1");
const QString managerPath = QStringLiteral("/org/freedesktop/login1");
const QString managerInterface = QStringLiteral("org.freedesktop.login1.Manager");
const QString sessionInterface = QStringLiteral("org.freedesktop.login1.Session");
const QString userInterface = QStringLiteral("org.freedesktop.login1.User");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

QDBusMessage managerCall(const char* method, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(logindName, managerPath, managerInterface,
                                                          QString::fromLatin1(method));
    message.setArguments(arguments);
    return message;
}

QDBusMessage propertyCall(const QString& path, const QString& interface, const char* property) {
    QDBusMessage message = QDBusMessage::createMethodCall(logindName, path, propertiesInterface,
                                                          QStringLiteral("Get"));
    message.setArguments({interface, QString::fromLatin1(property)});
    return message;
}

/// The first value of a reply; `nullopt` for an error or another type.
template <typename T>
std::optional<T> firstValue(const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return std::nullopt;
    const QVariant value = reply.arguments().constFirst();
    if (value.metaType() != QMetaType::fromType<T>()) return std::nullopt;
    return value.value<T>();
}

std::optional<bool> boolean(const QVariant& value) {
    if (value.typeId() != QMetaType::Bool) return std::nullopt;
    return value.toBool();
}

/// The path in a property of type (so); empty if there is none.
QString pathOfPair(const QVariant& value) {
    const auto pair = value.value<QDBusArgument>();
    if (pair.currentSignature() != QLatin1String("(so)")) return {};
    QString id;
    QDBusObjectPath path;
    pair.beginStructure();
    pair >> id >> path;
    pair.endStructure();
    return id.isEmpty() ? QString() : path.path();
}

}  // namespace

/// The bus connection. Its state is reset whenever logind stops.
class LogindWatcher::Connection {
  public:
    Connection(LogindWatcher& watcher, std::string busAddress, MainThread& mainThread)
        : watcher_(watcher),
          mainThread_(mainThread),
          link_(std::move(busAddress),
                {.onConnected = [this] { onConnected(); }, .onLost = [this] { forget(); }}) {}

    void start() { link_.start(); }

    [[nodiscard]] bool hasSession() const { return !sessionPath_.isEmpty(); }

    void read(std::function<void(const State&)> onRead) {
        if (!hasSession()) {
            return mainThread_.post([onRead = std::move(onRead)] { onRead({}); });
        }
        // In this order, so that what comes last is the hint.
        readSleep();
        readSession([this, onRead = std::move(onRead)] { onRead(state_); });
    }

    void unlock(std::function<void(const std::expected<void, std::string>&)> onAnswer) {
        ask(QStringLiteral("Unlock"), [onAnswer = std::move(onAnswer)](const QDBusMessage& reply) {
            if (reply.type() == QDBusMessage::ReplyMessage) return onAnswer({});
            onAnswer(std::unexpected(reply.errorMessage().toStdString()));
        });
    }
    void lock() {
        ask(QStringLiteral("Lock"), [](const QDBusMessage&) {});
    }

  private:
    /// Asks the session for something.
    void ask(const QString& method, DBusLink::MessageHandler onReply) {
        if (!hasSession()) return;
        call(QDBusMessage::createMethodCall(logindName, sessionPath_, sessionInterface, method),
             std::move(onReply));
    }

    void onConnected() {
        const auto ofManager = [this](const char* member, DBusLink::MessageHandler handler) {
            manager_.push_back(link_.subscribe({.service = logindName,
                                                .path = managerPath,
                                                .interface = managerInterface,
                                                .member = QString::fromLatin1(member)},
                                               std::move(handler)));
        };
        ofManager("PrepareForSleep", [this](const QDBusMessage& signal) {
            prepareForSleep(signal.arguments().value(0).toBool());
        });
        ofManager("SessionNew", [this](const QDBusMessage&) {
            if (sessionPath_.isEmpty()) findSession();
        });
        ofManager("SessionRemoved", [this](const QDBusMessage& signal) {
            if (signal.arguments().value(1).value<QDBusObjectPath>().path() != sessionPath_) return;
            leaveSession();
            findSession();
        });
        manager_.push_back(link_.watchOwner(logindName, [this](bool hasOwner) {
            forgetLogind();
            if (hasOwner) read();
        }));
        read();
    }

    void read() {
        readSleep();
        inhibitSleep();
        findSession();
    }

    void readSleep() {
        call(propertyCall(managerPath, managerInterface, "PreparingForSleep"),
             [this](const QDBusMessage& reply) {
                 const auto value = firstValue<QDBusVariant>(reply);
                 state_.isPreparingForSleep = value ? boolean(value->variant()) : std::nullopt;
                 report();
             });
    }

    void forget() {
        manager_.clear();
        forgetLogind();
    }

    void forgetLogind() {
        ++generation_;
        inhibitor_.reset();
        state_.isPreparingForSleep.reset();
        leaveSession();
    }

    // MARK: The session

    void findSession() {
        const char* id = std::getenv("XDG_SESSION_ID");
        if (!id || !*id) return findSessionOfProcess();
        call(managerCall("GetSession", {QString::fromLocal8Bit(id)}),
             [this](const QDBusMessage& reply) {
                 const auto path = firstValue<QDBusObjectPath>(reply);
                 path ? watchSession(path->path()) : findSessionOfProcess();
             });
    }

    void findSessionOfProcess() {
        // 0: the caller.
        call(managerCall("GetSessionByPID", {quint32{0}}), [this](const QDBusMessage& reply) {
            const auto path = firstValue<QDBusObjectPath>(reply);
            path ? watchSession(path->path()) : findDisplayOfUser();
        });
    }

    void findDisplayOfUser() {
        call(managerCall("GetUser", {quint32{getuid()}}), [this](const QDBusMessage& reply) {
            const auto user = firstValue<QDBusObjectPath>(reply);
            if (!user) return;
            call(propertyCall(user->path(), userInterface, "Display"),
                 [this](const QDBusMessage& display) {
                     const auto value = firstValue<QDBusVariant>(display);
                     const QString path = value ? pathOfPair(value->variant()) : QString();
                     if (!path.isEmpty()) watchSession(path);
                 });
        });
    }

    void watchSession(const QString& path) {
        if (path == sessionPath_) return;
        leaveSession();
        sessionPath_ = path;
        const auto ofSession = [&](const QString& interface, const char* member,
                                   DBusLink::MessageHandler handler) {
            session_.push_back(link_.subscribe({.service = logindName,
                                                .path = path,
                                                .interface = interface,
                                                .member = QString::fromLatin1(member)},
                                               std::move(handler)));
        };
        ofSession(propertiesInterface, "PropertiesChanged", [this](const QDBusMessage& signal) {
            if (signal.arguments().value(0).toString() != sessionInterface) return;
            const auto changed = qdbus_cast<QVariantMap>(signal.arguments().value(1));
            if (const auto hint = boolean(changed.value(QStringLiteral("LockedHint")))) {
                state_.hintIsKept = true;
                if (*hint && state_.hint != LockReading::locked)
                    state_.lockedSince = unixtime::uptime();
            }
            apply(changed);
        });
        // Only requests to the locker; the result is in the properties.
        ofSession(sessionInterface, "Lock", [this](const QDBusMessage&) { readSession(); });
        ofSession(sessionInterface, "Unlock", [this](const QDBusMessage&) { readSession(); });
        readSession();
    }

    void readSession(std::function<void()> onRead = [] {}) {
        QDBusMessage message = QDBusMessage::createMethodCall(
            logindName, sessionPath_, propertiesInterface, QStringLiteral("GetAll"));
        message.setArguments({sessionInterface});
        call(message,
             [this, path = sessionPath_, onRead = std::move(onRead)](const QDBusMessage& reply) {
                 if (path != sessionPath_) return;
                 const auto values = firstValue<QDBusArgument>(reply);
                 if (values) {
                     apply(qdbus_cast<QVariantMap>(*values));
                 } else {
                     // The session has ended.
                     leaveSession();
                 }
                 onRead();
             });
    }

    void apply(const QVariantMap& properties) {
        if (const auto hint = boolean(properties.value(QStringLiteral("LockedHint")))) {
            state_.hint = *hint ? LockReading::locked : LockReading::unlocked;
            state_.hintIsKept |= *hint;
            if (!*hint) state_.lockedSince.reset();
        }
        if (const auto active = boolean(properties.value(QStringLiteral("Active"))))
            state_.isActive = active;
        if (const QVariant user = properties.value(QStringLiteral("User")); user.isValid())
            state_.isOwn = userOfPair(user) == getuid();
        if (const QVariant seat = properties.value(QStringLiteral("Seat")); seat.isValid())
            state_.hasSeat = !pathOfPair(seat).isEmpty();
        report();
    }

    void leaveSession() {
        session_.clear();
        sessionPath_.clear();
        state_.hint = LockReading::unknown;
        state_.hintIsKept = false;
        state_.lockedSince.reset();
        state_.isActive.reset();
        state_.isOwn = false;
        state_.hasSeat = false;
        report();
    }

    // MARK: Sleep

    void prepareForSleep(bool isPreparing) {
        state_.isPreparingForSleep = isPreparing;
        report();
        if (!isPreparing) return inhibitSleep();
        // Released after the events that report() has posted.
        mainThread_.post([held = std::exchange(inhibitor_, nullptr)] {});
    }

    void inhibitSleep() {
        const auto take = managerCall(
            "Inhibit", {QStringLiteral("sleep"), QStringLiteral("Marrowby Unlock"),
                        QStringLiteral("Turns the camera off first"), QStringLiteral("delay")});
        call(take, [this](const QDBusMessage& reply) {
            const auto descriptor = firstValue<QDBusUnixFileDescriptor>(reply);
            // Too late when sleep is already under way: it would only delay it.
            if (!descriptor || state_.isPreparingForSleep == true) return;
            inhibitor_ = std::make_shared<const QDBusUnixFileDescriptor>(*descriptor);
        });
    }

    /// Drops replies to an earlier instance of logind.
    void call(const QDBusMessage& message, DBusLink::MessageHandler handler) {
        link_.call(message, [this, generation = generation_,
                             handler = std::move(handler)](const QDBusMessage& reply) {
            if (generation == generation_) handler(reply);
        });
    }

    void report() { watcher_.set(state_); }

    LogindWatcher& watcher_;
    MainThread& mainThread_;
    State state_;
    /// Number of logind's restarts.
    std::uint64_t generation_ = 0;
    /// Holding this descriptor delays sleep.
    std::shared_ptr<const QDBusUnixFileDescriptor> inhibitor_;
    QString sessionPath_;
    DBusLink link_;
    // Destroyed before the connection.
    std::vector<DBusLink::Subscription> manager_;
    std::vector<DBusLink::Subscription> session_;
};

LogindWatcher::LogindWatcher(std::string busAddress, MainThread& mainThread)
    : connection_(std::make_unique<Connection>(*this, std::move(busAddress), mainThread)) {}

LogindWatcher::~LogindWatcher() = default;

void LogindWatcher::start() {
    connection_->start();
}

LogindWatcher::State LogindWatcher::state() const {
    const MutexLock lock(mutex_);
    return state_;
}

bool LogindWatcher::hasSession() const {
    return connection_->hasSession();
}

void LogindWatcher::read(std::function<void(const State&)> onRead) {
    connection_->read(std::move(onRead));
}

void LogindWatcher::unlock(std::function<void(const std::expected<void, std::string>&)> onAnswer) {
    connection_->unlock(std::move(onAnswer));
}

void LogindWatcher::lock() {
    connection_->lock();
}

void LogindWatcher::set(const State& state) {
    {
        const MutexLock lock(mutex_);
        if (state_ == state) return;
        state_ = state;
    }
    if (onChange) onChange();
}

}  // namespace marrowby
