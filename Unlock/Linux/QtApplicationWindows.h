// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/ApplicationWindows.h"

#include <array>

class QWidget;

namespace marrowby {

class PageWindow;

/// The application’s windows, drawn with Qt. Main thread, under a QApplication.
class QtApplicationWindows final : public ApplicationWindows {
  public:
    QtApplicationWindows() = default;
    QtApplicationWindows(const QtApplicationWindows&) = delete;
    QtApplicationWindows& operator=(const QtApplicationWindows&) = delete;
    ~QtApplicationWindows() override;

    void show(Window window, WindowPresenter& presenter) override;
    void refresh(Window window) override;
    void close(Window window) override;
    [[nodiscard]] bool isOpen(Window window) const override;

  private:
    /// Null while closed; the windows delete themselves.
    std::array<PageWindow*, 2> windows_{};
};

}  // namespace marrowby
