// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/JournaldLog.h"
#include "Platforms/Linux/Desktop/LinuxSystemSettings.h"
#include "Platforms/Posix/PosixFileSystem.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <string_view>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace marrowby {
namespace {

TEST(LinuxSystemSettingsTest, opensAtLoginByAnAutostartEntry) {
    const TemporaryFolder folder;
    PosixFileSystem files;
    LinuxSystemSettings settings(files, folder.path() / "config", R"(/opt/a "$b" 100%/c\d)");
    const auto entry = folder.path() / "config/autostart/app.quenby.unlock.desktop";
    EXPECT_FALSE(settings.opensAtLogin());
    EXPECT_TRUE(settings.setOpensAtLogin(false));

    ASSERT_TRUE(settings.setOpensAtLogin(true));
    EXPECT_TRUE(settings.opensAtLogin());
    std::ifstream file(entry);
    const std::string content(std::istreambuf_iterator<char>(file), {});
    EXPECT_TRUE(content.starts_with("[Desktop Entry]\nType=Application\n"));
    // Escaped for the quotes, and again for the file.
    EXPECT_TRUE(content.contains(R"(
Exec="/opt/a \\"\\$b\\" 100%%/c\\\\d" --at-login
)")) << content;

    for (const char* off : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n"}) {
        std::ofstream(entry, std::ios::app) << off;
        EXPECT_FALSE(settings.opensAtLogin()) << off;
        EXPECT_TRUE(settings.setOpensAtLogin(true));
        EXPECT_TRUE(settings.opensAtLogin());
    }
    EXPECT_TRUE(settings.setOpensAtLogin(false));
    EXPECT_FALSE(std::filesystem::exists(entry));

    // A file is in the folder's place.
    std::filesystem::remove(folder.path() / "config/autostart");
    std::ofstream(folder.path() / "config/autostart") << "a file";
    EXPECT_FALSE(settings.setOpensAtLogin(true));
    EXPECT_FALSE(settings.opensAtLogin());
}

TEST(JournaldLogTest, writesToTheJournalOrElseToStandardError) {
    const TemporaryFolder folder;
    const std::string path = (folder.path() / "socket").string();
    const JournaldLog log("marrowby-test", path);
    testing::internal::CaptureStderr();
    log.write("nobody listens");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "marrowby-test: nobody listens\n");

    const int journal = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::ranges::copy(path, std::begin(address.sun_path));
    ASSERT_EQ(::bind(journal, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    log.write({.message = "two\nPRIORITY=0", .event = "typed", .subject = "a\nb"});
    std::array<char, 256> buffer{};
    const ssize_t size = ::recv(journal, buffer.data(), buffer.size(), 0);
    ASSERT_GT(size, 0);
    EXPECT_EQ(std::string_view(buffer.data(), static_cast<std::size_t>(size)),
              "PRIORITY=6\nSYSLOG_IDENTIFIER=marrowby-test\nMESSAGE=two PRIORITY=0\n"
              "MARROWBY_EVENT=typed\nMARROWBY_SUBJECT=a b\n");
    ::close(journal);
}

}  // namespace
}  // namespace marrowby
