// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/WindowServer.h"

#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace marrowby {

/// A window server that records its calls. The pointer is where it was moved to last.
class FakeWindowServer final : public WindowServer {
  public:
    bool hasSpaces = true;
    bool hasPanels = true;
    std::int64_t panelsMade = 0;
    std::vector<std::string> calls;
    std::optional<ScreenGeometry> screen =
        ScreenGeometry{.frame = {.x = 0, .y = 0, .width = 1440, .height = 900}, .notch = {}};

    ActiveDisplays displays{.hasBuiltIn = true};

    /// Notifies the watches.
    void movePointer(const Point& place) {
        pointer_ = place;
        // Copied: the callback may end the watch.
        const auto watcher = watcher_;
        if (watcher) watcher(place);
    }
    [[nodiscard]] bool isPointerWatched() const { return watcher_ != nullptr; }

    [[nodiscard]] std::optional<ScreenGeometry> mainScreen() override { return screen; }
    [[nodiscard]] std::unique_ptr<PointerWatch> watchPointer(
        std::function<void(const Point&)> onPlace) override {
        onPlace(pointer_);
        watcher_ = std::move(onPlace);
        return std::make_unique<Watch>(watcher_);
    }
    [[nodiscard]] std::unique_ptr<LockScreenPanel> makePanel(
        const Rect& /*frame*/, std::shared_ptr<PanelContent> /*content*/) override {
        if (!hasPanels) return nullptr;
        return std::make_unique<FakePanel>(*this, ++panelsMade);
    }
    [[nodiscard]] ActiveDisplays activeDisplays() override { return displays; }
    [[nodiscard]] bool hasLockScreenSpaces() override { return hasSpaces; }
    [[nodiscard]] std::unique_ptr<LockScreenSpace> makeLockScreenSpace() override {
        if (!hasSpaces) return nullptr;
        note("space");
        return std::make_unique<FakeSpace>(*this);
    }

  private:
    template <typename... Parts>
    void note(const Parts&... parts) {
        std::ostringstream text;
        const char* separator = "";
        ((text << separator << parts, separator = " "), ...);
        calls.push_back(text.str());
    }

    class Watch final : public PointerWatch {
      public:
        explicit Watch(std::function<void(const Point&)>& watcher) : watcher_(watcher) {}
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;
        ~Watch() override { watcher_ = nullptr; }

      private:
        std::function<void(const Point&)>& watcher_;
    };

    class FakePanel final : public LockScreenPanel {
      public:
        FakePanel(FakeWindowServer& server, std::int64_t number)
            : server_(server), number_(number) {}
        [[nodiscard]] std::int64_t windowNumber() const override { return number_; }
        void setFrame(const Rect& frame) override { frame_ = frame; }
        void orderFront() override { server_.note(number_, "front at", frame_.x, frame_.y); }
        void orderOut() override { server_.note(number_, "out"); }

      private:
        FakeWindowServer& server_;
        std::int64_t number_;
        Rect frame_;
    };

    class FakeSpace final : public LockScreenSpace {
      public:
        explicit FakeSpace(FakeWindowServer& server) : server_(server) {}
        void add(const LockScreenPanel& panel) override {
            server_.note("add", panel.windowNumber());
        }
        void remove(const LockScreenPanel& panel) override {
            server_.note("remove", panel.windowNumber());
        }

      private:
        FakeWindowServer& server_;
    };

    Point pointer_{.x = -1, .y = -1};
    std::function<void(const Point&)> watcher_;
};

}  // namespace marrowby
