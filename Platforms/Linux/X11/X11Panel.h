// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/WindowServer.h"

#include <memory>
#include <string>

namespace marrowby {

/// A panel of X11WindowServer. Re-places itself when lockers and compositors come and go.
class X11Panel final : public LockScreenPanel {
  public:
    X11Panel(std::string displayName, const Rect& frame, std::shared_ptr<PanelContent> content);
    X11Panel(const X11Panel&) = delete;
    X11Panel& operator=(const X11Panel&) = delete;
    ~X11Panel() override;

    /// 0 while it has no window.
    [[nodiscard]] std::int64_t windowNumber() const override;
    void setFrame(const Rect& frame) override { frame_ = frame; }
    void orderFront() override;
    void orderOut() override;

  private:
    class Shown;

    const std::string displayName_;
    Rect frame_;
    const std::shared_ptr<PanelContent> content_;
    std::unique_ptr<Shown> shown_;
};

}  // namespace marrowby
