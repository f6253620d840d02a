// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include <xcb/record.h>

namespace marrowby {

/// Reports which clients receive key events, whoever presses the keys, from creation on (RECORD
/// extension). One thread.
class XKeyDeliveries {
  public:
    /// Null when the display has no RECORD extension.
    [[nodiscard]] static std::unique_ptr<XKeyDeliveries> create(const XcbConnection& control);
    ~XKeyDeliveries();
    XKeyDeliveries(const XKeyDeliveries&) = delete;
    XKeyDeliveries& operator=(const XKeyDeliveries&) = delete;

    /// The resource ID base of each client that received a key since the last call, without
    /// duplicates. Raw keys, which go to every subscriber, do not count.
    [[nodiscard]] std::vector<std::uint32_t> receivers();
    struct RawKeys {
        /// Raw events that the client received.
        std::size_t received = 0;
        /// Those for which it has not yet asked where the pointer is, as clients do that need the
        /// modifiers.
        std::size_t unhandled = 0;
    };
    /// As of the last call of receivers().
    [[nodiscard]] RawKeys rawKeys(std::uint32_t client) const;
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
    void noteQuestions(std::uint32_t client, std::size_t bytes);

    const XcbConnection& control_;
    std::unique_ptr<XcbConnection> data_;
    xcb_record_context_t context_;
    xcb_record_enable_context_cookie_t stream_{};
    std::uint8_t inputOpcode_ = 0;
    std::uint8_t deviceKeyPress_ = 0;
    bool hasEnded_ = false;
    std::map<std::uint32_t, RawKeys> rawKeys_;
};

}  // namespace marrowby
