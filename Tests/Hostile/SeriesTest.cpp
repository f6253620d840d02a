// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/ChildProcess.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

namespace marrowby {
namespace {

/// The number in an environment variable: MARROWBY_LOCKER_KILLS or MARROWBY_SEED.
std::uint64_t environmentNumber(const char* name, std::uint64_t fallback) {
    const char* const text = std::getenv(name);
    return text != nullptr ? std::strtoull(text, nullptr, 10) : fallback;
}

/// Output lines of workers for one locker. Run one after the other: lockers that start and end at
/// the same time delete each other's copies of the PAM wrapper. Skips if the locker is missing.
class Series : public testing::TestWithParam<const char*> {
  protected:
    [[nodiscard]] std::vector<std::string> linesOf(const std::vector<std::string>& words) {
        std::vector<std::string> command{"sh", "-c", R"(exec "$0" "$@" >&3)",
                                         MARROWBY_HOSTILE_WORKER};
        command.insert(command.end(), words.begin(), words.end());
        auto output = Pipe::create();
        auto errors = Pipe::create();
        if (!output || !errors) return {};
        const auto process = ChildProcess::start({.arguments = command,
                                                  .environment = {},
                                                  .standardError = errors->writing.get(),
                                                  .third = output->writing.get(),
                                                  .endSignal = SIGTERM});
        output->writing.close();
        errors->writing.close();
        std::istringstream said(readAll(output->reading));
        std::vector<std::string> lines;
        for (std::string line; std::getline(said, line);)
            lines.push_back(line);
        const std::string error = readAll(errors->reading);
        if (error.contains("is not installed"))
            missing_ = error;
        else if (!error.empty())
            ADD_FAILURE() << error;
        return lines;
    }
    void TearDown() override {
        if (!missing_.empty()) GTEST_SKIP() << "Skipped: " << missing_;
    }

  private:
    static std::string readAll(const OwnedFile& file) {
        std::string text;
        std::array<char, 512> buffer{};
        for (ssize_t count = 0; (count = ::read(file.get(), buffer.data(), buffer.size())) > 0;)
            text.append(buffer.data(), static_cast<std::size_t>(count));
        return text;
    }

    std::string missing_;
};

TEST_P(Series, leaksNoCharacterWhenKilledAtRandomMoments) {
    const auto kills = environmentNumber("MARROWBY_LOCKER_KILLS", 52);
    const auto seed = environmentNumber("MARROWBY_SEED", std::random_device{}());
    std::cout << "MARROWBY_SEED=" << seed << '\n';
    int all = 0;
    int whileTyping = 0;
    for (const auto& line :
         linesOf({"kills", GetParam(), std::to_string(kills), std::to_string(seed)})) {
        std::cout << line << '\n';
        std::istringstream words(line);
        std::string task, name, signal;
        int gap = 0, count = 0, hits = 0, stopped = 0, leaks = 0, characters = 0, keyboards = 0;
        ASSERT_TRUE(words >> task >> name >> signal >> gap >> count >> hits >> stopped >> leaks >>
                    characters >> keyboards);
        EXPECT_EQ(characters, 0) << line;
        EXPECT_EQ(keyboards, 0) << line;
        all += count;
        whileTyping += hits;
    }
    EXPECT_GE(whileTyping, all / 2);
}

TEST_P(Series, acceptsTypingOnEveryLayout) {
    for (const char* layout : {"us", "de", "fr", "ru"}) {
        for (const auto& line : linesOf({"honest", GetParam(), layout, "3"})) {
            std::istringstream words(line);
            std::string task, name, where, field;
            int typed = 0, accepted = 0;
            double milliseconds = 0;
            std::size_t characters = 0;
            ASSERT_TRUE(words >> task >> name >> where >> field >> typed >> accepted >>
                        milliseconds >> characters);
            EXPECT_EQ(accepted, typed) << line;
            EXPECT_EQ(characters, 0U) << line;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Lockers, Series,
                         testing::Values("i3lock", "xsecurelock", "mate-screensaver",
                                         "xscreensaver"),
                         [](const auto& test) {
                             std::string name = test.param;
                             std::erase(name, '-');
                             return name;
                         });

}  // namespace
}  // namespace marrowby
