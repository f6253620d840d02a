// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/ModelFiles.h"

namespace marrowby {

class OnnxModelFiles final : public ModelFiles {
  public:
    [[nodiscard]] std::expected<ModelFileFacts, std::string> facts(
        const std::filesystem::path& file) const override;
};

}  // namespace marrowby
