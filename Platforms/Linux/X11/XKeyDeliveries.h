// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include <xcb/record.h>

namespace marrowby {

/// Reports which clients receive key events, whoever presses the keys, from creation on (RECORD
/// extension). Raw keys, which go to every subscriber, are not reported. One thread.
class XKeyDeliveries {
  public:
    /// Null when the display has no RECORD extension.
    [[nodiscard]] static std::unique_ptr<XKeyDeliveries> create(const XcbConnection& control);
    ~XKeyDeliveries();
    XKeyDeliveries(const XKeyDeliveries&) = delete;
    XKeyDeliveries& operator=(const XKeyDeliveries&) = delete;

    /// The resource ID base of each client that received a key since the last call, without
    /// duplicates.
    [[nodiscard]] std::vector<std::uint32_t> receivers();
    /// Blocks until there is more to read; false on timeout.
    [[nodiscard]] bool wait(std::chrono::milliseconds limit) const;
    [[nodiscard]] bool isLost() const { return data_->hasError() || hasEnded_; }

  private:
    XKeyDeliveries(const XcbConnection& control, std::unique_ptr<XcbConnection> data);
    [[nodiscard]] bool start();
    /// Wipes a chunk of the record before it is freed: it holds the keys pressed.
    struct Wipe {
        void operator()(xcb_record_enable_context_reply_t* reply) const;
    };
    using Part = std::unique_ptr<xcb_record_enable_context_reply_t, Wipe>;
    [[nodiscard]] Part take();

    const XcbConnection& control_;
    std::unique_ptr<XcbConnection> data_;
    xcb_record_context_t context_;
    xcb_record_enable_context_cookie_t stream_{};
    std::uint8_t inputOpcode_ = 0;
    std::uint8_t deviceKeyPress_ = 0;
    bool hasEnded_ = false;
};

}  // namespace marrowby
