// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/SingleInstance.h"

#include "Platforms/Linux/Desktop/DBusLink.h"
#include "Platforms/Linux/Desktop/ProcessSignals.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QVariantMap>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

namespace marrowby {

namespace {

constexpr const char* applicationInterface = "org.freedesktop.Application";
constexpr int answerMilliseconds = 5000;
/// A look may take ten seconds, and loading the models before it some more.
constexpr int commandMilliseconds = 60000;
constexpr unsigned doNotQueue = 4;

struct flock wholeFile() {
    struct flock whole{};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return whole;
}

/// None without a bus.
std::optional<QDBusMessage> callRunning(const std::string& address, const char* interface,
                                        const char* method, const QVariant& argument,
                                        int milliseconds) {
    if (address.empty()) return std::nullopt;
    const QString connection = QStringLiteral("marrowby-ask");
    std::optional<QDBusMessage> answer;
    {
        QDBusConnection bus =
            QDBusConnection::connectToBus(QString::fromStdString(address), connection);
        auto call = QDBusMessage::createMethodCall(QString::fromLatin1(SingleInstance::busName),
                                                   QString::fromLatin1(SingleInstance::objectPath),
                                                   QString::fromLatin1(interface),
                                                   QString::fromLatin1(method));
        call << argument;
        call.setAutoStartService(false);
        if (bus.isConnected()) answer = bus.call(call, QDBus::Block, milliseconds);
    }
    QDBusConnection::disconnectFromBus(connection);
    return answer;
}

}  // namespace

class SingleInstance::Service final : private QDBusVirtualObject {
  public:
    Service(const std::string& bus, Handlers handlers)
        : handlers_(std::move(handlers)),
          link_(bus, {.onConnected = [this] { takeName(); }, .onLost = [] {}}) {
        link_.start();
    }

  private:
    void takeName() {
        link_.serve(objectPath, *this);
        auto request = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
        request << QString::fromLatin1(busName) << doNotQueue;
        // If the name is taken, another instance can still reach us by signal.
        link_.call(request, [](const QDBusMessage& /*reply*/) {});
    }

    [[nodiscard]] QString introspect(const QString& /*path*/) const override {
        return QStringLiteral(
            "<interface name='org.freedesktop.Application'>"
            "<method name='Activate'><arg type='a{sv}' direction='in'/></method>"
            "<method name='Open'><arg type='as' direction='in'/>"
            "<arg type='a{sv}' direction='in'/></method>"
            "<method name='ActivateAction'><arg type='s' direction='in'/>"
            "<arg type='av' direction='in'/><arg type='a{sv}' direction='in'/></method>"
            "</interface>"
            "<interface name='app.quenby.unlock'><method name='Reopen'/>"
            "<method name='Command'><arg type='as' direction='in'/>"
            "<arg type='i' direction='out'/><arg type='s' direction='out'/></method></interface>");
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (message.interface() == QLatin1String(busName) &&
            message.member() == QLatin1String("Command") &&
            message.signature() == QLatin1String("as")) {
            checkUser(message, bus);
            return true;
        }
        const bool isKnown = message.interface() == QLatin1String(applicationInterface)
                                 ? message.member() == QLatin1String("Activate") ||
                                       message.member() == QLatin1String("Open") ||
                                       message.member() == QLatin1String("ActivateAction")
                                 : message.interface() == QLatin1String(busName) &&
                                       message.member() == QLatin1String("Reopen");
        if (!isKnown) return false;
        bus.send(message.createReply());
        handlers_.onReopen();
        return true;
    }

    /// A session bus may be configured to let other users in.
    void checkUser(const QDBusMessage& message, const QDBusConnection& bus) {
        auto question = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixUser"));
        question << message.service();
        link_.call(question, [this, message, bus](const QDBusMessage& user) {
            const bool isOwn = user.type() == QDBusMessage::ReplyMessage &&
                               user.arguments().value(0).toUInt() == ::getuid();
            if (isOwn) return carryOut(message, bus);
            bus.send(message.createErrorReply(QDBusError::AccessDenied,
                                              QStringLiteral("Commands are its user’s only.")));
        });
    }

    void carryOut(const QDBusMessage& message, const QDBusConnection& bus) {
        std::vector<std::string> words;
        for (const QString& word : message.arguments().value(0).toStringList())
            words.push_back(word.toStdString());
        handlers_.onCommand(words, [message, bus](const Reply& reply) {
            auto answer = message.createReply();
            answer << reply.status << QString::fromStdString(reply.text);
            bus.send(answer);
        });
    }

    const Handlers handlers_;
    DBusLink link_;
};

SingleInstance::SingleInstance(Places places) : places_(std::move(places)) {}

SingleInstance::~SingleInstance() {
    service_.reset();
    // Not unlinked: the path may already be another instance's file.
    if (lock_ >= 0) ::close(lock_);
}

SingleInstance::Claim SingleInstance::claim() {
    lock_ = ::open(places_.lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (lock_ < 0) return Claim::first;
    struct flock wanted = wholeFile();
    if (::fcntl(lock_, F_SETLK, &wanted) == 0) return Claim::first;
    return reopenOverBus() || reopenBySignal() ? Claim::handedOver : Claim::unreachable;
}

void SingleInstance::serve(Handlers handlers) {
    service_ = std::make_unique<Service>(places_.sessionBus, std::move(handlers));
}

std::expected<SingleInstance::Reply, SingleInstance::Unreached> SingleInstance::ask(
    const std::string& sessionBus, const std::vector<std::string>& words) {
    QStringList list;
    for (const std::string& word : words)
        list.append(QString::fromStdString(word));
    const auto answer = callRunning(sessionBus, busName, "Command", list, commandMilliseconds);
    if (!answer) return std::unexpected(Unreached::noBus);
    const QVariantList values = answer->arguments();
    if (answer->type() == QDBusMessage::ReplyMessage && values.size() == 2)
        return Reply{values[0].toInt(), values[1].toString().toStdString()};
    const QString error = answer->errorName();
    const bool isAbsent = error == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
                          error == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
    return std::unexpected(isAbsent ? Unreached::notRunning : Unreached::silent);
}

bool SingleInstance::reopenOverBus() const {
    const auto answer = callRunning(places_.sessionBus, applicationInterface, "Activate",
                                    QVariantMap(), answerMilliseconds);
    return answer && answer->type() == QDBusMessage::ReplyMessage;
}

bool SingleInstance::reopenBySignal() const {
    struct flock found = wholeFile();
    if (::fcntl(lock_, F_GETLK, &found) != 0 || found.l_type == F_UNLCK || found.l_pid <= 0)
        return false;
    return ::kill(found.l_pid, ProcessSignals::reopenSignal) == 0;
}

}  // namespace marrowby
