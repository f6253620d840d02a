// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/SecretBytes.h"

#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

namespace marrowby::secretpages {

std::expected<std::span<std::uint8_t>, SecretMemoryError> allocate(std::size_t size) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    if (size > static_cast<std::size_t>(-1) - page) {
        return std::unexpected(SecretMemoryError::outOfMemory);
    }
    const std::size_t length = size == 0 ? page : (size + page - 1) / page * page;
    void* memory =
        ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return std::unexpected(SecretMemoryError::outOfMemory);
    if (::madvise(memory, length, MADV_DONTDUMP) != 0 ||
        ::madvise(memory, length, MADV_WIPEONFORK) != 0 || ::mlock(memory, length) != 0) {
        ::munmap(memory, length);
        return std::unexpected(SecretMemoryError::pageLockRefused);
    }
    return std::span(static_cast<std::uint8_t*>(memory), length);
}

void release(std::span<std::uint8_t> pages) {
    ::explicit_bzero(pages.data(), pages.size());
    ::munmap(pages.data(), pages.size());
}

}  // namespace marrowby::secretpages
