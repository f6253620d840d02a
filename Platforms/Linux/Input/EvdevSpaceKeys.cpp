// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Input/EvdevSpaceKeys.h"

#include <QFileSystemWatcher>
#include <QSocketNotifier>
#include <QString>
#include <algorithm>
#include <map>
#include <string>
#include <utility>

namespace marrowby {
namespace {

constexpr std::int32_t keyDown = 1;

bool hasKeyboard(const EvdevDevices& devices) {
    return std::ranges::any_of(
        devices.all(), [](const auto& entry) { return entry.second.description.hasSpaceKey; });
}

}  // namespace

class EvdevSpaceKeys::Readers final : public Listening {
  public:
    Readers(const std::filesystem::path& folder, const EvdevDevices::Describe& describe,
            std::function<void(Press)> onPress)
        : devices_(folder, describe), onPress_(std::move(onPress)) {
        watcher_.addPath(QString::fromStdString(folder.string()));
        QObject::connect(&watcher_, &QFileSystemWatcher::directoryChanged, &watcher_,
                         [this] { refresh(); });
        refresh();
    }

    [[nodiscard]] bool hasKeyboard() const { return marrowby::hasKeyboard(devices_); }

  private:
    struct DeleteLater {
        // deleteLater: the notifier may be the caller.
        void operator()(QSocketNotifier* notifier) const {
            notifier->setEnabled(false);
            notifier->deleteLater();
        }
    };

    void refresh() {
        devices_.refresh();
        for (const auto& [path, device] : devices_.all()) {
            if (!device.description.hasSpaceKey || notifiers_.contains(path)) continue;
            auto* notifier = new QSocketNotifier(device.descriptor, QSocketNotifier::Read);
            notifiers_[path].reset(notifier);
            QObject::connect(notifier, &QSocketNotifier::activated, notifier,
                             [this, name = path, isVirtual = device.description.isVirtual] {
                                 read(name, isVirtual);
                             });
        }
    }

    void read(const std::string& path, bool isVirtual) {
        int presses = 0;
        const bool isThere = devices_.drain(path, [&](const input_event& event) {
            if (event.type == EV_KEY && event.code == KEY_SPACE && event.value == keyDown)
                ++presses;
        });
        if (!isThere) notifiers_.erase(path);
        // The callback may stop listening, which destroys this.
        const std::weak_ptr weak(alive_);
        const auto report = onPress_;
        for (; presses > 0 && !weak.expired(); --presses)
            report({.isSynthetic = isVirtual});
    }

    EvdevDevices devices_;
    const std::function<void(Press)> onPress_;
    QFileSystemWatcher watcher_;
    std::map<std::string, std::unique_ptr<QSocketNotifier, DeleteLater>> notifiers_;
    const std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

EvdevSpaceKeys::EvdevSpaceKeys(std::filesystem::path folder, EvdevDevices::Describe describe)
    : describe_(std::move(describe)), devices_(std::move(folder), describe_) {}

bool EvdevSpaceKeys::hasListenAccess() const {
    devices_.prune();
    devices_.refresh();
    return hasKeyboard(devices_);
}

std::unique_ptr<SpaceKeys::Listening> EvdevSpaceKeys::listen(std::function<void(Press)> onPress) {
    auto readers = std::make_unique<Readers>(devices_.folder(), describe_, std::move(onPress));
    if (!readers->hasKeyboard()) return nullptr;
    return readers;
}

}  // namespace marrowby
