// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace marrowby {

/// Allows one running instance per user; a second start opens the first one's window. A lock file
/// decides who is first. The second reaches it over the session bus (D-Bus activatable name
/// app.quenby.unlock), else by signal. Commands of the same user come over the bus. The bus may
/// come and go. Main thread.
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

    struct Reply {
        int status = 0;
        std::string text;
    };
    /// Why no reply came.
    enum class Unreached : std::uint8_t { noBus, notRunning, silent };
    struct Handlers {
        std::function<void()> onReopen;
        /// The reply may be given later, once, while this instance serves.
        std::function<void(const std::vector<std::string>& words,
                           std::function<void(const Reply&)> reply)>
            onCommand;
    };

    explicit SingleInstance(Places places);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Call once. Counts as first when the lock file can't be created. Waits a few seconds at most
    /// for the other instance.
    [[nodiscard]] Claim claim();
    /// Makes the first instance reachable over the bus. Needs Qt's event loop.
    void serve(Handlers handlers);
    /// Asks the running instance; waits a minute at most. Needs a QCoreApplication.
    [[nodiscard]] static std::expected<Reply, Unreached> ask(const std::string& sessionBus,
                                                             const std::vector<std::string>& words);

  private:
    class Service;

    [[nodiscard]] bool reopenOverBus() const;
    [[nodiscard]] bool reopenBySignal() const;

    const Places places_;
    int lock_ = -1;
    std::unique_ptr<Service> service_;
};

}  // namespace marrowby
