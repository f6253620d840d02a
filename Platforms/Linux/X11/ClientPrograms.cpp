// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/ClientPrograms.h"

#include "Platforms/Linux/X11/LocalConnections.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include <sys/stat.h>

namespace marrowby {
namespace {

using Path = std::filesystem::path;

std::string linkTarget(const Path& link) {
    std::error_code error;
    const Path target = std::filesystem::read_symlink(link, error);
    return error ? std::string() : target.string();
}

bool isRootsAlone(const Path& path) {
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0 && status.st_uid == 0 &&
           (S_ISLNK(status.st_mode) || (status.st_mode & (S_IWGRP | S_IWOTH)) == 0);
}

bool isRootsAloneToTheTop(Path path) {
    if (!path.is_absolute()) return false;
    while (isRootsAlone(path)) {
        if (path == path.root_path()) return true;
        path = path.parent_path();
    }
    return false;
}

bool isSameFile(const Path& one, const Path& other) {
    struct stat first{};
    struct stat second{};
    return ::stat(one.c_str(), &first) == 0 && ::stat(other.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

/// Name and parent from /proc/PID/stat: the second field, in brackets, which may contain any
/// characters, and the fourth.
ClientProgram standingOf(std::int64_t process, const Path& folder) {
    ClientProgram program{.process = process};
    std::ifstream file(folder / "stat");
    std::string line;
    program.hasEnded = !std::getline(file, line, '\0');
    const std::size_t begin = line.find('(');
    const std::size_t end = line.rfind(") ");
    if (begin == std::string::npos || end == std::string::npos || line.size() < end + 5)
        return program;
    program.name = line.substr(begin + 1, end - begin - 1);
    std::from_chars(line.data() + end + 4, line.data() + line.size(), program.parent);
    return program;
}

ClientProgram programOf(std::int64_t process) {
    const Path folder = Path("/proc") / std::to_string(process);
    ClientProgram program = standingOf(process, folder);
    program.path = linkTarget(folder / "exe");
    if (program.path.empty()) return program;
    const std::string mounts = linkTarget(folder / "ns/mnt");
    program.isInOurFiles = !mounts.empty() && mounts == linkTarget("/proc/self/ns/mnt") &&
                           isSameFile(folder / "exe", program.path);
    program.isRootsAlone = isRootsAloneToTheTop(program.path);
    return program;
}

bool tellsProcesses(const XcbConnection& connection) {
    const auto* extension = xcb_get_extension_data(connection.get(), &xcb_res_id);
    if (!extension || !extension->present) return false;
    const auto version = connection.reply<xcb_res_query_version_reply>(
        xcb_res_query_version(connection.get(), 1, 2));
    return version && (version->server_major > 1 || version->server_minor >= 2);
}

}  // namespace

ClientPrograms::ClientPrograms(const XcbConnection& connection)
    : connection_(connection), isOffered_(tellsProcesses(connection)) {}

std::optional<ClientProgram> ClientPrograms::behind(std::uint32_t resource) const {
    if (!isOffered_) return std::nullopt;
    const auto found = process(connection_, askProcess(connection_, resource));
    if (!found) return std::nullopt;
    return programOf(*found);
}

xcb_res_query_client_ids_cookie_t ClientPrograms::askProcess(const XcbConnection& connection,
                                                             std::uint32_t resource) {
    const xcb_res_client_id_spec_t spec{.client = resource,
                                        .mask = XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    return xcb_res_query_client_ids(connection.get(), 1, &spec);
}

std::optional<std::int64_t> ClientPrograms::process(const XcbConnection& connection,
                                                    xcb_res_query_client_ids_cookie_t asked) {
    const auto answer = connection.reply<xcb_res_query_client_ids_reply>(asked);
    if (!answer) return std::nullopt;
    const auto ids = xcb_res_query_client_ids_ids_iterator(answer.get());
    if (ids.rem != 1 || xcb_res_client_id_value_value_length(ids.data) != 1) return std::nullopt;
    return *xcb_res_client_id_value_value(ids.data);
}

std::vector<ClientProgram> ClientPrograms::heirs() const {
    auto holders = localconnections::soleHolders(connection_.fd());
    for (const auto client : clients()) {
        if (const auto connected = process(connection_, askProcess(connection_, client)))
            holders.erase(*connected);
    }
    std::vector<ClientProgram> found;
    found.reserve(holders.size());
    for (const auto holder : holders)
        found.push_back(programOf(holder));
    return found;
}

bool ClientPrograms::isInEventLoop(std::int64_t process) {
    bool isWaiting = false;
    std::error_code error;
    const Path folder = Path("/proc") / std::to_string(process) / "fdinfo";
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::ifstream file(entry->path());
        for (std::string line; std::getline(file, line);)
            isWaiting |= line.starts_with("tfd:");
    }
    return isWaiting;
}

bool ClientPrograms::hasReadAll(std::int64_t process) const {
    return localconnections::unread(connection_.fd(), process) == 0;
}

std::vector<std::uint32_t> ClientPrograms::clients() const {
    std::vector<std::uint32_t> found;
    if (!isOffered_) return found;
    const auto answer =
        connection_.reply<xcb_res_query_clients_reply>(xcb_res_query_clients(connection_.get()));
    if (!answer) return found;
    for (auto each = xcb_res_query_clients_clients_iterator(answer.get()); each.rem > 0;
         xcb_res_client_next(&each))
        found.push_back(each.data->resource_base);
    return found;
}

}  // namespace marrowby
