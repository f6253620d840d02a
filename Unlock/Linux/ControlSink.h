// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Pages/WindowPage.h"

#include <cstddef>
#include <string>

namespace marrowby {

/// Receives what the user does to a window's controls. A call may destroy the control.
class ControlSink {
  public:
    virtual void press(ControlID id) = 0;
    virtual void toggle(ControlID id, bool isOn) = 0;
    virtual void choose(ControlID id, std::size_t option) = 0;
    virtual void enter(ControlID id, std::string text) = 0;

  protected:
    ~ControlSink() = default;
};

}  // namespace marrowby
