#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include <xcb/record.h>

namespace marrowby {

/// Tells which clients of a display get keys, from its making on, whoever presses them. Does not
/// hear of raw keys, which go to everybody who asks. For the adapters of this folder only. One
/// thread.
class XKeyDeliveries {
  public:
    /// Nothing where the display does not record.
    [[nodiscard]] static std::unique_ptr<XKeyDeliveries> create(const XcbConnection& control);
    ~XKeyDeliveries();
    XKeyDeliveries(const XKeyDeliveries&) = delete;
    XKeyDeliveries& operator=(const XKeyDeliveries&) = delete;

    /// The first ID of the resources of each client that got a key since the last call, once.
    [[nodiscard]] std::vector<std::uint32_t> receivers();
    /// Blocks until there is more to say, or the time has passed; false then.
    [[nodiscard]] bool wait(std::chrono::milliseconds limit) const;
    [[nodiscard]] bool isLost() const { return data_->hasError() || hasEnded_; }

  private:
    XKeyDeliveries(const XcbConnection& control, std::unique_ptr<XcbConnection> data);
    [[nodiscard]] bool start();
    /// The next part of the record; overwritten when it goes, for it holds which keys were pressed.
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
