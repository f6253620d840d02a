// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Rehearsal/Transcript.h"

#include <iomanip>
#include <iostream>

namespace marrowby {

void Transcript::heading(std::string_view text) {
    std::cout << '\n' << text << '\n' << std::flush;
}

void Transcript::scene(std::string_view text) {
    line("scene ", text);
}

void Transcript::engine(std::string_view text) {
    line("engine", text);
}

void Transcript::line(std::string_view source, std::string_view text) {
    std::cout << std::fixed << std::setprecision(3) << std::setw(9)
              << (clock_.now() - begin_).count() << " s  " << source << "  " << text << '\n'
              << std::flush;
}

}  // namespace marrowby
