// SPDX-License-Identifier: Apache-2.0
#include "Unlock/macOS/AppKitApplicationWindows.h"

namespace marrowby {

void AppKitApplicationWindows::show(Window window, WindowPresenter& presenter) {
    auto& page = pages_[window];
    if (page) {
        page->refresh();
    } else {
        page = PageWindow::make(presenter, [this, window] { close(window); });
    }
    page->bringForward();
}

void AppKitApplicationWindows::refresh(Window window) {
    const auto open = pages_.find(window);
    if (open != pages_.end()) open->second->refresh();
}

void AppKitApplicationWindows::close(Window window) {
    const auto open = pages_.extract(window);
    if (open) open.mapped()->retire();
}

}  // namespace marrowby
