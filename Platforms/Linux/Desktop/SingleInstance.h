#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Allows one running instance per user; a second start opens the first one's window. A lock file
/// decides who is first. The second reaches it over the session bus (D-Bus activatable name
/// app.quenby.unlock), else by signal. The bus may come and go. Main thread.
class SingleInstance {
  public:
    static constexpr const char* busName = "app.quenby.unlock";
    static constexpr const char* objectPath = "/app/quenby/unlock";

    struct Places {
        std::filesystem::path lockFile;
        /// Empty when there is no session bus.
        std::string sessionBus;
    };
    enum class Claim : std::uint8_t {
        first,
        handedOver,
        unreachable,
    };

    explicit SingleInstance(Places places);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Call once. Counts as first when the lock file can't be created. Waits a few seconds at most
    /// for the other instance.
    [[nodiscard]] Claim claim();
    /// Makes the first instance reachable over the bus. Needs Qt's event loop.
    void serve(std::function<void()> onReopen);

  private:
    class Service;

    [[nodiscard]] bool reopenOverBus() const;
    [[nodiscard]] bool reopenBySignal() const;

    const Places places_;
    int lock_ = -1;
    std::unique_ptr<Service> service_;
};

}  // namespace marrowby
