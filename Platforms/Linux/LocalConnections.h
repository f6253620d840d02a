#pragma once

#include <cstdint>
#include <set>

namespace marrowby {

/// Connections through local sockets, by the inodes of their sockets, as the kernel tells them.
namespace localconnections {

/// Those of the clients that are connected to the same server as `socket`. Empty where the kernel
/// doesn't tell.
[[nodiscard]] std::set<std::uint64_t> ofServerBehind(int socket);

/// The processes that hold one of `sockets` alone, as far as their descriptors may be read: those
/// of other users may not.
[[nodiscard]] std::set<std::int64_t> soleHolders(const std::set<std::uint64_t>& sockets);

}  // namespace localconnections

}  // namespace marrowby
