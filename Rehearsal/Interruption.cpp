#include "Rehearsal/Interruption.h"

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
    ::sigaction(SIGINT, &noting, &formerInterrupt_);
    ::sigaction(SIGTERM, &noting, &formerTerminate_);
}

Interruption::~Interruption() {
    ::sigaction(SIGINT, &formerInterrupt_, nullptr);
    ::sigaction(SIGTERM, &formerTerminate_, nullptr);
}

bool Interruption::hasCome() const {
    return interrupted != 0;
}

}  // namespace marrowby
