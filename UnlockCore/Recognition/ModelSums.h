#pragma once

#include <map>
#include <string>

namespace marrowby {

/// Networks that work together: the SHA-256 of each one's file, 64 lower-case digits, by its role.
using ModelSums = std::map<std::string, std::string>;

}  // namespace marrowby
