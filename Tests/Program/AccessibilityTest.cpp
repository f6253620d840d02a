// SPDX-License-Identifier: Apache-2.0
#include "Tests/Program/ProgramTest.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <algorithm>
#include <expected>
#include <utility>

#include <signal.h>

namespace marrowby {
namespace {

const QString busName = QStringLiteral("accessibility");
constexpr const char* launcher = "/usr/libexec/at-spi-bus-launcher";
constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* rootPath = "/org/a11y/atspi/accessible/root";
// AtspiStateType.
constexpr unsigned checkedState = 4;
constexpr unsigned focusableState = 11;

/// The program's windows as a screen reader sees them: over AT-SPI's own bus.
class AccessibilityTest : public ProgramTest {
  protected:
    struct Object {
        QString service;
        QString path;
    };
    struct Control {
        Object object;
        std::string name;
        std::string role;
    };

    ~AccessibilityTest() override {
        QDBusConnection::disconnectFromBus(busName);
        if (!launcher_) return;
        // Killed, it would leave its bus behind.
        launcher_->send(SIGTERM);
        launcher_->waitEnded(TimeInterval(60));
    }

    void SetUp() override {
        ProgramTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        const std::string folder = home.path().string();
        launcher_ =
            bus->serve("org.a11y.Bus",
                       {.arguments = {launcher, "--launch-immediately"},
                        .environment = {"XDG_RUNTIME_DIR=" + folder, "XDG_CACHE_HOME=" + folder,
                                        "DISPLAY=" + desktop->displayName()}});
        if (!launcher_) GTEST_SKIP() << "Skipped: " << launcher_.error();
        const QString address =
            bus->call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress").toString();
        ASSERT_TRUE(QDBusConnection::connectToBus(address, busName).isConnected())
            << address.toStdString();
        environment.insert("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        environment.insert("ASAN_OPTIONS", wholeStacks);
    }

    [[nodiscard]] static QVariant ask(const Object& object, const char* interface,
                                      const char* method, const QVariantList& arguments = {}) {
        auto message = QDBusMessage::createMethodCall(object.service, object.path,
                                                      QString::fromLatin1(interface),
                                                      QString::fromLatin1(method));
        message.setArguments(arguments);
        return QDBusConnection(busName).call(message).arguments().value(0);
    }
    [[nodiscard]] static std::vector<Object> children(const Object& object) {
        std::vector<Object> found;
        const QVariant reply = ask(object, accessible, "GetChildren");
        if (!reply.isValid()) return found;
        const auto list = reply.value<QDBusArgument>();
        list.beginArray();
        while (!list.atEnd()) {
            Object child;
            QDBusObjectPath path;
            list.beginStructure();
            list >> child.service >> path;
            list.endStructure();
            child.path = path.path();
            found.push_back(std::move(child));
        }
        list.endArray();
        return found;
    }
    [[nodiscard]] static bool has(const Object& object, unsigned state) {
        const QVariant reply = ask(object, accessible, "GetState");
        if (!reply.isValid()) return false;
        const auto bits = qdbus_cast<QList<quint32>>(reply.value<QDBusArgument>());
        return !bits.isEmpty() && (bits.first() >> state & 1U) != 0;
    }
    static void collect(const Object& object, std::vector<Control>& controls) {
        if (has(object, focusableState)) {
            const auto name = ask(object, "org.freedesktop.DBus.Properties", "Get",
                                  {accessible, QStringLiteral("Name")})
                                  .value<QDBusVariant>();
            controls.push_back(
                {.object = object,
                 .name = name.variant().toString().toStdString(),
                 .role = ask(object, accessible, "GetRoleName").toString().toStdString()});
        }
        for (const Object& child : children(object))
            collect(child, controls);
    }
    /// Of all programs on the bus: there is one.
    [[nodiscard]] static std::vector<Control> controls() {
        std::vector<Control> found;
        collect({.service = "org.a11y.atspi.Registry", .path = rootPath}, found);
        return found;
    }
    /// Of the page that is shown, once it has one of this name.
    void awaitControls(std::string_view name) {
        ASSERT_TRUE(loop.runUntil([&] {
            shown = controls();
            return find(name) != nullptr;
        })) << name
            << program->recentWords();
    }
    [[nodiscard]] const Control* find(std::string_view name) const {
        const auto found = std::ranges::find(shown, name, &Control::name);
        return found == shown.end() ? nullptr : &*found;
    }
    void expectNames() const {
        for (const Control& control : shown)
            EXPECT_NE(control.name, "") << control.role;
    }

    std::vector<Control> shown;

  private:
    std::expected<ChildProcess, std::string> launcher_ = std::unexpected("not started");
};

TEST_F(AccessibilityTest, namesEveryControlAndTogglesASetting) {
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_NO_FATAL_FAILURE(awaitControls("Continue"));
    expectNames();
    ASSERT_NO_FATAL_FAILURE(setUpThroughTheWindow());
    ASSERT_NO_FATAL_FAILURE(openWindow());
    ASSERT_NO_FATAL_FAILURE(awaitControls("Unlock with your face"));
    expectNames();

    const Object toggle = find("Unlock with your face")->object;
    EXPECT_TRUE(has(toggle, checkedState));
    EXPECT_TRUE(ask(toggle, "org.a11y.atspi.Action", "DoAction", {0}).toBool());
    EXPECT_TRUE(loop.runUntil([&] { return tell({"status"}).starts_with("1 Off: "); }));
    EXPECT_FALSE(has(toggle, checkedState));
    EXPECT_EQ(program->terminate(), EXIT_SUCCESS) << program->recentWords();
}

}  // namespace
}  // namespace marrowby
