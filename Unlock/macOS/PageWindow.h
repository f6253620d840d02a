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

/// Draws whatever page its presenter has. Drawn anew, it changes what changed: a control keeps its
/// focus and what was typed while its row stays. A password is typed into the system's own secure
/// field, whose memory cannot be wiped; it is emptied as soon as it is read. Main thread.
class PageWindow : public std::enable_shared_from_this<PageWindow> {
  public:
    /// `onClosed` comes before the presenter's own word of it.
    [[nodiscard]] static std::shared_ptr<PageWindow> make(WindowPresenter& presenter,
                                                          std::function<void()> onClosed);
    ~PageWindow();
    PageWindow(const PageWindow&) = delete;
    PageWindow& operator=(const PageWindow&) = delete;

    void bringForward();
    void refresh();
    /// Closes it without a word to the presenter, which is forgotten.
    void retire();

    // What its rows call.
    void press(ControlID id);
    void toggle(ControlID id, bool isOn);
    void choose(ControlID id, std::size_t option);
    void enter(ControlID id, std::string text);
    /// The user closed it.
    void closed();

  private:
    PageWindow(WindowPresenter& presenter, std::function<void()> onClosed);
    void build();
    void draw(const WindowPage& page);
    void drawRows(const std::vector<WindowRow>& rows);
    /// Whatever its control shows: the presenter may have thought otherwise.
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
