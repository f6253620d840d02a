// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/QtApplicationWindows.h"

#include "Unlock/Linux/PageWindow.h"

#include <utility>

namespace marrowby {

namespace {

std::size_t place(ApplicationWindows::Window window) {
    return static_cast<std::size_t>(window);
}

}  // namespace

QtApplicationWindows::~QtApplicationWindows() {
    for (PageWindow* window : windows_)
        delete window;
}

void QtApplicationWindows::show(Window window, WindowPresenter& presenter) {
    PageWindow*& shown = windows_.at(place(window));
    if (shown == nullptr) {
        shown = new PageWindow(presenter, [this, window] { close(window); });
    } else {
        shown->refresh();
    }
    shown->show();
    shown->raise();
    shown->activateWindow();
}

void QtApplicationWindows::refresh(Window window) {
    if (PageWindow* shown = windows_.at(place(window))) shown->refresh();
}

void QtApplicationWindows::close(Window window) {
    if (PageWindow* shown = std::exchange(windows_.at(place(window)), nullptr)) shown->retire();
}

bool QtApplicationWindows::isOpen(Window window) const {
    return windows_.at(place(window)) != nullptr;
}

}  // namespace marrowby
