// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/AccessibleWindows.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QVariant>
#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <utility>

namespace marrowby {

namespace {

constexpr int answerMilliseconds = 5'000;
constexpr const char* connectionName = "accessible-windows";
constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* action = "org.a11y.atspi.Action";
/// AtspiStateType, bits of a set.
constexpr unsigned activeState = 1;
constexpr unsigned checkedState = 4;
constexpr unsigned enabledState = 8;
constexpr unsigned expandedState = 10;
constexpr unsigned focusableState = 11;
constexpr unsigned focusedState = 12;
constexpr unsigned showingState = 25;
/// Also set where it is scrolled out of view.
constexpr unsigned visibleState = 30;
/// AtspiRelationType.
constexpr std::uint32_t labelledBy = 2;
/// Bounds the tree's depth.
constexpr int deepest = 30;

/// A reference to an accessible object.
struct Node {
    QString program;
    QString path;
};

std::vector<Node> readNodes(const QDBusArgument& list) {
    std::vector<Node> nodes;
    list.beginArray();
    while (!list.atEnd()) {
        Node node;
        QDBusObjectPath path;
        list.beginStructure();
        list >> node.program >> path;
        list.endStructure();
        node.path = path.path();
        nodes.push_back(std::move(node));
    }
    list.endArray();
    return nodes;
}

}  // namespace

class AccessibleWindows::Bus {
  public:
    explicit Bus(const std::string& sessionBus) : session_(QString::fromStdString(sessionBus)) {}
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;
    ~Bus() { QDBusConnection::disconnectFromBus(connectionName); }

    [[nodiscard]] QVariantList ask(const Node& node, const char* interface, const char* method,
                                   const QVariantList& arguments = {}) {
        connect();
        auto message = QDBusMessage::createMethodCall(node.program, node.path, interface, method);
        message.setArguments(arguments);
        const auto reply =
            QDBusConnection(connectionName).call(message, QDBus::Block, answerMilliseconds);
        return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments() : QVariantList();
    }

    [[nodiscard]] std::vector<Node> children(const Node& node) {
        const QVariantList reply = ask(node, accessible, "GetChildren");
        if (reply.isEmpty()) return {};
        return readNodes(reply[0].value<QDBusArgument>());
    }

    [[nodiscard]] std::string name(const Node& node) {
        const QVariantList reply =
            ask(node, "org.freedesktop.DBus.Properties", "Get", {accessible, "Name"});
        if (reply.isEmpty()) return {};
        return reply[0].value<QDBusVariant>().variant().toString().toStdString();
    }

    /// Its label's name, else its own.
    [[nodiscard]] std::string label(const Node& node) {
        const QVariantList reply = ask(node, accessible, "GetRelationSet");
        if (reply.isEmpty()) return name(node);
        std::vector<Node> labels;
        const auto relations = reply[0].value<QDBusArgument>();
        relations.beginArray();
        while (!relations.atEnd()) {
            std::uint32_t type = 0;
            relations.beginStructure();
            relations >> type;
            const std::vector<Node> targets = readNodes(relations);
            relations.endStructure();
            if (type == labelledBy) labels.insert(labels.end(), targets.begin(), targets.end());
        }
        relations.endArray();
        return name(labels.empty() ? node : labels.front());
    }

    [[nodiscard]] std::string role(const Node& node) {
        const QVariantList reply = ask(node, accessible, "GetRoleName");
        return reply.isEmpty() ? "" : reply[0].toString().toStdString();
    }

    [[nodiscard]] bool has(const Node& node, unsigned state) {
        const QVariantList reply = ask(node, accessible, "GetState");
        if (reply.isEmpty()) return false;
        std::array<std::uint32_t, 2> words{};
        const auto list = reply[0].value<QDBusArgument>();
        list.beginArray();
        for (std::size_t i = 0; i < words.size() && !list.atEnd(); ++i)
            list >> words[i];
        list.endArray();
        return (words[state / 32] >> (state % 32) & 1U) != 0;
    }

