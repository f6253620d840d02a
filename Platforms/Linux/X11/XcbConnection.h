// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include <xcb/xcb.h>

namespace marrowby {

/// A connection to an X display. Any thread; after the display is lost every reply is null and
/// hasError() stays true.
class XcbConnection {
  public:
    struct Free {
        void operator()(void* memory) const { std::free(memory); }
    };
    template <typename T>
    using Owned = std::unique_ptr<T, Free>;

    /// The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<XcbConnection>, std::string> create(
        const std::string& displayName);
    ~XcbConnection();
    XcbConnection(const XcbConnection&) = delete;
    XcbConnection& operator=(const XcbConnection&) = delete;

    [[nodiscard]] xcb_connection_t* get() const { return connection_; }
    [[nodiscard]] xcb_window_t root() const { return screen_->root; }
    [[nodiscard]] const xcb_screen_t& screen() const { return *screen_; }
    [[nodiscard]] const std::string& displayName() const { return displayName_; }
    [[nodiscard]] int fd() const { return xcb_get_file_descriptor(connection_); }
    [[nodiscard]] bool hasError() const { return xcb_connection_has_error(connection_) != 0; }
    /// For the user, when hasError().
    [[nodiscard]] std::string lostSentence() const;

    /// Waits for a reply: reply<xcb_query_tree_reply>(xcb_query_tree(...)). Null after an X error
    /// and on a lost display.
    template <auto replyFunction, typename Cookie>
    [[nodiscard]] auto reply(Cookie cookie) const {
        using Reply =
            std::remove_pointer_t<std::invoke_result_t<decltype(replyFunction), xcb_connection_t*,
                                                       Cookie, xcb_generic_error_t**>>;
        return Owned<Reply>(replyFunction(connection_, cookie, nullptr));
    }

    /// XCB_ATOM_NONE on a lost display.
    [[nodiscard]] xcb_atom_t atom(std::string_view name) const;
    void flush() const { xcb_flush(connection_); }
    /// Discards unsolicited events and notices a lost display. For connections without an event
    /// pump, whose queue would grow.
    void discardEvents() const;

  private:
    XcbConnection(xcb_connection_t* connection, const xcb_screen_t* screen,
                  std::string displayName);

    xcb_connection_t* connection_;
    const xcb_screen_t* screen_;
    std::string displayName_;
};

}  // namespace marrowby
