// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/VaultFixture.h"
#include "UnlockCore/Storage/FaceIdentityCoding.h"

#include <bit>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using faceidentitycoding::decode;
using faceidentitycoding::encode;

constexpr const char* knownText =
    R"([{"id":"F81D4FAE-7DEC-41D0-A765-00A0C91E6BF6","name":"Zoë","samples":[)"
    R"({"embedding":[0.5,-0.25],"pose":"center","capturedAt":700000000.25,"quality":0.75},)"
    R"({"embedding":[],"capturedAt":0.0}],)"
    R"("modelIdentifier":"m-1","dimension":2,"createdAt":-1.5,"isEnabled":false}])";

FaceIdentity knownIdentity() {
    return {.id = UUID::parse("F81D4FAE-7DEC-41D0-A765-00A0C91E6BF6").value(),
            .name = "Zoë",
            .samples = {{.embedding = {0.5F, -0.25F},
                         .pose = "center",
                         .capturedAt = Date(TimeInterval(700000000.25)),
                         .quality = 0.75F},
                        {.embedding = {}, .pose = {}, .capturedAt = Date(), .quality = {}}},
            .modelIdentifier = "m-1",
            .dimension = 2,
            .createdAt = Date(TimeInterval(-1.5)),
            .isEnabled = false};
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

TEST(FaceIdentityCoding, writesAndReadsKnownText) {
    const FaceIdentity identity = knownIdentity();
    EXPECT_EQ(encode({&identity, 1}), knownText);
    EXPECT_EQ(decode(bytesOf(knownText)), std::vector{identity});
    EXPECT_EQ(encode({}), "[]");
}

TEST(FaceIdentityCoding, readsWhatAnotherEncoderMayWrite) {
    std::string text = replaced(knownText, "F81D4FAE", "f81d4fae");
    text = replaced(text, R"("Zoë")", R"("Zo\u00eb")");
    text = replaced(text, R"("isEnabled":false)", R"("isEnabled" : false, "new":[{"key":null}])");
    text = replaced(text, R"("capturedAt":0.0)", R"("capturedAt":0,"pose":null,"quality":null)");
    EXPECT_EQ(decode(bytesOf(text)), std::vector{knownIdentity()});
}

TEST(FaceIdentityCoding, keepsTheModelsWhereTheyAreKnown) {
    FaceIdentity identity = knownIdentity();
    identity.models = {{"embedder", "e1"}, {"realFace", "r1"}};
    const std::string with =
        replaced(knownText, "false}]", R"(false,"models":{"embedder":"e1","realFace":"r1"}}])");
    EXPECT_EQ(encode({&identity, 1}), with);
    EXPECT_EQ(decode(bytesOf(with)), std::vector{identity});
    const std::string none = replaced(with, R"({"embedder":"e1","realFace":"r1"})", "null");
    EXPECT_EQ(decode(bytesOf(none)), std::vector{knownIdentity()});
    for (const char* wrong : {"[]", "7", R"("e1")", R"({"embedder":1})"})
        EXPECT_FALSE(decode(bytesOf(replaced(none, ":null", std::string(":") + wrong)))) << wrong;
    std::string many = "{";
    for (int i = 0; i < 17; ++i)
        many += (i == 0 ? "\"" : ",\"") + std::to_string(i) + "\":\"x\"";
    EXPECT_FALSE(decode(bytesOf(replaced(none, "null", many + "}"))));
    identity.models["embedder"] = "\xFF";
    EXPECT_FALSE(encode({&identity, 1}));
}

TEST(FaceIdentityCoding, keepsEveryBitOfAFloat) {
    std::mt19937 random(7);  // NOLINT(bugprone-random-generator-seed): the same floats every time.
    FaceIdentity identity = knownIdentity();
    Embedding& floats = identity.samples[0].embedding;
    floats = {std::numeric_limits<float>::denorm_min(), std::numeric_limits<float>::max(), -0.0F};
    while (floats.size() < 4000) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isfinite(value)) floats.push_back(value);
    }
    const auto read = decode(bytesOf(encode({&identity, 1}).value())).value().at(0);
    EXPECT_EQ(read, identity);
    EXPECT_TRUE(std::signbit(read.samples[0].embedding[2]));
}

TEST(FaceIdentityCoding, refusesWithASentence) {
    const std::string known = knownText;
    const std::pair<std::string, const char*> cases[] = {
        {"", "it isn’t a list"},
        {known.substr(0, known.size() - 1), "it isn’t a list"},
        {"{}", "it isn’t a list"},
        {"[7]", "an entry isn’t an object"},
        {replaced(known, R"("id":)", R"("ID":)"), "“id” is missing"},
        {replaced(known, "F81D4FAE", "F81D4FA"), "“id” isn’t an identifier"},
        {replaced(known, R"("Zoë")", "null"), "“name” isn’t text"},
        {replaced(known, "Zoë", std::string(5000, 'x')), "“name” is too long"},
        {replaced(known, R"([0.5,-0.25])", R"({"0":1})"), "“embedding” isn’t a list"},
        {replaced(known, "-0.25", "1e39"), "“embedding” isn’t a 32-bit number"},
        {replaced(known, "-0.25", "true"), "“embedding” isn’t a 32-bit number"},
        {replaced(known, R"("center")", "3"), "“pose” isn’t text"},
        {replaced(known, "700000000.25", R"("today")"), "“capturedAt” isn’t a date"},
        {replaced(known, R"("dimension":2)", R"("dimension":18446744073709551615)"),
         "“dimension” isn’t a whole number"},
        {replaced(known, R"("isEnabled":false)", R"("isEnabled":0)"),
         "“isEnabled” isn’t true or false"},
    };
    for (const auto& [text, reason] : cases) {
        const auto decoded = decode(bytesOf(text));
        ASSERT_FALSE(decoded) << text;
        EXPECT_EQ(decoded.error().reason, reason);
    }
    std::string many = "0";
    for (int i = 0; i < 4096; ++i)
        many += ",0";
    EXPECT_FALSE(decode(bytesOf(replaced(known, "0.5,-0.25", many))));
}

TEST(FaceIdentityCoding, writesNothingItWouldNotRead) {
    void (*const changes[])(FaceIdentity&) = {
        [](FaceIdentity& face) { face.name = "\xC3\x28"; },
        [](FaceIdentity& face) { face.samples[0].embedding[0] = INFINITY; },
        [](FaceIdentity& face) { face.samples.resize(1001); },
    };
    for (const auto& change : changes) {
        FaceIdentity identity = knownIdentity();
        change(identity);
        EXPECT_FALSE(encode({&identity, 1}));
    }
}

}  // namespace
}  // namespace marrowby
