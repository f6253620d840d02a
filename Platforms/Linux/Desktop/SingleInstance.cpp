#include "Platforms/Linux/Desktop/SingleInstance.h"

#include "Platforms/Linux/Desktop/DBusLink.h"
#include "Platforms/Linux/Desktop/ProcessSignals.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QVariantMap>
#include <utility>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

namespace marrowby {

namespace {

constexpr const char* applicationInterface = "org.freedesktop.Application";
constexpr int answerMilliseconds = 5000;
constexpr unsigned doNotQueue = 4;

struct flock wholeFile() {
    struct flock whole{};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return whole;
}

}  // namespace

class SingleInstance::Service final : private QDBusVirtualObject {
  public:
    Service(const std::string& bus, std::function<void()> onReopen)
        : onReopen_(std::move(onReopen)),
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
            "<interface name='app.quenby.unlock'><method name='Reopen'/></interface>");
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        const bool isKnown = message.interface() == QLatin1String(applicationInterface)
                                 ? message.member() == QLatin1String("Activate") ||
                                       message.member() == QLatin1String("Open") ||
                                       message.member() == QLatin1String("ActivateAction")
                                 : message.interface() == QLatin1String(busName) &&
                                       message.member() == QLatin1String("Reopen");
        if (!isKnown) return false;
        bus.send(message.createReply());
        onReopen_();
        return true;
    }

    const std::function<void()> onReopen_;
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

void SingleInstance::serve(std::function<void()> onReopen) {
    service_ = std::make_unique<Service>(places_.sessionBus, std::move(onReopen));
}

bool SingleInstance::reopenOverBus() const {
    if (places_.sessionBus.empty()) return false;
    const QString connection = QStringLiteral("marrowby-reopen");
    bool isAnswered = false;
    {
        QDBusConnection bus =
            QDBusConnection::connectToBus(QString::fromStdString(places_.sessionBus), connection);
        auto activate = QDBusMessage::createMethodCall(
            QString::fromLatin1(busName), QString::fromLatin1(objectPath),
            QString::fromLatin1(applicationInterface), QStringLiteral("Activate"));
        activate << QVariantMap();
        activate.setAutoStartService(false);
        isAnswered =
            bus.isConnected() && bus.call(activate, QDBus::Block, answerMilliseconds).type() ==
                                     QDBusMessage::ReplyMessage;
    }
    QDBusConnection::disconnectFromBus(connection);
    return isAnswered;
}

bool SingleInstance::reopenBySignal() const {
    struct flock found = wholeFile();
    if (::fcntl(lock_, F_GETLK, &found) != 0 || found.l_type == F_UNLCK || found.l_pid <= 0)
        return false;
    return ::kill(found.l_pid, ProcessSignals::reopenSignal) == 0;
}

}  // namespace marrowby
