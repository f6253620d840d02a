// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/LogindKernelTyping.h"

#include "Platforms/Linux/Session/LogindProperties.h"
#include "UnlockCore/Foundation/Mutex.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QVariantMap>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <xcb/xcb.h>

namespace marrowby {
namespace {

constexpr int answerMilliseconds = 1000;

QString newName() {
    static std::atomic<std::uint64_t> last = 0;
    return QStringLiteral("marrowby-typing-%1").arg(++last);
}

/// The properties of the caller's session or, if it is in none, of its user's graphical session.
QDBusMessage sessionProperties() {
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"),
        QStringLiteral("/org/freedesktop/login1/session/auto"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("GetAll"));
    message.setArguments({QStringLiteral("org.freedesktop.login1.Session")});
    message.setAutoStartService(false);
    return message;
}

bool isTrue(const QVariantMap& properties, const char* name) {
    const QVariant value = properties.value(QString::fromLatin1(name));
    return value.typeId() == QMetaType::Bool && value.toBool();
}

KernelTypingFacts::Kind kindOf(const QVariantMap& properties) {
    const QString type = properties.value(QStringLiteral("Type")).toString();
    if (type == QLatin1String("x11")) return KernelTypingFacts::Kind::x11;
    if (type == QLatin1String("wayland")) return KernelTypingFacts::Kind::wayland;
    return KernelTypingFacts::Kind::other;
}

/// Whether a server listens on the Unix socket; a name may be abstract. True when unsure.
bool isListening(std::string_view name) {
    sockaddr_un address{};
    if (name.size() > sizeof address.sun_path) return false;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.data(), name.size());
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0) return true;
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    const bool isTaken =
        ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), length) == 0 ||
        errno == EAGAIN || errno == EINPROGRESS || errno == EACCES;
    ::close(descriptor);
    return isTaken;
}

/// Whether an X server answers there; true when unsure.
bool answersX(const std::string& display) {
    if (display.empty()) return false;
    char* host = nullptr;
    int number = 0;
    int screen = 0;
    if (xcb_parse_display(display.c_str(), &host, &number, &screen) == 0) return false;
    const std::string hostName = host != nullptr ? host : "";
    std::free(host);
    if (!hostName.empty() && hostName != "unix") return true;
    const std::string path = "/tmp/.X11-unix/X" + std::to_string(number);
    return isListening(path) || isListening(std::string(1, '\0') + path);
}

}  // namespace

/// A private connection, reopened when it was lost.
class LogindKernelTyping::Bus {
  public:
    explicit Bus(std::string address) : address_(std::move(address)) {}
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;
    ~Bus() {
        const MutexLock lock(mutex_);
        forget();
    }

    /// Empty when logind does not answer.
    [[nodiscard]] QVariantMap properties() EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        if (address_.empty()) return {};
        if (bus_ && !bus_->isConnected()) forget();
        if (!bus_)
            bus_.emplace(QDBusConnection::connectToBus(QString::fromStdString(address_), name_));
        const QDBusMessage reply =
            bus_->call(sessionProperties(), QDBus::Block, answerMilliseconds);
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return {};
        return qdbus_cast<QVariantMap>(reply.arguments().constFirst());
    }

  private:
    void forget() REQUIRES(mutex_) {
        bus_.reset();
        QDBusConnection::disconnectFromBus(name_);
    }

    const std::string address_;
    const QString name_ = newName();
    Mutex mutex_;
    std::optional<QDBusConnection> bus_ GUARDED_BY(mutex_);
};

LogindKernelTyping::LogindKernelTyping(std::string systemBus, std::string display)
    : display_(std::move(display)), bus_(std::make_unique<Bus>(std::move(systemBus))) {}

LogindKernelTyping::~LogindKernelTyping() = default;

bool LogindKernelTyping::mayType() const {
    const QVariantMap properties = bus_->properties();
    const auto owner = userOfPair(properties.value(QStringLiteral("User")));
    if (!owner) return false;
    const std::string sessionDisplay =
        properties.value(QStringLiteral("Display")).toString().toStdString();
    return mayTypeThroughKernel({.isLocked = isTrue(properties, "LockedHint"),
                                 .isActive = isTrue(properties, "Active"),
                                 .owner = *owner,
                                 .kind = kindOf(properties),
                                 .hasXServer = answersX(display_) || answersX(sessionDisplay)},
                                getuid());
}

}  // namespace marrowby
