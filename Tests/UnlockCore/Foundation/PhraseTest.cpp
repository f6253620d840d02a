// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/PseudoCatalogue.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr auto computer = Phrase("computer");

TEST(Phrase, fillsPlaceholders) {
    const std::string name = "{computer}";
    EXPECT_EQ(translated("Remove “{name}” from this {computer}?",
                         {{"name", name}, {"computer", computer}}),
              "Remove “{computer}” from this computer?");
    EXPECT_EQ(translated("{unknown} and {open", {{"name", name}}), "{unknown} and {open");
    EXPECT_EQ(translated(Phrase(), {{"name", name}}), "");
    EXPECT_EQ(counted("{count} second", "{count} seconds", 1), "1 second");
    EXPECT_EQ(counted("{count} second in {place}", "{count} seconds in {place}", 0,
                      {{"place", computer}}),
              "0 seconds in computer");
}

TEST(Phrase, isTranslatedByTheCatalogueInUse) {
    {
        const PseudoCatalogue pseudo;
        EXPECT_EQ(translated("on this {computer}: {name}",
                             {{"computer", computer}, {"name", std::string("Anna")}}),
                  "⟦on this ⟦computer⟧: Anna⟧");
        EXPECT_EQ(counted("{count} h", "{count} hh", 2), "⟦2 hh⟧");
        EXPECT_EQ(inEnglish(computer), "computer");
        EXPECT_EQ(translated(Phrase()), "");
        EXPECT_EQ(PseudoCatalogue::outside("a ⟦b ⟦c⟧ d⟧ e"), "a  e");
    }
    EXPECT_EQ(translated(computer), "computer");
}

}  // namespace
}  // namespace marrowby
