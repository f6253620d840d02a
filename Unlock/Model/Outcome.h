// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <expected>
#include <functional>
#include <string>

namespace marrowby {

/// Done, or the sentence for the user that says why not.
using Outcome = std::expected<void, std::string>;
using Completion = std::function<void(Outcome)>;

}  // namespace marrowby
