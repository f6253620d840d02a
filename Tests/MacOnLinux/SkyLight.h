// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace marrowby {

/// Calls made to the fake window server, as text.
std::vector<std::string>& skyLightCalls();

}  // namespace marrowby
