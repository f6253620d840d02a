// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/GnomeDisplays.h"

#include "Platforms/Linux/Desktop/DBusLink.h"
#include "Platforms/Linux/Session/ShellWatcher.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QVariantMap>
#include <utility>
#include <vector>

namespace marrowby {
namespace {

// The shell's connection has the object, too, whoever owns the name org.gnome.Mutter.DisplayConfig.
const QString shellService = QStringLiteral("org.gnome.Shell");
const QString displaysPath = QStringLiteral("/org/gnome/Mutter/DisplayConfig");
const QString displaysInterface = QStringLiteral("org.gnome.Mutter.DisplayConfig");
const QString propertiesOfDisplays = QStringLiteral("org.freedesktop.DBus.Properties");
const QString powerProperty = QStringLiteral("PowerSaveMode");

/// Standby, suspended or off; on is 0, and unknown -1.
bool isSaving(const QVariant& mode) {
    return mode.metaType() == QMetaType::fromType<int>() && mode.toInt() > 0;
}

}  // namespace

class GnomeDisplays::Shell {
  public:
    Shell(GnomeDisplays& displays, const std::string& busAddress, std::uint32_t user)
        : displays_(displays),
          owner_(busAddress, user),
          link_(busAddress,
                {.onConnected = [this] { onConnected(); }, .onLost = [this] { forget(); }}) {}

    void start() {
        owner_.onChange = [this] { judge(); };
        owner_.start();
        link_.start();
    }

    [[nodiscard]] bool areAsleep() const { return areAsleep_; }

  private:
    void onConnected() {
        subscriptions_.push_back(link_.subscribe(
            {.service = shellService,
             .path = displaysPath,
             .interface = propertiesOfDisplays,
             .member = QStringLiteral("PropertiesChanged")},
            [this](const QDBusMessage& signal) { noteChange(signal.arguments()); }));
        subscriptions_.push_back(link_.watchOwner(shellService, [this](bool hasOwner) {
            ++generation_;
            set(false);
            if (hasOwner) ask();
        }));
        ask();
    }

    void ask() {
        auto call = QDBusMessage::createMethodCall(shellService, displaysPath, propertiesOfDisplays,
                                                   QStringLiteral("Get"));
        call.setArguments({displaysInterface, powerProperty});
        link_.call(call, [this, generation = generation_](const QDBusMessage& reply) {
            if (generation != generation_ || reply.type() != QDBusMessage::ReplyMessage) return;
            set(isSaving(reply.arguments().value(0).value<QDBusVariant>().variant()));
        });
    }

    void noteChange(const QVariantList& arguments) {
        if (arguments.value(0).toString() != displaysInterface) return;
        const auto changed = qdbus_cast<QVariantMap>(arguments.value(1));
        if (const auto mode = changed.constFind(powerProperty); mode != changed.cend())
            set(isSaving(*mode));
    }

    void forget() {
        subscriptions_.clear();
        ++generation_;
        set(false);
    }

    void set(bool isSaving) {
        isSaving_ = isSaving;
        judge();
    }
    void judge() {
        const bool areAsleep = isSaving_ && owner_.shell() == ShellWatcher::Shell::own;
        if (std::exchange(areAsleep_, areAsleep) != areAsleep && displays_.onChange)
            displays_.onChange();
    }

    GnomeDisplays& displays_;
    /// As it was told last.
    bool isSaving_ = false;
    bool areAsleep_ = false;
    /// Number of the owner's changes.
    std::uint64_t generation_ = 0;
    ShellWatcher owner_;
    DBusLink link_;
    // Destroyed before the connection.
    std::vector<DBusLink::Subscription> subscriptions_;
};

GnomeDisplays::GnomeDisplays(const std::string& busAddress, std::uint32_t user)
    : shell_(std::make_unique<Shell>(*this, busAddress, user)) {}

GnomeDisplays::~GnomeDisplays() = default;

void GnomeDisplays::start() {
    shell_->start();
}

bool GnomeDisplays::areAsleep() const {
    return shell_->areAsleep();
}

}  // namespace marrowby
