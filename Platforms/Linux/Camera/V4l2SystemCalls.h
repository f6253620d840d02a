// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Camera/V4l2Calls.h"

namespace marrowby {

class V4l2SystemCalls final : public V4l2Calls {
  public:
    [[nodiscard]] std::vector<Node> nodes() override;
    [[nodiscard]] bool mayOpen(const std::string& node) override;
    [[nodiscard]] int open(const std::string& node) override;
    void close(int file) override;
    int ioctl(int file, unsigned long request, void* argument) override;
    [[nodiscard]] std::span<std::uint8_t> map(int file, std::size_t length,
                                              std::uint32_t offset) override;
    void unmap(std::span<std::uint8_t> memory) override;
    [[nodiscard]] int poll(int file, int milliseconds) override;
};

}  // namespace marrowby
