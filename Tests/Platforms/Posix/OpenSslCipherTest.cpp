// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Posix/OpenSslCipher.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Failure = AuthenticatedCipher::Failure;

Bytes fromHex(std::string_view text) {
    Bytes bytes;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        bytes.push_back(
            static_cast<std::uint8_t>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16)));
    }
    return bytes;
}

struct Vector {
    std::string key;
    std::string nonce;
    std::string authenticatedData;
    std::string plaintext;
    std::string ciphertext;
    std::string tag;
};

const std::string longPlaintext =
    "d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a72"
    "1c3c0c95956809532fcf0e2449a6b525b16aedf5aa0de657ba637b391aafd255";
const std::string longCiphertext =
    "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa"
    "8cb08e48590dbb3da7b08b1056828838c5f61e6393ba7a0abcc9f662898015ad";
const std::string longKey = "feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308";

/// McGrew and Viega, "The Galois/Counter Mode of Operation (GCM)", appendix B, test cases 13 to 16.
const Vector published[] = {
    {std::string(64, '0'), std::string(24, '0'), "", "", "", "530f8afbc74536b9a963b4f1c4cb738b"},
    {std::string(64, '0'), std::string(24, '0'), "", std::string(32, '0'),
     "cea7403d4d606b6e074ec5d3baf39d18", "d0d1c8a799996bf0265b98b5d48ab919"},
    {longKey, "cafebabefacedbaddecaf888", "", longPlaintext, longCiphertext,
     "b094dac5d93471bdec1a502270e3cc6c"},
    {longKey, "cafebabefacedbaddecaf888", "feedfacedeadbeeffeedfacedeadbeefabaddad2",
     longPlaintext.substr(0, 120), longCiphertext.substr(0, 120),
     "76fc6ece0f4e1768cddf8853bb2d551b"},
};

TEST(OpenSslCipher, agreesWithThePublishedVectors) {
    OpenSslCipher cipher;
    for (const Vector& vector : published) {
        SCOPED_TRACE(vector.tag);
        const Bytes key = fromHex(vector.key);
        const Bytes nonce = fromHex(vector.nonce);
        const Bytes data = fromHex(vector.authenticatedData);
        const Bytes plaintext = fromHex(vector.plaintext);
        Bytes sealed = fromHex(vector.ciphertext + vector.tag);
        const AuthenticatedCipher::Key keySpan(key);
        const AuthenticatedCipher::Nonce nonceSpan(nonce);

        EXPECT_EQ(cipher.seal(keySpan, nonceSpan, data, plaintext), sealed);
        const auto opened = cipher.open(keySpan, nonceSpan, data, sealed);
        ASSERT_TRUE(opened);
        EXPECT_TRUE(std::ranges::equal(opened->values(), plaintext));

        for (const std::size_t at : {std::size_t{0}, sealed.size() - 1}) {
            sealed[at] ^= 0x80;
            EXPECT_EQ(cipher.open(keySpan, nonceSpan, data, sealed).error(), Failure::notAuthentic);
            sealed[at] ^= 0x80;
        }
        Bytes otherData = data;
        otherData.push_back(0);
        EXPECT_EQ(cipher.open(keySpan, nonceSpan, otherData, sealed).error(),
                  Failure::notAuthentic);
        EXPECT_EQ(cipher.open(keySpan, nonceSpan, data, std::span(sealed).first(15)).error(),
                  Failure::notAuthentic);
    }
}

/// In its own process: libcrypto reads its configuration once.
TEST(OpenSslCipherDeathTest, readsNoConfigurationFile) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const TemporaryFolder folder;
    const auto file = folder.path() / "openssl.cnf";
    // With this configuration libcrypto would find no cipher.
    std::ofstream(file) << "openssl_conf = all\n[all]\nalg_section = none\n"
                           "[none]\ndefault_properties = provider=elsewhere\n";
    const auto seals = [&file] {
        ::setenv("OPENSSL_CONF", file.c_str(), 1);
        const Bytes key(32);
        const Bytes nonce(12);
        return OpenSslCipher()
            .seal(AuthenticatedCipher::Key(key), AuthenticatedCipher::Nonce(nonce), {}, {})
            .has_value();
    };
    EXPECT_EXIT(std::_Exit(seals() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(OpenSslCipher, drawsFreshRandomBytes) {
    OpenSslCipher cipher;
    std::array<std::uint8_t, 32> first{};
    std::array<std::uint8_t, 32> second{};
    EXPECT_TRUE(cipher.random(first));
    EXPECT_TRUE(cipher.random(second));
    EXPECT_NE(first, second);
    EXPECT_TRUE(cipher.random({}));
}

}  // namespace
}  // namespace marrowby
