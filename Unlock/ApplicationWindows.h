// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Pages/WindowPresenter.h"
#include "Unlock/UnlockOpening.h"

namespace marrowby {

/// The application's two windows. Main thread.
class ApplicationWindows {
  public:
    using Window = UnlockOpening::Window;

    virtual ~ApplicationWindows() = default;
    /// Opens the window or brings it to the front; the presenter must outlive it.
    virtual void show(Window window, WindowPresenter& presenter) = 0;
    /// Redraws an open window's page; does nothing for a closed one.
    virtual void refresh(Window window) = 0;
    /// Closes it without notifying its presenter.
    virtual void close(Window window) = 0;
    [[nodiscard]] virtual bool isOpen(Window window) const = 0;
};

}  // namespace marrowby
