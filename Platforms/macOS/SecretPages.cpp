// SPDX-License-Identifier: Apache-2.0
#define __STDC_WANT_LIB_EXT1__ 1

#include "UnlockCore/Foundation/SecretBytes.h"

#include <mach/vm_inherit.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

namespace marrowby::secretpages {

// macOS cannot exclude pages from a core dump: this process writes none (ProcessHardening).
std::expected<std::span<std::uint8_t>, SecretMemoryError> allocate(std::size_t size) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    if (size > static_cast<std::size_t>(-1) - page) {
        return std::unexpected(SecretMemoryError::outOfMemory);
    }
    const std::size_t length = size == 0 ? page : (size + page - 1) / page * page;
    void* const memory =
        ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANON, -1, 0);
    if (memory == MAP_FAILED) return std::unexpected(SecretMemoryError::outOfMemory);
    // Not inherited by fork().
    if (::minherit(memory, length, VM_INHERIT_NONE) != 0 || ::mlock(memory, length) != 0) {
        ::munmap(memory, length);
        return std::unexpected(SecretMemoryError::pageLockRefused);
    }
    return std::span(static_cast<std::uint8_t*>(memory), length);
}

void release(std::span<std::uint8_t> pages) {
    ::memset_s(pages.data(), pages.size(), 0, pages.size());
    ::munmap(pages.data(), pages.size());
}

}  // namespace marrowby::secretpages