    /// The first top-level window that is shown.
    [[nodiscard]] std::optional<Node> window() {
        const Node registry{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
        for (const Node& program : children(registry))
            for (const Node& window : children(program))
                if (has(window, showingState)) return window;
        return std::nullopt;
    }

    /// Depth first; nothing where `is` holds for no visible object.
    [[nodiscard]] std::optional<Node> find(const Node& from,
                                           const std::function<bool(const Node&)>& is,
                                           int depth = 0) {
        if (depth > deepest || !has(from, visibleState)) return std::nullopt;
        if (is(from)) return from;
        for (const Node& child : children(from))
            if (auto found = find(child, is, depth + 1)) return found;
        return std::nullopt;
    }

    /// What can be pressed by this name, in the window that is shown.
    [[nodiscard]] std::optional<Node> control(std::string_view named) {
        const auto shown = window();
        if (!shown) return std::nullopt;
        return find(*shown, [&](const Node& node) {
            return name(node) == named && has(node, enabledState) && role(node) != "label" &&
                   role(node) != "dialog";
        });
    }

    /// All that is visible in the window that is shown.
    void visit(const std::function<void(const Node&)>& see) {
        if (const auto shown = window()) {
            (void)find(*shown, [&](const Node& node) {
                see(node);
                return false;
            });
        }
    }

  private:
    void connect() {
        if (QDBusConnection(connectionName).isConnected()) return;
        QDBusConnection::disconnectFromBus(connectionName);
        const QString asking = QStringLiteral("accessible-windows-session");
        auto session = QDBusConnection::connectToBus(session_, asking);
        const auto reply =
            session.call(QDBusMessage::createMethodCall("org.a11y.Bus", "/org/a11y/bus",
                                                        "org.a11y.Bus", "GetAddress"),
                         QDBus::Block, answerMilliseconds);
        QDBusConnection::disconnectFromBus(asking);
        QDBusConnection::connectToBus(reply.arguments().value(0).toString(), connectionName);
    }

    const QString session_;
};

AccessibleWindows::AccessibleWindows(const std::string& sessionBus)
    : bus_(std::make_unique<Bus>(sessionBus)) {}

AccessibleWindows::~AccessibleWindows() = default;

std::optional<std::string> AccessibleWindows::title() const {
    const auto window = bus_->window();
    if (!window) return std::nullopt;
    return bus_->name(*window);
}

std::vector<std::string> AccessibleWindows::texts() const {
    std::vector<std::string> texts;
    bus_->visit([&](const Node& node) {
        if (std::string name = bus_->name(node); !name.empty()) texts.push_back(std::move(name));
    });
    return texts;
}

std::vector<std::string> AccessibleWindows::unnamedControls() const {
    std::vector<std::string> roles;
    bus_->visit([&](const Node& node) {
        if (bus_->has(node, focusableState) && bus_->name(node).empty())
            roles.push_back(bus_->role(node));
    });
    return roles;
}

std::optional<bool> AccessibleWindows::isOn(std::string_view name) const {
    const auto control = bus_->control(name);
    if (!control) return std::nullopt;
    return bus_->has(*control, checkedState);
}

bool AccessibleWindows::press(std::string_view name) const {
    const auto control = bus_->control(name);
    return control && bus_->ask(*control, action, "DoAction", {0}).value(0).toBool();
}

bool AccessibleWindows::focusText() const {
    const auto window = bus_->window();
    if (!window) return false;
    const auto control =
        bus_->find(*window, [&](const Node& node) { return bus_->role(node) == "text"; });
    return control &&
           bus_->ask(*control, "org.a11y.atspi.Component", "GrabFocus").value(0).toBool() &&
           bus_->has(*window, activeState) && bus_->has(*control, focusedState);
}

bool AccessibleWindows::open(std::string_view label) const {
    const auto window = bus_->window();
    if (!window) return false;
    const auto control = bus_->find(*window, [&](const Node& node) {
        return bus_->role(node) == "combo box" && bus_->label(node) == label;
    });
    if (!control) return false;
    if (bus_->has(*control, expandedState)) return true;
    (void)bus_->ask(*control, action, "DoAction", {0});
    return false;
}

}  // namespace marrowby
