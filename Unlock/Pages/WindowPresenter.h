// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Pages/WindowPage.h"
#include "UnlockCore/Foundation/SecretBytes.h"

#include <cstddef>
#include <string>

namespace marrowby {

/// What a window shows and what its controls do. Main thread. A control that has left the page does
/// nothing.
class WindowPresenter {
  public:
    virtual ~WindowPresenter() = default;

    [[nodiscard]] virtual WindowPage page() const = 0;

    /// A button. The content of the page's secret field is entered first.
    virtual void press(ControlID id) = 0;
    virtual void toggle(ControlID id, bool isOn) = 0;
    virtual void choose(ControlID id, std::size_t option) = 0;
    /// On every change of the text.
    virtual void enter(ControlID id, std::string text) = 0;
    virtual void enter(ControlID id, SecretBytes secret) = 0;
    /// The user closed the window.
    virtual void windowClosed() = 0;
};

}  // namespace marrowby
