// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/ClientPrograms.h"

#include <gtest/gtest.h>
#include <sys/epoll.h>
#include <unistd.h>

namespace marrowby {
namespace {

TEST(ClientPrograms, distinguishesARunningEventLoopFromAPreparedOne) {
    const int queue = ::epoll_create1(EPOLL_CLOEXEC);
    ASSERT_GE(queue, 0);
    EXPECT_FALSE(ClientPrograms::isInEventLoop(::getpid()));
    epoll_event event{.events = EPOLLIN, .data = {.fd = queue}};
    const int inner = ::epoll_create1(EPOLL_CLOEXEC);
    ASSERT_EQ(::epoll_ctl(queue, EPOLL_CTL_ADD, inner, &event), 0);
    EXPECT_TRUE(ClientPrograms::isInEventLoop(::getpid()));
    ::close(queue);
    ::close(inner);
    EXPECT_FALSE(ClientPrograms::isInEventLoop(::getpid()));
}

}  // namespace
}  // namespace marrowby
