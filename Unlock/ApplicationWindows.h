#pragma once

#include "Unlock/Pages/WindowPresenter.h"
#include "Unlock/UnlockOpening.h"

namespace marrowby {

/// The two windows on the screen. Main thread.
class ApplicationWindows {
  public:
    using Window = UnlockOpening::Window;

    virtual ~ApplicationWindows() = default;
    /// Opens the window, or brings it forward; the presenter outlives it.
    virtual void show(Window window, WindowPresenter& presenter) = 0;
    /// Draws an open window's page anew; nothing for a closed one.
    virtual void refresh(Window window) = 0;
    /// Closes it without a word to its presenter.
    virtual void close(Window window) = 0;
    [[nodiscard]] virtual bool isOpen(Window window) const = 0;
};

}  // namespace marrowby
