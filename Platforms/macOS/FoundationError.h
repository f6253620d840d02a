// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/FoundationText.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <string>

namespace marrowby {

[[nodiscard]] inline std::string sentence(NSError* error) {
    return error ? plainText(error.localizedDescription) : translated("unknown error");
}

[[nodiscard]] inline std::string sentence(NSException* exception) {
    return plainText(exception.reason ? exception.reason : exception.name);
}

}  // namespace marrowby
