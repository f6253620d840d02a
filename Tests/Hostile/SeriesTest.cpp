#include "Rehearsal/ChildProcess.h"
#include "Rehearsal/Scenes/Chance.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

namespace marrowby {
namespace {

/// MARROWBY_KILLS, MARROWBY_SEED and the like.
std::uint64_t wish(const char* name, std::uint64_t otherwise) {
    const char* const text = std::getenv(name);
    return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

/// Lines of all workers, which run at the same time; skips where something is missing.
class Series : public testing::Test {
  protected:
    struct Worker {
        ChildProcess process;
        OwnedFile output;
        OwnedFile errors;
    };

    void work(const std::vector<std::string>& words) {
        std::vector<std::string> command{"sh", "-c", R"(exec "$0" "$@" >&3)",
                                         MARROWBY_HOSTILE_WORKER};
        command.insert(command.end(), words.begin(), words.end());
        auto output = Pipe::create();
        auto errors = Pipe::create();
        ASSERT_TRUE(output && errors);
        auto process = ChildProcess::start({.arguments = command,
                                            .environment = {},
                                            .standardError = errors->writing.get(),
                                            .third = output->writing.get(),
                                            .endSignal = SIGTERM});
        ASSERT_TRUE(process) << process.error();
        workers_.push_back({.process = std::move(*process),
                            .output = std::move(output->reading),
                            .errors = std::move(errors->reading)});
    }

    [[nodiscard]] std::vector<std::string> lines() {
        std::vector<std::string> all;
        for (const auto& worker : workers_) {
            std::istringstream said(readAll(worker.output));
            for (std::string line; std::getline(said, line);)
                all.push_back(line);
            const std::string complaint = readAll(worker.errors);
            if (complaint.contains("is not installed"))
                skipped_ += complaint;
            else if (!complaint.empty())
                ADD_FAILURE() << complaint;
        }
        return all;
    }
    void TearDown() override {
        if (!skipped_.empty() && !HasFailure()) GTEST_SKIP() << "Skipped: " << skipped_;
    }

  private:
    static std::string readAll(const OwnedFile& file) {
        std::string text;
        char buffer[512];
        for (ssize_t count = 0; (count = ::read(file.get(), buffer, sizeof buffer)) > 0;)
            text.append(buffer, static_cast<std::size_t>(count));
        return text;
    }

    std::vector<Worker> workers_;
    std::string skipped_;
};

TEST_F(Series, lockersKilledAtRandomMomentsSpillNotOneCharacter) {
    const auto kills = std::to_string(wish("MARROWBY_KILLS", 48));
    const auto seed = wish("MARROWBY_SEED", std::random_device{}());
    std::cout << "MARROWBY_SEED=" << seed << '\n';
    for (const char* locker : {"i3lock", "xsecurelock", "mate-screensaver", "xscreensaver"})
        ASSERT_NO_FATAL_FAILURE(work({"kills", locker, kills, std::to_string(seed)}));
    int all = 0;
    int whileTyping = 0;
    for (const auto& line : lines()) {
        std::cout << line << '\n';
        std::istringstream words(line);
        std::string task, locker, signal;
        int gap = 0, count = 0, hits = 0, stopped = 0, leaks = 0, characters = 0, keyboards = 0;
        ASSERT_TRUE(words >> task >> locker >> signal >> gap >> count >> hits >> stopped >> leaks >>
                    characters >> keyboards);
        EXPECT_EQ(characters, 0) << line;
        EXPECT_EQ(keyboards, 0) << line;
        all += count;
        whileTyping += hits;
    }
    EXPECT_GE(whileTyping, all / 2);
}

TEST_F(Series, honestTypingIsAcceptedOnEveryLayout) {
    for (const char* locker : {"i3lock", "xsecurelock", "mate-screensaver", "xscreensaver"}) {
        for (const char* layout : {"us", "de", "fr", "ru"})
            ASSERT_NO_FATAL_FAILURE(work({"honest", locker, layout, "3"}));
    }
    for (const auto& line : lines()) {
        std::istringstream words(line);
        std::string task, locker, layout, field;
        int typed = 0, accepted = 0;
        double milliseconds = 0;
        std::size_t characters = 0;
        ASSERT_TRUE(words >> task >> locker >> layout >> field >> typed >> accepted >>
                    milliseconds >> characters);
        EXPECT_EQ(accepted, typed) << line;
        EXPECT_EQ(characters, 0U) << line;
    }
}

}  // namespace
}  // namespace marrowby
