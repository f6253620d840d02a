// SPDX-License-Identifier: Apache-2.0

// secret-traces-probe BUS HOME: opens a vault whose key is in the keyring on BUS, saves, uses and
// wipes a password, and searches its own whole memory each time; says what it finds too much. Ends
// by abort(), while a password is being typed, so that a core is left.

#include "Platforms/Linux/Secrets/SecretServiceKeyStore.h"
#include "Platforms/Posix/OpenSslCipher.h"
#include "Platforms/Posix/PosixFileSystem.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeOwnerCheck.h"
#include "Tests/SecretTraces/Needle.h"
#include "Tests/SecretTraces/OwnMemory.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"
#include "UnlockCore/Storage/AppDataFolder.h"
#include "UnlockCore/Storage/CredentialStore.h"
#include "UnlockCore/Storage/SealedFile.h"

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include <unistd.h>

namespace marrowby {
namespace {

void expect(bool isSo, const char* what) {
    if (isSo) return;
    std::cout << "Not so: " << what << '\n' << std::flush;
    ::_exit(1);
}

/// A keyboard that takes everything, and lets the test look while a password is being typed.
class SilentKeyEvents final : public KeyEvents {
  public:
    std::function<void()> onPause = [] {};

    [[nodiscard]] bool isTrusted() const override { return true; }
    [[nodiscard]] FieldClearing clearing() const override { return FieldClearing::controlU; }
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> /*text*/, std::span<const EditingKey> /*keys*/) override {
        return std::make_unique<Source>();
    }
    void pause(TimeInterval /*duration*/) override { onPause(); }

  private:
    class Source final : public KeyEventSource {
        [[nodiscard]] bool post(const KeyPress& /*press*/) override { return true; }
        [[nodiscard]] bool postText(std::span<const char16_t> /*units*/, bool /*down*/) override {
            return true;
        }
        [[nodiscard]] bool isUndisturbed() override { return true; }
        void settle(const std::function<bool()>& /*stillLocked*/) override {}
    };
};

void run(const char* address, const char* home) {
    std::string controlText(passwordSize, ' ');
    for (std::size_t i = 0; i < passwordSize; ++i)
        controlText[i] = static_cast<char>(theControl.at(i));

    FakeMainThread mainThread;
    FakeOwnerCheck owner;
    owner.answer = true;
    PosixFileSystem fileSystem;
    OpenSslCipher cipher;
    SecretServiceKeyStore keyStore(address, {.service = "test.vault"});
    const AppDataFolder folder = AppDataFolder::in(std::filesystem::path(home), std::nullopt);
    const SealedFile file(fileSystem, folder.passwordFile(), VaultPurpose::password);
    Vault vault(keyStore, owner, [&] { return file.exists(); },
                {cipher, mainThread, mainThread, {}});
    CredentialStore credentials(file, vault);
    vault.unlock("open it",
                 [](const auto& result) { expect(result.has_value(), "the vault opens"); });
    mainThread.runPosted();
    expect(vault.isUnlocked(), "the vault is open");
    std::vector<std::uint8_t> masked;
    {
        const auto key = keyStore.loadKey();
        expect(key && *key, "there is a key");
        for (const std::uint8_t byte : (*key)->values())
            masked.push_back(byte ^ mask);
        expect(countInMemory(keyNeedle(masked)) == 2,
               "the key stands in the vault’s page and in this one");
    }
    {
        auto secret = SecretBytes::create(passwordSize).value();
        for (std::size_t i = 0; i < passwordSize; ++i)
            secret.values()[i] = passwordByte(i);
        expect(countInMemory(thePassword) == 1, "the password stands in one place");
        expect(credentials.save(secret).has_value(), "the password is saved");
    }
    SilentKeyEvents keys;
    bool hasLooked = false;
    const auto type = [&](std::span<const std::uint8_t> text) {
        (void)keystrokeinjector::typePassword(keys, text, [] { return true; });
    };
    keys.onPause = [&] {
        if (std::exchange(hasLooked, true)) return;
        expect(countInMemory(thePassword) == 1, "in use, it stands in one place");
        expect(countInMemory(thePasswordAsUTF16) == 1, "its UTF-16 form, too");
    };
    expect(credentials.withPassword(type).has_value() && hasLooked, "the password is typed");
    expect(countInMemory(thePassword) == 0, "nothing is left of the password");
    expect(countInMemory(thePasswordAsUTF16) == 0, "nothing is left of its UTF-16 form");
    expect(countInMemory(keyNeedle(masked)) == 1, "the key stands in the open vault’s page alone");
    expect(countInMemory(theControl) >= 1, "what is there is found");
    vault.lock();
    expect(countInMemory(keyNeedle(masked)) == 0, "nothing is left of the key");

    vault.unlock("open it",
                 [](const auto& result) { expect(result.has_value(), "the vault opens"); });
    mainThread.runPosted();
    std::ofstream(std::filesystem::path(home) / "masked-key", std::ios::binary)
        .write(reinterpret_cast<const char*>(masked.data()),
               static_cast<std::streamsize>(masked.size()));
    // Ends at the worst moment: the key, the password and its UTF-16 form are all in use.
    keys.onPause = [&] {
        expect(controlText.size() == passwordSize, "what the core is to show is still there");
        ::abort();
    };
    expect(!credentials.withPassword(type), "the process ends before");
}

}  // namespace
}  // namespace marrowby

int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) return 2;
    marrowby::run(arguments[1], arguments[2]);
    return 3;
}
