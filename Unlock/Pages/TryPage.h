// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Model/TryOut.h"
#include "Unlock/Pages/WindowPage.h"

namespace marrowby {

/// What a look sees and thinks. Its one button is WindowControl::cancel.
[[nodiscard]] WindowPage tryPage(const TryOut::View& view);

}  // namespace marrowby
