// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/LocalConnections.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"

#include <cstring>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace marrowby {
namespace {

using localconnections::soleHolders;
using localconnections::unread;
using testing::Contains;
using testing::Not;

sockaddr_un at(const std::string& path) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

TEST(LocalConnections, findsSoleHoldersAndUnreadBytes) {
    const TemporaryFolder folder;
    const auto address = at((folder.path() / "socket").string());
    const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
    const int server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int client = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(::bind(server, generic, sizeof address), 0);
    ASSERT_EQ(::listen(server, 1), 0);
    ASSERT_EQ(::connect(client, generic, sizeof address), 0);
    const int serving = ::accept(server, nullptr, nullptr);
    ASSERT_GE(serving, 0);

    EXPECT_EQ(unread(client, ::getpid()), 0U);
    ASSERT_EQ(::write(serving, "five!", 5), 5);
    EXPECT_GT(unread(client, ::getpid()), 0U);
    char read[8];
    ASSERT_EQ(::read(client, read, sizeof read), 5);
    EXPECT_EQ(unread(client, ::getpid()), 0U);

    EXPECT_THAT(soleHolders(client), Contains(::getpid()));
    const pid_t child = ::fork();
    if (child == 0) {
        ::pause();
        ::_exit(0);
    }
    EXPECT_THAT(soleHolders(client), Not(Contains(::getpid()))) << "its child holds it as well";
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_THAT(soleHolders(client), Contains(::getpid()));
    for (const int socket : {serving, client, server})
        ::close(socket);
    EXPECT_TRUE(soleHolders(client).empty()) << "closed";
}

}  // namespace
}  // namespace marrowby
