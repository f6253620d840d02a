#pragma once

#include "Unlock/Pages/WindowPage.h"
#include "UnlockCore/Foundation/SecretBytes.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#import <AppKit/AppKit.h>

namespace marrowby {

class PageWindow;

/// The view of one row of a page. Main thread.
class PageRow {
  public:
    /// Its controls call the window as long as there is one.
    [[nodiscard]] static std::shared_ptr<PageRow> make(const WindowRow& row,
                                                       const std::weak_ptr<PageWindow>& window);
    virtual ~PageRow() = default;

    [[nodiscard]] NSView* view() const { return view_; }
    /// Whether it can show this row, too.
    [[nodiscard]] bool fits(const WindowRow& row) const;
    virtual void show(const WindowRow& row) = 0;

    /// Of a secret field: what was typed; the field is empty then. Nothing when the system gave no
    /// secret memory.
    struct Secret {
        ControlID id;
        std::optional<SecretBytes> typed;
    };
    [[nodiscard]] virtual std::optional<Secret> takeSecret() { return std::nullopt; }
    /// Where typing begins.
    [[nodiscard]] virtual NSView* field() const { return nil; }

  protected:
    explicit PageRow(const WindowRow& row);
    void setView(NSView* view) { view_ = view; }

  private:
    std::size_t kind_;
    std::optional<ControlID> id_;
    NSView* view_ = nil;
};

/// A text of any number of lines.
[[nodiscard]] NSTextField* pageLabel(NSFont* font, NSColor* color);
/// Shows the text, or hides the label where it is empty.
void showText(NSTextField* label, const std::string& text);

/// Buttons from left to right, made anew only when they are others.
class PageButtons {
  public:
    void show(const std::vector<WindowButton>& buttons, const std::weak_ptr<PageWindow>& window);
    [[nodiscard]] NSStackView* view() const { return view_; }

  private:
    NSStackView* view_ = [[NSStackView alloc] init];
    std::vector<WindowButton> shown_;
};

}  // namespace marrowby
