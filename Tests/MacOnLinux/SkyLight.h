#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace marrowby {

/// What was asked of the window server that stands in for the Mac's, in words.
std::vector<std::string>& skyLightCalls();

}  // namespace marrowby
