// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Pages/WindowPresenter.h"
#include "Unlock/macOS/PageRow.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#import <AppKit/AppKit.h>

@class MarrowbyPageWindow;

namespace marrowby {

/// Draws its presenter's current page. A redraw changes only what differs: focus and typed text
/// survive while the row stays. Passwords are typed into AppKit's secure field, whose memory cannot
/// be wiped; it is cleared as soon as it is read. Main thread.
class PageWindow : public std::enable_shared_from_this<PageWindow> {
  public:
    /// `onClosed` is called before the presenter is.
    [[nodiscard]] static std::shared_ptr<PageWindow> make(WindowPresenter& presenter,
                                                          std::function<void()> onClosed);
    ~PageWindow();
    PageWindow(const PageWindow&) = delete;
    PageWindow& operator=(const PageWindow&) = delete;

    void bringForward();
    void refresh();
    /// Detaches the presenter and closes without notifying it.
    void retire();

    // Called by its rows.
    void press(ControlID id);
    void toggle(ControlID id, bool isOn);
    void choose(ControlID id, std::size_t option);
    void enter(ControlID id, std::string text);
    void closed();

  private:
    PageWindow(WindowPresenter& presenter, std::function<void()> onClosed);
    void build();
    void draw(const WindowPage& page);
    void drawRows(const std::vector<WindowRow>& rows);
    /// Takes the page's height, as far as the screen goes; on the same page it only grows.
    void fit(bool isOtherPage);
    /// Also resets controls whose change the presenter rejected.
    void redraw();

    WindowPresenter* presenter_;
    std::function<void()> onClosed_;
    std::optional<WindowPage> page_;
    std::vector<std::shared_ptr<PageRow>> rows_;

    MarrowbyPageWindow* window_;
    NSTextField* title_;
    NSTextField* detail_;
    NSTextField* problem_;
    NSScrollView* scroll_;
    NSStackView* content_;
    PageButtons buttons_;
};

}  // namespace marrowby
