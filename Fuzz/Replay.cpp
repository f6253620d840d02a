// SPDX-License-Identifier: Apache-2.0

// Stands in for libFuzzer: runs the target over the files it is given, once each.

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

// NOLINTNEXTLINE(readability-identifier-naming): libFuzzer's name.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argumentCount, char** arguments) {
    int count = 0;
    for (int i = 1; i < argumentCount; ++i) {
        std::ifstream file(arguments[i], std::ios::binary);
        if (!file) {
            std::cerr << "There is no " << arguments[i] << ".\n";
            return 1;
        }
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        (void)LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                     bytes.size());
        ++count;
    }
    std::cout << count << " seeds replayed.\n";
    return count > 0 ? 0 : 1;
}
