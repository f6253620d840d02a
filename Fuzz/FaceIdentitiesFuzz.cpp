// SPDX-License-Identifier: Apache-2.0

// The input as the identities' JSON, correctly sealed: what a holder of the key could write.

#include "Fuzz/FuzzVault.h"
#include "Unlock/macOS/MacWords.h"
#include "UnlockCore/Storage/FaceStore.h"

#include <cstddef>
#include <cstdint>

namespace marrowby {
namespace {

struct Fuzz : FuzzVault {
    void load(std::span<const std::uint8_t> text) {
        const auto blob = vault->seal(text, VaultPurpose::faces);
        require(blob.has_value(), "it wasn’t sealed");
        fileSystem.put(folder.facesFile(), *blob);

        FaceStore store(facesFile, *vault, cipher, mainThread, macWords);
        if (!store.load()) {
            require(!store.isLoaded() && store.identities().empty(), "half of it was loaded");
            require(!store.rename(UUID(), "Ann"), "an unreadable file was written over");
            return;
        }
        // What was read can be written and reads back the same.
        require(store.remove(UUID()).has_value(), "it can’t be written");
        FaceStore again(facesFile, *vault, cipher, mainThread, macWords);
        require(again.load().has_value(), "it can’t be read again");
        require(again.identities() == store.identities(), "it changed");
    }
};

}  // namespace
}  // namespace marrowby

// NOLINTNEXTLINE(readability-identifier-naming): libFuzzer's name.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static marrowby::Fuzz fuzz;
    fuzz.load({data, size});
    return 0;
}
