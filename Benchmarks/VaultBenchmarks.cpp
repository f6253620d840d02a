// SPDX-License-Identifier: Apache-2.0

// Sealing and opening by the vault: a long password, and many enrolled faces.

#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Posix/OpenSslCipher.h"
#include "UnlockCore/Storage/Vault.h"

#include <vector>

#include <benchmark/benchmark.h>

namespace marrowby {
namespace {

constexpr std::int64_t kilobyte = 1000;
constexpr std::int64_t megabyte = 1000 * kilobyte;

/// A fixed key.
class OneKey final : public VaultKeyStore {
  public:
    [[nodiscard]] bool hasKey() override { return true; }
    [[nodiscard]] std::expected<std::optional<SecretBytes>, KeychainError> loadKey() override {
        auto key = SecretBytes::create(AuthenticatedCipher::keySize);
        if (!key) return std::unexpected(KeychainError::UnexpectedData{});
        return std::move(*key);
    }
    [[nodiscard]] std::expected<void, KeychainError> saveKey(
        std::span<const std::uint8_t> /*key*/) override {
        return {};
    }
    [[nodiscard]] std::expected<void, KeychainError> deleteKey() override { return {}; }
};

class OwnerWhoIsThere final : public OwnerCheck {
  public:
    [[nodiscard]] std::expected<void, std::string> canConfirm() override { return {}; }
    void confirmOwner(const std::string& /*reason*/, Completion completion) override {
        completion({});
    }
};

struct OpenVault {
    QtMainThread mainThread;
    UnixSystemClock clock;
    OpenSslCipher cipher;
    OneKey keyStore;
    OwnerWhoIsThere owner;
    Vault vault{keyStore, owner, [] { return false; }, {cipher, mainThread, clock, {}}};

    OpenVault() {
        vault.unlock("measure it", [](const auto&) {});
    }
};

std::vector<std::uint8_t> plaintextOf(const benchmark::State& state) {
    return std::vector<std::uint8_t>(static_cast<std::size_t>(state.range(0)), 7);
}

void vaultSeal(benchmark::State& state) {
    OpenVault open;
    const auto plaintext = plaintextOf(state);
    for (auto _ : state) {
        const auto blob = open.vault.seal(plaintext, VaultPurpose::faces);
        if (!blob) return state.SkipWithError("it isn’t sealed");
        benchmark::DoNotOptimize(blob->data());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(vaultSeal)->Arg(kilobyte)->Arg(megabyte)->Unit(benchmark::kMicrosecond);

/// Including the allocation and wiping of locked pages for the plaintext.
void vaultOpen(benchmark::State& state) {
    OpenVault open;
    const auto blob = open.vault.seal(plaintextOf(state), VaultPurpose::faces);
    for (auto _ : state) {
        const auto plaintext =
            blob ? open.vault.open(*blob, VaultPurpose::faces) : std::unexpected(blob.error());
        if (!plaintext) return state.SkipWithError("it doesn’t open");
        benchmark::DoNotOptimize(plaintext->values().data());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(vaultOpen)->Arg(kilobyte)->Arg(megabyte)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace marrowby
