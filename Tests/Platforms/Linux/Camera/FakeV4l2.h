// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Camera/V4l2Calls.h"

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace marrowby {

/// Fake cameras behind the system calls, with the kernel's rules: one streaming file per camera;
/// buffers are accessible only between DQBUF and QBUF. One thread.
class FakeV4l2 final : public V4l2Calls {
  public:
    struct Size {
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        /// Frames per second; empty: the driver lists no intervals.
        std::vector<std::uint32_t> rates = {};
    };
    struct Coding {
        std::uint32_t pixelFormat = 0;
        std::vector<Size> sizes;
        /// Minimum and maximum size in steps of 16 pixels, and minimum and maximum rate.
        bool isStepwise = false;
    };
    struct Picture {
        std::vector<std::uint8_t> bytes;
        bool isMarkedDamaged = false;
    };
    struct Camera {
        std::string node = "/dev/video0";
        std::string card = "Webcam";
        std::string bus = "usb-1";
        std::uint32_t capabilities = 0;  // as for a webcam, if 0
        std::vector<Coding> codings = {};
        bool isAllowed = true;
        /// Another program streams from it.
        bool isTaken = false;
        bool isPlugged = true;

        /// Frames delivered but not read.
        std::deque<Picture> pictures = {};
        /// The next calls of a request fail with this errno.
        std::map<unsigned long, int> faults = {};
        /// poll() reports an error, as drivers do when the device is gone.
        bool pollsError = false;

        std::uint32_t pixelFormat = 0;
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::uint32_t interval = 0;  // seconds are 1 / interval
        bool isStreaming = false;
        int openFiles = 0;
        /// How often it was opened.
        int openings = 0;
        /// How often it was plugged in anew or its permissions changed.
        int changes = 0;
    };

    FakeV4l2() = default;
    ~FakeV4l2() override = default;
    FakeV4l2(const FakeV4l2&) = delete;
    FakeV4l2& operator=(const FakeV4l2&) = delete;

    std::deque<Camera> cameras;
    /// Violated rules of the kernel.
    std::vector<std::string> violations;
    int mappedBuffers = 0;
    /// Polls without a file.
    int plainWaits = 0;

    [[nodiscard]] std::vector<Node> nodes() override;
    [[nodiscard]] bool mayOpen(const std::string& node) override;
    [[nodiscard]] int open(const std::string& node) override;
    void close(int file) override;
    int ioctl(int file, unsigned long request, void* argument) override;
    [[nodiscard]] std::span<std::uint8_t> map(int file, std::size_t length,
                                              std::uint32_t offset) override;
    void unmap(std::span<std::uint8_t> memory) override;
    [[nodiscard]] int poll(int file, int milliseconds) override;

  private:
    struct File {
        Camera* camera = nullptr;
        std::vector<std::vector<std::uint8_t>> memory;
        std::deque<std::uint32_t> queued;
    };

    [[nodiscard]] Camera* find(const std::string& node);
    int control(File& file, unsigned long request, void* argument);
    int dequeue(File& file, void* argument);

    std::map<int, File> files_;
    int lastFile_ = 2;
};

}  // namespace marrowby
