#pragma once

#include "Unlock/Pages/WindowPage.h"

#include <cstddef>
#include <string>

namespace marrowby {

/// Who is told what the user does to the controls of a window. The control may be gone afterwards.
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
