#pragma once

#include <string>

/// Where the user's buses listen, by the environment. Main thread.
namespace marrowby::busaddress {

[[nodiscard]] std::string system();

/// Empty where there is none: nothing is launched for the asking.
[[nodiscard]] std::string session();

}  // namespace marrowby::busaddress
