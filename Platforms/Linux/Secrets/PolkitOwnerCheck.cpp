// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Secrets/PolkitOwnerCheck.h"

#include "UnlockCore/Foundation/Phrase.h"

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

constexpr quint32 allowUserInteraction = 1;
/// libdbus treats this as no timeout.
constexpr int noTimeout = std::numeric_limits<int>::max();

constexpr auto noSystemBus = Phrase("The system bus can’t be reached.");

OwnerCheck::Result failure(std::string message) {
    return std::unexpected(OwnerCheckFailure{std::move(message)});
}

OwnerCheck::Result cancelled() {
    return std::unexpected(OwnerCheckError(OwnerCheckError::Cancelled{}));
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
    // No cancellation id: closing the connection ends the prompt.
    message.setArguments({QVariant::fromValue(subject),
                          QString::fromLatin1(PolkitOwnerCheck::action),
                          QVariant::fromValue(noDetails), allowUserInteraction, QString()});
    return message;
}

OwnerCheck::Result outcomeOfError(const QDBusMessage& message) {
    const QString name = message.errorName();
    if (name == QLatin1String("org.freedesktop.PolicyKit1.Error.Cancelled")) return cancelled();
    if (name == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
        name == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner") ||
        name.startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn."))) {
        return failure(
            translated("Nothing here can check who you are. Install the package polkitd."));
    }
    if (name == QLatin1String("org.freedesktop.DBus.Error.Disconnected") ||
        name == QLatin1String("org.freedesktop.DBus.Error.NoReply")) {
        return failure(translated(noSystemBus));
    }
    const std::string text = message.errorMessage().toStdString();
    if (text.find("is not registered") != std::string::npos) {
        return failure(
            translated("Marrowby Unlock isn’t installed completely: app.quenby.unlock.policy is "
                       "missing from polkit’s actions."));
    }
    return failure(text);
}

/// https://polkit.pages.freedesktop.org/polkit/eggdbus-interface-org.freedesktop.PolicyKit1.Authority.html
OwnerCheck::Result outcomeOf(const QDBusMessage& message) {
    if (message.type() == QDBusMessage::ErrorMessage) return outcomeOfError(message);
    const auto result = message.arguments().value(0).value<QDBusArgument>();
    if (result.currentSignature() != QLatin1String("(bba{ss})"))
        return failure(translated("Polkit gave an answer that makes no sense."));
    bool isAuthorized = false;
    bool isChallenge = false;
    QMap<QString, QString> details;
    result.beginStructure();
    result >> isAuthorized >> isChallenge >> details;
    result.endStructure();

    if (isAuthorized) return {};
    if (details.contains(QStringLiteral("polkit.dismissed"))) return cancelled();
    if (isChallenge) {
        return failure(
            translated("No program is running that could ask for your password. Install a polkit "
                       "agent, such as lxpolkit, and log in again."));
    }
    return failure(translated("It wasn’t confirmed that it’s you."));
}

}  // namespace

/// Has its own connection, because closing it ends polkit's prompt.
class PolkitOwnerCheck::Prompt {
  public:
    explicit Prompt(const std::string& address)
        : name_(newName()),
          bus_(QDBusConnection::connectToBus(QString::fromStdString(address), name_)) {}
    Prompt(const Prompt&) = delete;
    Prompt& operator=(const Prompt&) = delete;
    ~Prompt() { QDBusConnection::disconnectFromBus(name_); }

    [[nodiscard]] bool isConnected() const { return bus_.isConnected(); }

    void ask(Completion completion) {
        completion_ = std::move(completion);
        const auto call = bus_.asyncCall(checkAuthorization(bus_.baseService()), noTimeout);
        watcher_.reset(new QDBusPendingCallWatcher(call));
        QObject::connect(
            watcher_.get(), &QDBusPendingCallWatcher::finished, watcher_.get(),
            [this](QDBusPendingCallWatcher* finished) { finish(outcomeOf(finished->reply())); });
    }

    void withdraw() {
        if (!completion_) return;
        QDBusConnection::disconnectFromBus(name_);
        finish(cancelled());
    }

  private:
    struct DeleteLater {
        // The watcher may be the caller.
        void operator()(QDBusPendingCallWatcher* watcher) const {
            watcher->disconnect();
            watcher->deleteLater();
        }
    };

    /// The completion may hold the last reference to this prompt.
    void finish(const Result& outcome) {
        watcher_.reset();
        const auto completion = std::exchange(completion_, nullptr);
        completion(outcome);
    }

    const QString name_;
    QDBusConnection bus_;
    std::unique_ptr<QDBusPendingCallWatcher, DeleteLater> watcher_;
    Completion completion_;
};

PolkitOwnerCheck::PolkitOwnerCheck(std::string busAddress) : address_(std::move(busAddress)) {}

PolkitOwnerCheck::~PolkitOwnerCheck() {
    for (const auto& held : prompts_) {
        if (const auto prompt = held.lock()) prompt->withdraw();
    }
}

std::expected<void, std::string> PolkitOwnerCheck::canConfirm() {
    if (Prompt(address_).isConnected()) return {};
    return std::unexpected(translated(noSystemBus));
}

void PolkitOwnerCheck::confirmOwner(const std::string& /*reason*/, Completion completion) {
    const auto prompt = std::make_shared<Prompt>(address_);
    if (!prompt->isConnected())
        return completion(std::unexpected(
            OwnerCheckError(OwnerCheckError::Unavailable{translated(noSystemBus)})));
    std::erase_if(prompts_, [](const auto& other) { return other.expired(); });
    prompts_.push_back(prompt);
    // This callback alone keeps the prompt alive.
    prompt->ask([prompt, completion = std::move(completion)](const Result& outcome) {
        completion(outcome);
    });
}

}  // namespace marrowby
