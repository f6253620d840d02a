// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/SharedNamespace.h"

namespace marrowby {

std::optional<std::string> sharedNamespace(std::optional<std::string> chosen,
                                           const std::optional<std::string>& testTag) {
    if (chosen || !testTag) return chosen;
    return "test-" + *testTag;
}

}  // namespace marrowby
