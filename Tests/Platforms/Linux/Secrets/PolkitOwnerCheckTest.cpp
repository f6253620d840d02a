// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Secrets/PolkitOwnerCheck.h"
#include "Tests/Platforms/Linux/MockServices.h"
#include "Tests/Platforms/Linux/QtLoop.h"
#include "Unlock/Linux/LinuxWords.h"
#include "UnlockCore/Storage/StorageError.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QMap>
#include <functional>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr const char* busName = "org.freedesktop.PolicyKit1";

/// A fake polkit whose reply the test chooses.
class Authority final : public QDBusVirtualObject {
  public:
    std::vector<QDBusMessage> calls;
    std::function<void(const QDBusMessage&)> onCall = [](const QDBusMessage&) {};

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*bus*/) override {
        if (message.member() != QLatin1String("CheckAuthorization")) return false;
        message.setDelayedReply(true);
        calls.push_back(message);
        onCall(message);
        return true;
    }
};

QVariant result(bool isAuthorized, bool isChallenge, const QMap<QString, QString>& details) {
    QDBusArgument argument;
    argument.beginStructure();
    argument << isAuthorized << isChallenge << details;
    argument.endStructure();
    return QVariant::fromValue(argument);
}

struct PolkitOwnerCheckTest : testing::Test {
    QtLoop loop;
    std::unique_ptr<PrivateBus> bus = startBusForMocks();
    std::optional<QDBusConnection> service;
    Authority authority;
    std::optional<PolkitOwnerCheck> check;
    std::vector<OwnerCheck::Result> outcomes;

    void SetUp() override {
        if (!bus) GTEST_SKIP() << noPrivateBus;
        check.emplace(bus->address());
    }
    void TearDown() override { QDBusConnection::disconnectFromBus("authority"); }

    void startService() {
        service =
            QDBusConnection::connectToBus(QString::fromStdString(bus->address()), "authority");
        ASSERT_TRUE(
            service->registerVirtualObject("/org/freedesktop/PolicyKit1/Authority", &authority));
        ASSERT_TRUE(service->registerService(busName));
    }
    void ask() {
        check->confirmOwner("open it",
                            [this](const auto& outcome) { outcomes.push_back(outcome); });
    }
    /// The error's sentence, or "yes".
    std::string answer() {
        if (!loop.runUntil([&] { return !outcomes.empty(); })) return "never";
        EXPECT_EQ(outcomes.size(), 1U);
        const auto outcome = std::exchange(outcomes, {}).front();
        if (outcome) return "yes";
        return std::visit(
            [](const auto& error) { return description(StorageError(error), linuxWords); },
            outcome.error());
    }
};

TEST_F(PolkitOwnerCheckTest, promptsOnceAndReportsTheResult) {
    ASSERT_NO_FATAL_FAILURE(startService());
    const QMap<QString, QString> dismissed{{"polkit.dismissed", "true"}};
    const QString polkitFailed = "org.freedesktop.PolicyKit1.Error.Failed";
    const auto with = [](const QVariant& value) {
        return [value](const QDBusMessage& call) { return call.createReply(value); };
    };
    const auto failing = [](const QString& name, const QString& text) {
        return [name, text](const QDBusMessage& call) { return call.createErrorReply(name, text); };
    };
    const std::pair<std::function<QDBusMessage(const QDBusMessage&)>, std::string> cases[] = {
        {with(result(true, false, {})), "yes"},
        {with(result(false, false, dismissed)), "Cancelled."},
        {with(result(false, false, {})), "It wasn’t confirmed that it’s you."},
        {with(result(false, true, {})),
         "No program is running that could ask for your password. Install a polkit agent, such as "
         "lxpolkit, and log in again."},
        {with(true), "Polkit gave an answer that makes no sense."},
        {failing(polkitFailed, "Action app.quenby.unlock.confirm-owner is not registered"),
         "Marrowby Unlock isn’t installed completely: app.quenby.unlock.policy is missing from "
         "polkit’s actions."},
        {failing(polkitFailed, "The disk is on fire."), "The disk is on fire."},
    };
    for (const auto& [reply, expected] : cases) {
        SCOPED_TRACE(expected);
        authority.onCall = [&](const QDBusMessage& call) { service->send(reply(call)); };
        ask();
        EXPECT_EQ(answer(), expected);
    }
    ASSERT_EQ(authority.calls.size(), std::size(cases));

    const QDBusMessage& call = authority.calls.front();
    EXPECT_EQ(call.arguments()[1], "app.quenby.unlock.confirm-owner");
    EXPECT_EQ(call.arguments()[3].toUInt(), 1U);
    EXPECT_NE(call.service(), authority.calls.back().service())
        << "each prompt has its own connection";
}

TEST_F(PolkitOwnerCheckTest, reportsMissingParts) {
    ask();
    EXPECT_EQ(answer(), "Nothing here can check who you are. Install the package polkitd.");

    ASSERT_NO_FATAL_FAILURE(startService());
    EXPECT_TRUE(check->canConfirm());
    ask();
    ASSERT_TRUE(loop.runUntil([&] { return !authority.calls.empty(); }));
    bus->kill();
    EXPECT_EQ(answer(), "The system bus can’t be reached.");
    EXPECT_FALSE(check->canConfirm());
    ask();
    EXPECT_EQ(answer(),
              "The system can’t check it’s you right now. The system bus can’t be reached.");
}

TEST_F(PolkitOwnerCheckTest, closesItsPromptWhenDestroyed) {
    ASSERT_NO_FATAL_FAILURE(startService());
    const auto isGone = [&] {
        const QString name = authority.calls.back().service();
        return loop.runUntil([&] {
            return !bus->call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                              "org.freedesktop.DBus", "NameHasOwner", {name})
                        .toBool();
        });
    };
    ask();
    ASSERT_TRUE(loop.runUntil([&] { return authority.calls.size() == 1; }));
    EXPECT_TRUE(outcomes.empty());
    check.reset();
    EXPECT_TRUE(isGone());
    EXPECT_EQ(answer(), "Cancelled.");
}

}  // namespace
}  // namespace marrowby
