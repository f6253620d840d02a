// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <set>

namespace marrowby {

/// The Unix-socket clients of the server that `ownSocket` is connected to, from sock_diag and
/// /proc. Cannot read the descriptors of other users' processes.
namespace localconnections {

/// Processes that hold a connection which no other process shares.
[[nodiscard]] std::set<std::int64_t> soleHolders(int ownSocket);

/// Bytes sent to `process` that it has not read; 0 when the kernel does not tell.
[[nodiscard]] std::uint64_t unread(int ownSocket, std::int64_t process);

}  // namespace localconnections

}  // namespace marrowby
