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

/// A window server that records its calls. Its connection is 7, its space 2^32 + 9. The pointer is
/// where it was moved to last.
class FakeWindowServer final : public WindowServer {
  public:
    bool hasSkyLight = true;
    bool hasPanels = true;
    std::vector<PanelConfiguration> configurations;
    std::vector<std::string> calls;
    std::optional<ScreenGeometry> screen =
        ScreenGeometry{.frame = {.x = 0, .y = 0, .width = 1440, .height = 900}, .notch = {}};

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
    [[nodiscard]] std::int64_t shieldingWindowLevel() override { return 2'147'483'630; }
    [[nodiscard]] std::unique_ptr<LockScreenPanel> makePanel(
        const PanelConfiguration& configuration, const Rect& /*frame*/,
        std::shared_ptr<PanelContent> /*content*/) override {
        if (!hasPanels) return nullptr;
        configurations.push_back(configuration);
        return std::make_unique<FakePanel>(*this, std::int64_t(configurations.size()));
    }
    [[nodiscard]] std::shared_ptr<SkyLightFunctions> loadSkyLight() override {
        note("load");
        return hasSkyLight ? std::make_shared<Functions>(*this) : nullptr;
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

    class Functions final : public SkyLightFunctions {
      public:
        explicit Functions(FakeWindowServer& server) : server_(server) {}
        [[nodiscard]] Connection mainConnectionID() override {
            server_.note("connection", 7);
            return 7;
        }
        [[nodiscard]] Space spaceCreate(Connection connection, std::int32_t one,
                                        std::int32_t zero) override {
            server_.note("create", connection, one, zero, "= 4294967305");
            return 4'294'967'305;
        }
        void spaceSetAbsoluteLevel(Connection connection, Space space,
                                   std::int32_t level) override {
            server_.note("level", connection, space, level);
        }
        void showSpaces(Connection connection, std::span<const Space> spaces) override {
            server_.note("show", connection, spaces.front());
        }
        void spaceAddWindowsAndRemoveFromSpaces(Connection connection, Space space,
                                                std::span<const std::int64_t> windows,
                                                std::int32_t options) override {
            server_.note("add", connection, space, windows.front(), options);
        }
        void removeWindowsFromSpaces(Connection connection, std::span<const std::int64_t> windows,
                                     std::span<const Space> spaces) override {
            server_.note("remove", connection, windows.front(), spaces.front());
        }

      private:
        FakeWindowServer& server_;
    };

    Point pointer_{.x = -1, .y = -1};
    std::function<void(const Point&)> watcher_;
};

}  // namespace marrowby
