// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Camera/PixelBuffer.h"

#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// A labelled sequence of pictures of one face.
struct Take {
    enum class Purpose { enrolment, genuine, attack };

    struct Label {
        Purpose purpose = Purpose::genuine;
        /// Of an attack: with what.
        std::string attack;
        /// Who is there, or whom the attack shows.
        std::string person;
        std::string name;
        /// Of somebody genuine: turns the head when strict mode asks, as soon as the take begins.
        bool turnsWhenAsked = true;
    };

    Label label;
    double framesPerSecond = 30;
    std::size_t pictureCount = 0;
    /// Reads one; the error is one sentence.
    std::function<std::expected<std::shared_ptr<const PixelBuffer>, std::string>(std::size_t)>
        picture;
};

}  // namespace marrowby
