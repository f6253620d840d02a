#pragma once

#include "Unlock/ApplicationWindows.h"

#include <array>

class QWidget;

namespace marrowby {

class PageWindow;

/// The application’s windows as Qt draws them on a Linux desktop. Main thread, under a
/// QApplication.
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
    /// Nothing while it is closed; it deletes itself.
    std::array<PageWindow*, 2> windows_{};
};

}  // namespace marrowby
