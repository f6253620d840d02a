// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/ApplicationWindows.h"
#include "Unlock/macOS/PageWindow.h"

#include <map>
#include <memory>

namespace marrowby {

/// The application's windows, drawn by AppKit. Main thread.
class AppKitApplicationWindows final : public ApplicationWindows {
  public:
    void show(Window window, WindowPresenter& presenter) override;
    void refresh(Window window) override;
    void close(Window window) override;
    [[nodiscard]] bool isOpen(Window window) const override { return pages_.contains(window); }

  private:
    std::map<Window, std::shared_ptr<PageWindow>> pages_;
};

}  // namespace marrowby
