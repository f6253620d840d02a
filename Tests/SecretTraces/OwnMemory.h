// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Tests/SecretTraces/Needle.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace marrowby {

/// How often it stands in the memory of this process, but for the pages it is read into. Ends the
/// process where the memory cannot be read.
inline std::size_t countInMemory(const Needle& needle) {
    constexpr std::size_t chunk = std::size_t{1} << 20;
    // The sanitizers' shadow, of which most is not there.
    constexpr std::uint64_t absurd = std::uint64_t{4} << 30;
    static auto* const buffer = static_cast<std::uint8_t*>(
        ::mmap(nullptr, chunk, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    const auto bufferStart = reinterpret_cast<std::uint64_t>(buffer);
    const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    std::size_t count = 0;
    std::uint64_t read = 0;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        const char* const last = line.data() + line.size();
        const auto dash = std::from_chars(line.data(), last, begin, 16).ptr;
        const auto space = std::from_chars(dash + 1, last, end, 16).ptr;
        if (space[1] != 'r' || end - begin > absurd) continue;
        for (std::uint64_t at = begin; at < end; at += chunk - needle.size) {
            // In pieces that end where the buffer begins and go on behind it.
            if (at >= bufferStart && at < bufferStart + chunk) at = bufferStart + chunk;
            std::uint64_t limit = std::min(end, at + chunk);
            if (at < bufferStart) limit = std::min(limit, std::max(bufferStart, begin));
            if (at >= limit) continue;
            const ssize_t size = ::pread(memory, buffer, limit - at, static_cast<off_t>(at));
            if (size <= 0) continue;
            read += static_cast<std::uint64_t>(size);
            count += needle.countIn({buffer, static_cast<std::size_t>(size)}, chunk - needle.size);
        }
    }
    ::close(memory);
    if (read <= std::uint64_t{4} << 20) {
        std::cout << "The memory of this process can’t be read.\n" << std::flush;
        ::_exit(1);
    }
    std::memset(buffer, 0, chunk);
    return count;
}

}  // namespace marrowby
