#pragma once

#include <cstdint>
#include <set>

namespace marrowby {

/// Connections through local sockets to the server at the other end of one's own, as the kernel
/// tells them. Descriptors of other users' processes may not be read.
namespace localconnections {

/// The processes that hold a connection which no other process holds.
[[nodiscard]] std::set<std::int64_t> soleHolders(int ownSocket);

/// What the server has sent `process` and it has not read yet, bytes; 0 where the kernel doesn't
/// tell.
[[nodiscard]] std::uint64_t unread(int ownSocket, std::int64_t process);

}  // namespace localconnections

}  // namespace marrowby
