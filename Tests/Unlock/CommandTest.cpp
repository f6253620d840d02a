// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Command.h"

#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Verb = Command::Verb;

TEST(CommandTest, takesKnownWordsOnly) {
    const struct {
        std::vector<std::string> words;
        std::expected<Command, std::string> command;
    } cases[] = {
        {{"status"}, Command{Verb::status}},
        {{"pause"}, Command{Verb::pause}},
        {{"pause", "10080"}, Command{Verb::pause, 10080}},
        {{"pause", "10081"},
         std::unexpected("A pause lasts from 1 to 10080 minutes, not “10081”.")},
        {{"pause", "-1"}, std::unexpected("A pause lasts from 1 to 10080 minutes, not “-1”.")},
        {{"pause", "5m"}, std::unexpected("A pause lasts from 1 to 10080 minutes, not “5m”.")},
        {{"pause", "99999999999999999999"},
         std::unexpected("A pause lasts from 1 to 10080 minutes, not “99999999999999999999”.")},
        {{"pause", "5", "6"},
         std::unexpected("Marrowby Unlock knows no “6”; --help says what it knows.")},
        {{"quit", "now"},
         std::unexpected("Marrowby Unlock knows no “now”; --help says what it knows.")},
        {{"Status"},
         std::unexpected("Marrowby Unlock knows no “Status”; --help says what it knows.")},
        {{}, std::unexpected("Marrowby Unlock knows no “”; --help says what it knows.")},
    };
    for (const auto& [words, command] : cases)
        EXPECT_EQ(Command::parse(words), command);
}

}  // namespace
}  // namespace marrowby
