// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/FilmReel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace marrowby {

FilmReel::FilmReel(SceneFilm film, TimeInterval frameTime, int width, int height)
    : frameTime_(frameTime) {
    const auto count = std::max<std::size_t>(2, static_cast<std::size_t>(length / frameTime));
    pictures_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const TimeInterval at = frameTime * static_cast<double>(i);
        pictures_.push_back(film.shoot({.at = at,
                                        .running = at,
                                        .frameTime = frameTime,
                                        .width = width,
                                        .height = height})
                                .picture);
    }
}

std::shared_ptr<const PixelBuffer> FilmReel::at(TimeInterval running) const {
    const std::size_t last = pictures_.size() - 1;
    const auto step = static_cast<std::size_t>(std::llround(std::max(0.0, running / frameTime_)));
    const std::size_t place = step % (2 * last);
    return pictures_[place <= last ? place : 2 * last - place];
}

}  // namespace marrowby
