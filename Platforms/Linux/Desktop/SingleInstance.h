#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Keeps a user to one running application, and lets a second start open the first one’s window.
/// A locked file says who is the first; the session bus (the name app.quenby.unlock, as an
/// application that the desktop may activate) and, where there is none, a signal reach it. The bus
/// may come and go. Main thread.
class SingleInstance {
  public:
    static constexpr const char* busName = "app.quenby.unlock";
    static constexpr const char* objectPath = "/app/quenby/unlock";

    struct Places {
        std::filesystem::path lockFile;
        /// Empty where there is no session bus.
        std::string sessionBus;
    };
    enum class Claim : std::uint8_t {
        first,
        /// Another one runs, and has been asked to open its window.
        handedOver,
        /// Another one runs and could not be reached.
        unreachable,
    };

    explicit SingleInstance(Places places);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Once. Where the file can’t be made, this is the first as far as anybody can tell. Waits for
    /// the other one a few seconds at most.
    [[nodiscard]] Claim claim();
    /// Lets itself be reached over the bus; for the first one, under Qt’s event loop.
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
