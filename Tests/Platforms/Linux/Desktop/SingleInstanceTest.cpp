// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/SingleInstance.h"
#include "Simulation/Desktop/ChildProcess.h"
#include "Tests/Platforms/Linux/MockServices.h"
#include "Tests/Platforms/Linux/QtLoop.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"

#include <filesystem>
#include <future>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace marrowby {
namespace {

using Claim = SingleInstance::Claim;

/// Another process that holds the lock and writes a byte for every reopen signal.
class Holder {
  public:
    explicit Holder(const std::filesystem::path& lockFile) {
        int ends[2]{};
        if (::pipe(ends) != 0) return;
        child_ = ::fork();
        if (child_ == 0) hold(lockFile, ends[1]);
        ::close(ends[1]);
        output_ = ends[0];
        (void)awaitSignal();
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
        ::close(output_);
    }
    [[nodiscard]] bool awaitSignal() const {
        char letter = 0;
        return ::read(output_, &letter, 1) == 1;
    }

  private:
    [[noreturn]] static void hold(const std::filesystem::path& lockFile, int output) {
        sigset_t reopen;
        sigemptyset(&reopen);
        sigaddset(&reopen, SIGUSR1);
        ::sigprocmask(SIG_BLOCK, &reopen, nullptr);
        SingleInstance instance({.lockFile = lockFile, .sessionBus = {}});
        if (instance.claim() != Claim::first) ::_exit(1);
        for (int signal = 0; ::write(output, "x", 1) == 1;)
            ::sigwait(&reopen, &signal);
        ::_exit(0);
    }

    pid_t child_ = -1;
    int output_ = -1;
};

TEST(SingleInstanceTest, theSecondInstanceHasTheFirstOpenItsWindow) {
    const TemporaryFolder folder;
    const auto lockFile = folder.path() / "lock";
    auto holder = std::make_unique<Holder>(lockFile);
    QtLoop loop;
    const auto bus = startBusForMocks();
    if (!bus) GTEST_SKIP() << noPrivateBus;
    const auto claim = [&](const std::string& address) {
        auto claimed = std::async(std::launch::async, [lockFile, address] {
            return SingleInstance({.lockFile = lockFile, .sessionBus = address}).claim();
        });
        EXPECT_TRUE(loop.runUntil([&] {
            return claimed.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        }));
        return claimed.get();
    };

    // By signal: without a bus, and on one where nobody owns the name.
    EXPECT_EQ(claim({}), Claim::handedOver);
    EXPECT_TRUE(holder->awaitSignal());
    EXPECT_EQ(claim(bus->address()), Claim::handedOver);
    EXPECT_TRUE(holder->awaitSignal());

    int reopened = 0;
    SingleInstance first({.lockFile = folder.path() / "another", .sessionBus = bus->address()});
    EXPECT_EQ(first.claim(), Claim::first);
    first.serve(
        {.onReopen = [&] { ++reopened; },
         .onCommand = [](const auto& words,
                         const auto& reply) { reply({.status = 7, .text = words.back()}); }});
    const auto isServed = [&] {
        return claim(bus->address()) == Claim::handedOver && reopened > 0;
    };
    EXPECT_TRUE(loop.runUntil(isServed));

    const auto ask = [&](const std::string& address) {
        auto asked = std::async(std::launch::async,
                                [address] { return SingleInstance::ask(address, {"one", "two"}); });
        EXPECT_TRUE(loop.runUntil(
            [&] { return asked.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }));
        return asked.get();
    };
    const auto reply = ask(bus->address());
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->status, 7);
    EXPECT_EQ(reply->text, "two");
    EXPECT_EQ(ask({}).error(), SingleInstance::Unreached::noBus);
    if (::getuid() == 0) {
        // This bus lets everybody in.
        const std::filesystem::path socket = bus->address().substr(sizeof "unix:path=" - 1);
        std::filesystem::permissions(socket.parent_path(), std::filesystem::perms{0755});
        auto answer = Pipe::create();
        ASSERT_TRUE(answer) << answer.error();
        const auto stranger =
            ChildProcess::start({.arguments = {"runuser", "-u", "nobody", "--", "dbus-send",
                                               "--print-reply", "--bus=" + bus->address(),
                                               "--dest=app.quenby.unlock", "/app/quenby/unlock",
                                               "app.quenby.unlock.Command", "array:string:status"},
                                 .environment = {},
                                 .standardError = answer->writing.get(),
                                 .endSignal = SIGTERM});
        ASSERT_TRUE(stranger) << stranger.error();
        answer->writing.close();
        EXPECT_TRUE(loop.runUntil([&] { return !stranger->isRunning(); }));
        EXPECT_THAT(answer->readLine(TimeInterval{1}), testing::HasSubstr("AccessDenied"));
    }

    // The bus restarts.
    bus->kill();
    ASSERT_TRUE(bus->startDaemon());
    reopened = 0;
    EXPECT_TRUE(loop.runUntil(isServed));

    holder.reset();
    EXPECT_EQ(claim(bus->address()), Claim::first);
    bus->kill();
    EXPECT_EQ(ask(bus->address()).error(), SingleInstance::Unreached::noBus);
}

}  // namespace
}  // namespace marrowby
