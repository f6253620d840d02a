// SPDX-License-Identifier: Apache-2.0
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

class PageRow {
  public:
    /// The controls call the window while it exists.
    [[nodiscard]] static std::shared_ptr<PageRow> make(const WindowRow& row,
                                                       const std::weak_ptr<PageWindow>& window);
    virtual ~PageRow() = default;

    [[nodiscard]] NSView* view() const { return view_; }
    /// Whether it can be reused for this row.
    [[nodiscard]] bool fits(const WindowRow& row) const;
    virtual void show(const WindowRow& row) = 0;

    /// A secret field's text, which is cleared. `nullopt` when secret memory could not be
    /// allocated.
    struct Secret {
        ControlID id;
        std::optional<SecretBytes> typed;
    };
    [[nodiscard]] virtual std::optional<Secret> takeSecret() { return std::nullopt; }
    /// The row's text field, if any.
    [[nodiscard]] virtual NSView* field() const { return nil; }

  protected:
    explicit PageRow(const WindowRow& row);
    void setView(NSView* view) { view_ = view; }

  private:
    std::size_t kind_;
    std::optional<ControlID> id_;
    NSView* view_ = nil;
};

/// A wrapping label.
[[nodiscard]] NSTextField* pageLabel(NSFont* font, NSColor* color);
void showText(NSTextField* label, const std::string& text);

/// Buttons from left to right, rebuilt only when they differ.
class PageButtons {
  public:
    void show(const std::vector<WindowButton>& buttons, const std::weak_ptr<PageWindow>& window);
    [[nodiscard]] NSStackView* view() const { return view_; }

  private:
    NSStackView* view_ = [[NSStackView alloc] init];
    std::vector<WindowButton> shown_;
};

}  // namespace marrowby
