// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Posix/OpenSslCipher.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

namespace marrowby {

namespace {

using Context = std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)>;

/// Must precede any other libcrypto call: its configuration file, or the variable that names
/// another, could make this process load a library.
bool prepare() {
    static const bool isReady = OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr) == 1;
    return isReady;
}

Context makeContext() {
    if (!prepare()) return {nullptr, &EVP_CIPHER_CTX_free};
    return {EVP_CIPHER_CTX_new(), &EVP_CIPHER_CTX_free};
}

/// libcrypto's lengths are int.
bool isCountable(std::size_t size) {
    return size <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

int length(std::span<const std::uint8_t> bytes) {
    return static_cast<int>(bytes.size());
}

}  // namespace

bool OpenSslCipher::random(std::span<std::uint8_t> bytes) {
    if (prepare() && isCountable(bytes.size()) && RAND_priv_bytes(bytes.data(), length(bytes)) == 1)
        return true;
    std::ranges::fill(bytes, std::uint8_t{0});
    return false;
}

std::expected<std::vector<std::uint8_t>, AuthenticatedCipher::Failure> OpenSslCipher::seal(
    Key key, Nonce nonce, std::span<const std::uint8_t> authenticatedData,
    std::span<const std::uint8_t> plaintext) {
    const Context context = makeContext();
    if (!context || !isCountable(authenticatedData.size()) ||
        !isCountable(plaintext.size() + tagSize)) {
        return std::unexpected(Failure::unavailable);
    }
    std::vector<std::uint8_t> sealed(plaintext.size() + tagSize);
    std::uint8_t* const tag = sealed.data() + plaintext.size();
    int written = 0;
    const bool isSealed =
        EVP_EncryptInit_ex2(context.get(), EVP_aes_256_gcm(), key.data(), nonce.data(), nullptr) ==
            1 &&
        EVP_EncryptUpdate(context.get(), nullptr, &written, authenticatedData.data(),
                          length(authenticatedData)) == 1 &&
        EVP_EncryptUpdate(context.get(), sealed.data(), &written, plaintext.data(),
                          length(plaintext)) == 1 &&
        EVP_EncryptFinal_ex(context.get(), tag, &written) == 1 &&
        EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_GET_TAG, static_cast<int>(tagSize), tag) ==
            1;
    if (!isSealed) return std::unexpected(Failure::unavailable);
    return sealed;
}

std::expected<SecretBytes, AuthenticatedCipher::Failure> OpenSslCipher::open(
    Key key, Nonce nonce, std::span<const std::uint8_t> authenticatedData,
    std::span<const std::uint8_t> ciphertextAndTag) {
    if (ciphertextAndTag.size() < tagSize) return std::unexpected(Failure::notAuthentic);
    const auto ciphertext = ciphertextAndTag.first(ciphertextAndTag.size() - tagSize);
    // libcrypto takes the tag as non-const.
    std::array<std::uint8_t, tagSize> tag{};
    std::ranges::copy(ciphertextAndTag.last<tagSize>(), tag.begin());

    const Context context = makeContext();
    auto plaintext = SecretBytes::create(ciphertext.size());
    if (!context || !plaintext || !isCountable(authenticatedData.size()) ||
        !isCountable(ciphertext.size())) {
        return std::unexpected(Failure::unavailable);
    }
    std::uint8_t* const begin = plaintext->values().data();
    int written = 0;
    const bool isDecrypted =
        EVP_DecryptInit_ex2(context.get(), EVP_aes_256_gcm(), key.data(), nonce.data(), nullptr) ==
            1 &&
        EVP_DecryptUpdate(context.get(), nullptr, &written, authenticatedData.data(),
                          length(authenticatedData)) == 1 &&
        EVP_DecryptUpdate(context.get(), begin, &written, ciphertext.data(), length(ciphertext)) ==
            1 &&
        EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_SET_TAG, static_cast<int>(tagSize),
                            tag.data()) == 1;
    if (!isDecrypted) return std::unexpected(Failure::unavailable);
    if (EVP_DecryptFinal_ex(context.get(), begin + ciphertext.size(), &written) != 1) {
        return std::unexpected(Failure::notAuthentic);
    }
    return std::move(*plaintext);
}

}  // namespace marrowby
