// SPDX-License-Identifier: Apache-2.0
#include "Benchmarks/Allocations.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::int64_t> givenCount;
std::atomic<std::int64_t> givenBytes;

}  // namespace

void* operator new(std::size_t size) {
    givenCount.fetch_add(1, std::memory_order_relaxed);
    givenBytes.fetch_add(static_cast<std::int64_t>(size), std::memory_order_relaxed);
    void* memory = std::malloc(size == 0 ? 1 : size);  // NOLINT
    if (!memory) throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept {
    std::free(memory);  // NOLINT
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);  // NOLINT
}

marrowby::Allocations marrowby::Allocations::now() {
    return {givenCount.load(std::memory_order_relaxed), givenBytes.load(std::memory_order_relaxed)};
}
