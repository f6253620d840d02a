// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/GnomeInputIdle.h"

#include "Platforms/Linux/Desktop/DBusLink.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "UnlockCore/Platform/IdleEdges.h"

#include <chrono>
#include <cstdint>
#include <utility>
#include <vector>

namespace marrowby {
namespace {

const QString monitorService = QStringLiteral("org.gnome.Mutter.IdleMonitor");
const QString monitorPath = QStringLiteral("/org/gnome/Mutter/IdleMonitor/Core");

/// The first value of a reply or a signal.
template <typename Number>
std::optional<Number> numberIn(const QDBusMessage& message) {
    const QVariant value = message.arguments().value(0);
    if (message.type() == QDBusMessage::ErrorMessage ||
        value.metaType() != QMetaType::fromType<Number>())
        return std::nullopt;
    return value.value<Number>();
}

const auto pauseMilliseconds =
    static_cast<qulonglong>(std::chrono::ceil<std::chrono::milliseconds>(IdleEdges::pause).count());

}  // namespace

class GnomeInputIdle::Monitor {
  public:
    explicit Monitor(std::string busAddress)
        : link_(std::move(busAddress),
                {.onConnected = [this] { onConnected(); }, .onLost = [this] { forget(); }}) {}

    void start() { link_.start(); }

    [[nodiscard]] std::optional<TimeInterval> sinceLastInput() const {
        // Until the first pause nothing is known.
        if (!watches_ || !watches_->pause) return std::nullopt;
        return watches_->edges.sinceLastInput(unixtime::uptime());
    }

  private:
    struct Watches {
        IdleEdges edges;
        std::optional<std::uint32_t> pause;
        /// Fires once; there only during a pause.
        std::optional<std::uint32_t> input;
    };

    void onConnected() {
        subscriptions_.push_back(link_.subscribe(
            {.service = monitorService,
             .path = monitorPath,
             .interface = monitorService,
             .member = QStringLiteral("WatchFired")},
            [this](const QDBusMessage& signal) { fired(numberIn<std::uint32_t>(signal)); }));
        subscriptions_.push_back(link_.watchOwner(monitorService, [this](bool hasOwner) {
            forgetWatches();
            if (hasOwner) watch();
        }));
        watch();
    }

    void watch() {
        watches_.emplace();
        ask<std::uint32_t>("AddIdleWatch", {pauseMilliseconds},
                           [this](std::uint32_t id) { watches_->pause = id; });
    }

    void fired(std::optional<std::uint32_t> id) {
        if (!watches_ || !id) return;
        if (id == watches_->pause) {
            watches_->edges.paused(unixtime::uptime());
            watches_->input.reset();
            ask<std::uint32_t>("AddUserActiveWatch", {}, [this](std::uint32_t input) {
                watches_->input = input;
                findEarlierInput(input);
            });
        } else if (id == watches_->input) {
            watches_->edges.resumed();
            watches_->input.reset();
        }
    }

    /// Of input that came before its watch was there, only the idle time tells.
    void findEarlierInput(std::uint32_t input) {
        ask<qulonglong>("GetIdletime", {}, [this, input](qulonglong milliseconds) {
            if (watches_->input != input || milliseconds >= pauseMilliseconds) return;
            watches_->edges.resumed();
            watches_->input.reset();
        });
    }

    /// Drops errors, and the reply of an earlier instance of the service.
    template <typename Number>
    void ask(const char* method, const QVariantList& arguments,
             std::function<void(Number)> onAnswer) {
        auto call = QDBusMessage::createMethodCall(monitorService, monitorPath, monitorService,
                                                   QString::fromLatin1(method));
        call.setArguments(arguments);
        link_.call(call, [this, generation = generation_,
                          onAnswer = std::move(onAnswer)](const QDBusMessage& reply) {
            const auto number = numberIn<Number>(reply);
            if (generation == generation_ && watches_ && number) onAnswer(*number);
        });
    }

    void forget() {
        subscriptions_.clear();
        forgetWatches();
    }
    void forgetWatches() {
        ++generation_;
        watches_.reset();
    }

    std::optional<Watches> watches_;
    std::uint64_t generation_ = 0;
    DBusLink link_;
    // Destroyed before the connection.
    std::vector<DBusLink::Subscription> subscriptions_;
};

GnomeInputIdle::GnomeInputIdle(std::string busAddress)
    : monitor_(std::make_unique<Monitor>(std::move(busAddress))) {}

GnomeInputIdle::~GnomeInputIdle() = default;

void GnomeInputIdle::start() {
    monitor_->start();
}

std::optional<TimeInterval> GnomeInputIdle::sinceLastInput() const {
    return monitor_->sinceLastInput();
}

TimeInterval GnomeInputIdle::systemUptime() const {
    return unixtime::uptime();
}

}  // namespace marrowby
