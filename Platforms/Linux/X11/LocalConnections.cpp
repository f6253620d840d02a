// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/LocalConnections.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <libmnl/libmnl.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace marrowby {
namespace {

using Netlink =
    std::unique_ptr<mnl_socket, decltype([](mnl_socket* socket) { mnl_socket_close(socket); })>;

constexpr std::size_t questionSize = 128;
constexpr std::size_t answerSize = 32768;

/// X servers listen on a path and on the abstract name that is the same after a NUL.
std::string_view withoutNul(std::string_view name) {
    if (name.starts_with('\0')) name.remove_prefix(1);
    return name.substr(0, name.find('\0'));
}

std::string serverName(int socket) {
    sockaddr_un address{};
    socklen_t length = sizeof(address);
    if (::getpeername(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0 ||
        address.sun_family != AF_UNIX || length <= offsetof(sockaddr_un, sun_path)) {
        return {};
    }
    return std::string(withoutNul({address.sun_path, length - offsetof(sockaddr_un, sun_path)}));
}

struct Socket {
    std::uint64_t inode = 0;
    std::string name{};
    std::uint64_t peer = 0;
    std::uint64_t unread = 0;
};

int readAttribute(const nlattr* attribute, void* data) {
    auto& socket = *static_cast<Socket*>(data);
    const auto size = mnl_attr_get_payload_len(attribute);
    const void* const value = mnl_attr_get_payload(attribute);
    const auto type = mnl_attr_get_type(attribute);
    if (type == UNIX_DIAG_NAME)
        socket.name = withoutNul({static_cast<const char*>(value), size});
    else if (type == UNIX_DIAG_PEER && size == sizeof(std::uint32_t))
        socket.peer = mnl_attr_get_u32(attribute);
    else if (type == UNIX_DIAG_RQLEN && size == sizeof(unix_diag_rqlen))
        socket.unread = static_cast<const unix_diag_rqlen*>(value)->udiag_rqueue;
    return MNL_CB_OK;
}

int readSocket(const nlmsghdr* message, void* data) {
    auto& socket = static_cast<std::vector<Socket>*>(data)->emplace_back();
    if (mnl_nlmsg_get_payload_len(message) < sizeof(unix_diag_msg)) return MNL_CB_ERROR;
    socket.inode = static_cast<const unix_diag_msg*>(mnl_nlmsg_get_payload(message))->udiag_ino;
    return mnl_attr_parse(message, sizeof(unix_diag_msg), readAttribute, &socket) < 0 ? MNL_CB_ERROR
                                                                                      : MNL_CB_OK;
}

bool askForSockets(const Netlink& netlink) {
    alignas(nlmsghdr) std::array<char, questionSize> buffer{};
    nlmsghdr* const message = mnl_nlmsg_put_header(buffer.data());
    message->nlmsg_type = SOCK_DIAG_BY_FAMILY;
    message->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    auto* const request =
        static_cast<unix_diag_req*>(mnl_nlmsg_put_extra_header(message, sizeof(unix_diag_req)));
    request->sdiag_family = AF_UNIX;
    request->udiag_states = ~0U;
    request->udiag_show = UDIAG_SHOW_NAME | UDIAG_SHOW_PEER | UDIAG_SHOW_RQLEN;
    return mnl_socket_sendto(netlink.get(), message, message->nlmsg_len) >= 0;
}

std::optional<std::uint64_t> number(std::string_view text) {
    std::uint64_t value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || rest != text.data() + text.size()) return std::nullopt;
    return value;
}

/// Parses the target of a link in /proc/PID/fd.
std::optional<std::uint64_t> socketInode(std::string_view target) {
    constexpr std::string_view beginning = "socket:[";
    if (!target.starts_with(beginning) || !target.ends_with(']')) return std::nullopt;
    target.remove_prefix(beginning.size());
    target.remove_suffix(1);
    return number(target);
}

/// Ignores processes and descriptors that end meanwhile.
template <typename Use>
void forEachIn(const std::filesystem::path& folder, const Use& use) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        use(entry->path());
    }
}

/// All Unix sockets; empty when the kernel does not tell.
std::vector<Socket> allSockets() {
    const Netlink netlink(mnl_socket_open2(NETLINK_SOCK_DIAG, SOCK_CLOEXEC));
    if (!netlink || !askForSockets(netlink)) return {};
    std::vector<Socket> sockets;
    alignas(nlmsghdr) std::array<char, answerSize> answer{};
    int more = MNL_CB_OK;
    while (more > MNL_CB_STOP) {
        const auto size = mnl_socket_recvfrom(netlink.get(), answer.data(), answer.size());
        if (size <= 0) return {};
        more =
            mnl_cb_run(answer.data(), static_cast<std::size_t>(size), 0, 0, readSocket, &sockets);
    }
    return more == MNL_CB_STOP ? sockets : std::vector<Socket>();
}

/// Unread bytes of the server's clients, by socket inode.
std::map<std::uint64_t, std::uint64_t> clientsOfServerBehind(int ownSocket) {
    std::map<std::uint64_t, std::uint64_t> clients;
    const std::string server = serverName(ownSocket);
    if (server.empty()) return clients;
    const auto sockets = allSockets();
    for (const auto& socket : sockets) {
        if (socket.peer != 0 && socket.name == server) clients.emplace(socket.peer, 0);
    }
    for (const auto& socket : sockets) {
        if (const auto client = clients.find(socket.inode); client != clients.end())
            client->second = socket.unread;
    }
    return clients;
}

/// The inodes of the process's sockets.
std::set<std::uint64_t> socketsOf(const std::filesystem::path& process) {
    std::set<std::uint64_t> found;
    forEachIn(process / "fd", [&](const std::filesystem::path& file) {
        std::error_code closed;
        if (const auto inode = socketInode(std::filesystem::read_symlink(file, closed).native()))
            found.insert(*inode);
    });
    return found;
}

}  // namespace

std::set<std::int64_t> localconnections::soleHolders(int ownSocket) {
    const auto clients = clientsOfServerBehind(ownSocket);
    std::map<std::uint64_t, std::set<std::int64_t>> holders;
    forEachIn("/proc", [&](const std::filesystem::path& process) {
        const auto id = number(process.filename().native());
        if (!id) return;
        for (const auto inode : socketsOf(process)) {
            if (clients.contains(inode)) holders[inode].insert(static_cast<std::int64_t>(*id));
        }
    });
    std::set<std::int64_t> sole;
    for (const auto& [socket, processes] : holders) {
        if (processes.size() == 1) sole.insert(*processes.begin());
    }
    return sole;
}

std::uint64_t localconnections::unread(int ownSocket, std::int64_t process) {
    const auto clients = clientsOfServerBehind(ownSocket);
    std::uint64_t bytes = 0;
    for (const auto inode : socketsOf(std::filesystem::path("/proc") / std::to_string(process))) {
        if (const auto client = clients.find(inode); client != clients.end())
            bytes += client->second;
    }
    return bytes;
}

}  // namespace marrowby
