// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Addresses of the D-Bus buses, from the environment. Main thread.
namespace marrowby::busaddress {

[[nodiscard]] std::string system();

/// Empty when there is no session bus; never launches one.
[[nodiscard]] std::string session();

}  // namespace marrowby::busaddress
