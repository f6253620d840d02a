// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

namespace marrowby {

/// Shows at most one notice with a button on the desktop. Main thread.
class DesktopNotices {
  public:
    struct Notice {
        std::string title;
        std::string text;
        std::string button;
        /// Goes by itself, also when the desktop can't show it at once, and stays without its
        /// button where the desktop has none.
        bool isBrief = false;
        friend bool operator==(const Notice&, const Notice&) = default;
    };

    virtual ~DesktopNotices() = default;

    /// The user pressed the notice or its button, at most once for each show().
    std::function<void()> onPressed;

    /// Replaces the one that is shown. Where the desktop shows none, nothing happens.
    virtual void show(const Notice& notice) = 0;
    /// Nothing is reported for it any more.
    virtual void withdraw() = 0;
};

}  // namespace marrowby
