// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/LockerIdentity.h"
#include "Platforms/Linux/X11/XcbConnection.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <xcb/res.h>

namespace marrowby {

/// Identifies the programs behind a display's clients, by asking the X server and the kernel on
/// each call. The connection outlives it.
class ClientPrograms {
  public:
    explicit ClientPrograms(const XcbConnection& connection);

    /// The program of the client that created `resource`. `nullopt` when it is gone, runs on
    /// another machine, or the server does not tell.
    [[nodiscard]] std::optional<ClientProgram> behind(std::uint32_t resource) const;
    /// Candidates for a client whose process has ended and left its connection to a child, as on
    /// daemonizing: processes that alone hold a connection to the server without having made one.
    [[nodiscard]] std::vector<ClientProgram> heirs() const;
    /// Whether the process waits in epoll, so that its event loop has begun.
    [[nodiscard]] static bool isInEventLoop(std::int64_t process);
    /// Request and reply for the client's process ID alone.
    [[nodiscard]] static xcb_res_query_client_ids_cookie_t askProcess(
        const XcbConnection& connection, std::uint32_t resource);
    [[nodiscard]] static std::optional<std::int64_t> process(
        const XcbConnection& connection, xcb_res_query_client_ids_cookie_t asked);
    /// Whether the process has read all that the server has sent it.
    [[nodiscard]] bool hasReadAll(std::int64_t process) const;
    /// The resource ID base of each client.
    [[nodiscard]] std::vector<std::uint32_t> clients() const;

  private:
    const XcbConnection& connection_;
    const bool isOffered_;
};

}  // namespace marrowby
