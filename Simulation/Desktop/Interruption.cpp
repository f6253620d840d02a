// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/Interruption.h"

#include <cstddef>

namespace marrowby {

namespace {

volatile sig_atomic_t interrupted = 0;

extern "C" void noteInterruption(int /*signal*/) {
    interrupted = 1;
}

}  // namespace

Interruption::Interruption() {
    interrupted = 0;
    struct sigaction noting{};
    noting.sa_handler = noteInterruption;
    for (std::size_t i = 0; i < signals.size(); ++i)
        ::sigaction(signals.at(i), &noting, &former_.at(i));
}

Interruption::~Interruption() {
    for (std::size_t i = 0; i < signals.size(); ++i)
        ::sigaction(signals.at(i), &former_.at(i), nullptr);
}

bool Interruption::hasCome() const {
    return interrupted != 0;
}

}  // namespace marrowby
