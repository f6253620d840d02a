#include "Platforms/Linux/EvdevKeyboardDevices.h"

#include <QFileSystemWatcher>
#include <QSocketNotifier>
#include <QString>
#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace marrowby {
namespace {

constexpr KeyboardDevices::Match keyboards{.usagePage = 1, .usage = 6};
constexpr std::uint32_t keyPage = 7;
constexpr std::uint32_t spacebar = 44;

bool hasKeyboard(const EvdevDevices& devices) {
    return std::ranges::any_of(
        devices.all(), [](const auto& entry) { return entry.second.description.hasSpaceKey; });
}

}  // namespace

class EvdevKeyboardDevices::SpaceKeys final : public Listening {
  public:
    SpaceKeys(const std::filesystem::path& folder, const EvdevDevices::Describe& describe,
              std::function<void(const InputValue&)> onValue)
        : devices_(folder, describe), onValue_(std::move(onValue)) {
        watcher_.addPath(QString::fromStdString(folder.string()));
        QObject::connect(&watcher_, &QFileSystemWatcher::directoryChanged, &watcher_,
                         [this] { refresh(); });
        refresh();
    }

    [[nodiscard]] bool hasKeyboard() const { return marrowby::hasKeyboard(devices_); }

  private:
    struct DeleteLater {
        // It may be what is calling.
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
        // Its receiver may stop listening, which ends this.
        std::vector<InputValue> values;
        const bool isThere = devices_.drain(path, [&](const input_event& event) {
            if (event.type != EV_KEY || event.code != KEY_SPACE || event.value > 1) return;
            values.push_back({.usagePage = keyPage,
                              .usage = spacebar,
                              .value = event.value,
                              .isSynthetic = isVirtual});
        });
        if (!isThere) notifiers_.erase(path);
        const std::weak_ptr alive(life_);
        const auto report = onValue_;
        for (const auto& value : values) {
            if (alive.expired()) return;
            report(value);
        }
    }

    EvdevDevices devices_;
    const std::function<void(const InputValue&)> onValue_;
    QFileSystemWatcher watcher_;
    std::map<std::string, std::unique_ptr<QSocketNotifier, DeleteLater>> notifiers_;
    const std::shared_ptr<int> life_ = std::make_shared<int>();
};

EvdevKeyboardDevices::EvdevKeyboardDevices(std::filesystem::path folder,
                                           EvdevDevices::Describe describe)
    : describe_(std::move(describe)), devices_(std::move(folder), describe_) {}

bool EvdevKeyboardDevices::hasListenAccess() const {
    devices_.prune();
    devices_.refresh();
    return hasKeyboard(devices_);
}

std::unique_ptr<KeyboardDevices::Listening> EvdevKeyboardDevices::open(
    Match match, std::function<void(const InputValue&)> onValue) {
    if (match != keyboards) return nullptr;
    auto listening = std::make_unique<SpaceKeys>(devices_.folder(), describe_, std::move(onValue));
    if (!listening->hasKeyboard()) return nullptr;
    return listening;
}

}  // namespace marrowby
