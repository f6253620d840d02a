#include "Platforms/Linux/PolkitOwnerAuthentication.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QMap>
#include <QString>
#include <QVariantMap>
#include <atomic>
#include <cstdint>
#include <limits>
#include <utility>

namespace marrowby {

namespace {

using Reply = std::expected<bool, OwnerAuthenticationError>;

/// Biometrics, watch or account password: the one policy there is.
constexpr std::int64_t deviceOwnerAuthentication = 2;
constexpr quint32 allowUserInteraction = 1;
/// To libdbus, never.
constexpr int noTimeout = std::numeric_limits<int>::max();

std::unexpected<OwnerAuthenticationError> failure(std::int64_t code, std::string message) {
    return std::unexpected<OwnerAuthenticationError>(
        {.domain = OwnerAuthenticationError::authenticationDomain,
         .code = code,
         .message = std::move(message)});
}

std::unexpected<OwnerAuthenticationError> noBus() {
    return failure(0, "The system bus can’t be reached.");
}

std::unexpected<OwnerAuthenticationError> cancelled(std::int64_t code) {
    return failure(code, "Cancelled.");
}

QString newName() {
    static std::atomic<std::uint64_t> last = 0;
    return QStringLiteral("marrowby-owner-%1").arg(++last);
}

QDBusMessage checkAuthorization(const QString& busName) {
    QDBusArgument subject;
    subject.beginStructure();
    subject << QStringLiteral("system-bus-name") << QVariantMap{{QStringLiteral("name"), busName}};
    subject.endStructure();
    QDBusArgument noDetails;
    noDetails.beginMap(QMetaType::fromType<QString>(), QMetaType::fromType<QString>());
    noDetails.endMap();
    QDBusMessage message =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.PolicyKit1"),
                                       QStringLiteral("/org/freedesktop/PolicyKit1/Authority"),
                                       QStringLiteral("org.freedesktop.PolicyKit1.Authority"),
                                       QStringLiteral("CheckAuthorization"));
    // The prompt ends with the connection, so no id is needed to cancel it by.
    message.setArguments({QVariant::fromValue(subject),
                          QString::fromLatin1(PolkitOwnerAuthentication::action),
                          QVariant::fromValue(noDetails), allowUserInteraction, QString()});
    return message;
}

Reply outcomeOfError(const QDBusMessage& message) {
    const QString name = message.errorName();
    if (name == QLatin1String("org.freedesktop.PolicyKit1.Error.Cancelled"))
        return cancelled(PolkitOwnerAuthentication::cancelledByApplication);
    if (name == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
        name == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner") ||
        name.startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn."))) {
        return failure(0, "Nothing here can check who you are. Install the package polkitd.");
    }
    if (name == QLatin1String("org.freedesktop.DBus.Error.Disconnected") ||
        name == QLatin1String("org.freedesktop.DBus.Error.NoReply")) {
        return noBus();
    }
    const std::string text = message.errorMessage().toStdString();
    if (text.find("is not registered") != std::string::npos) {
        return failure(0,
                       "Marrowby Unlock isn’t installed completely: app.quenby.unlock.policy is "
                       "missing from polkit’s actions.");
    }
    return failure(0, text);
}

/// https://polkit.pages.freedesktop.org/polkit/eggdbus-interface-org.freedesktop.PolicyKit1.Authority.html
Reply outcomeOf(const QDBusMessage& message) {
    if (message.type() == QDBusMessage::ErrorMessage) return outcomeOfError(message);
    const auto result = message.arguments().value(0).value<QDBusArgument>();
    if (result.currentSignature() != QLatin1String("(bba{ss})"))
        return failure(0, "Polkit gave an answer that makes no sense.");
    bool isAuthorized = false;
    bool isChallenge = false;
    QMap<QString, QString> details;
    result.beginStructure();
    result >> isAuthorized >> isChallenge >> details;
    result.endStructure();

    if (isAuthorized) return true;
    if (details.contains(QStringLiteral("polkit.dismissed")))
        return cancelled(PolkitOwnerAuthentication::cancelledByUser);
    if (isChallenge) {
        return failure(PolkitOwnerAuthentication::notInteractive,
                       "No program is running that could ask for your password. Install a polkit "
                       "agent, such as lxpolkit, and log in again.");
    }
    return failure(PolkitOwnerAuthentication::refused, "It wasn’t confirmed that it’s you.");
}

}  // namespace

/// A connection of its own, whose end ends polkit's prompt.
class PolkitOwnerAuthentication::Context final : public OwnerAuthenticationContext {
  public:
    explicit Context(const std::string& address)
        : name_(newName()),
          bus_(QDBusConnection::connectToBus(QString::fromStdString(address), name_)) {}
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;
    ~Context() override {
        withdraw();
        QDBusConnection::disconnectFromBus(name_);
    }

    [[nodiscard]] std::expected<void, OwnerAuthenticationError> canEvaluate(
        std::int64_t policy) override {
        if (policy != deviceOwnerAuthentication) return failure(0, "");
        if (!bus_.isConnected()) return noBus();
        return {};
    }

    void evaluate(std::int64_t policy, const std::string& /*reason*/,
                  std::function<void(Reply)> reply) override {
        if (const auto possible = canEvaluate(policy); !possible)
            return reply(std::unexpected(possible.error()));
        reply_ = std::move(reply);
        const auto call = bus_.asyncCall(checkAuthorization(bus_.baseService()), noTimeout);
        watcher_.reset(new QDBusPendingCallWatcher(call));
        QObject::connect(
            watcher_.get(), &QDBusPendingCallWatcher::finished, watcher_.get(),
            [this](QDBusPendingCallWatcher* finished) { finish(outcomeOf(finished->reply())); });
    }

    void withdraw() {
        if (!reply_) return;
        QDBusConnection::disconnectFromBus(name_);
        finish(cancelled(cancelledByApplication));
    }

  private:
    struct DeleteLater {
        // It may be what calls.
        void operator()(QDBusPendingCallWatcher* watcher) const {
            watcher->disconnect();
            watcher->deleteLater();
        }
    };

    /// The reply may hold this context, which then goes with it.
    void finish(const Reply& outcome) {
        watcher_.reset();
        const auto reply = std::exchange(reply_, nullptr);
        reply(outcome);
    }

    const QString name_;
    QDBusConnection bus_;
    std::unique_ptr<QDBusPendingCallWatcher, DeleteLater> watcher_;
    std::function<void(Reply)> reply_;
};

PolkitOwnerAuthentication::PolkitOwnerAuthentication(std::string busAddress)
    : address_(std::move(busAddress)) {}

PolkitOwnerAuthentication::~PolkitOwnerAuthentication() {
    for (const auto& held : contexts_) {
        if (const auto context = held.lock()) context->withdraw();
    }
}

std::shared_ptr<OwnerAuthenticationContext> PolkitOwnerAuthentication::makeContext() {
    std::erase_if(contexts_, [](const auto& context) { return context.expired(); });
    auto context = std::make_shared<Context>(address_);
    contexts_.push_back(context);
    return context;
}

}  // namespace marrowby
