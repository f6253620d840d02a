#pragma once

#include "Platforms/Linux/X11/LockerIdentity.h"
#include "Platforms/Linux/X11/XcbConnection.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <xcb/res.h>

namespace marrowby {

/// Tells which programs are behind the clients of a display. Asks the server and the kernel anew
/// each time. For the adapters of this folder only; the connection outlives it.
class ClientPrograms {
  public:
    explicit ClientPrograms(const XcbConnection& connection);

    /// Of the client that made `resource`, a window or any other. Nothing where it is gone, runs on
    /// another machine, or the server does not tell.
    [[nodiscard]] std::optional<ClientProgram> behind(std::uint32_t resource) const;
    /// The server knows a client by the process that connected. Where that ended and left the
    /// connection to a child, as programs do that go into the background, it is one of these:
    /// processes that alone hold a connection to the server and have made none.
    [[nodiscard]] std::vector<ClientProgram> heirs() const;
    /// Whether a process waits for events through epoll: its event loop has begun.
    [[nodiscard]] static bool isInEventLoop(std::int64_t process);
    /// The process alone, asked for and answered.
    [[nodiscard]] static xcb_res_query_client_ids_cookie_t askProcess(
        const XcbConnection& connection, std::uint32_t resource);
    [[nodiscard]] static std::optional<std::int64_t> process(
        const XcbConnection& connection, xcb_res_query_client_ids_cookie_t asked);
    /// Whether a process has taken in all that the server has sent it.
    [[nodiscard]] bool hasReadAll(std::int64_t process) const;
    /// The first ID of each client's resources.
    [[nodiscard]] std::vector<std::uint32_t> clients() const;

  private:
    const XcbConnection& connection_;
    const bool isOffered_;
};

}  // namespace marrowby
