// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/ProcessSignals.h"

#include <QSocketNotifier>
#include <utility>

#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace marrowby {

namespace {

constexpr int endings[] = {SIGTERM, SIGINT, SIGHUP};

sigset_t endingSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int ending : endings)
        sigaddset(&set, ending);
    return set;
}

sigset_t allSignals() {
    sigset_t set = endingSignals();
    sigaddset(&set, ProcessSignals::reopenSignal);
    return set;
}

}  // namespace

const int ProcessSignals::reopenSignal = SIGUSR1;

ProcessSignals::ProcessSignals() {
    const sigset_t wanted = allSignals();
    ::pthread_sigmask(SIG_BLOCK, &wanted, nullptr);
    // A closed pipe becomes a write error (EPIPE).
    ::signal(SIGPIPE, SIG_IGN);
    descriptor_ = ::signalfd(-1, &wanted, SFD_CLOEXEC | SFD_NONBLOCK);
}

ProcessSignals::~ProcessSignals() {
    notifier_.reset();
    if (descriptor_ >= 0) ::close(descriptor_);
}

void ProcessSignals::start(std::function<void()> onTerminate, std::function<void()> onReopen) {
    onTerminate_ = std::move(onTerminate);
    onReopen_ = std::move(onReopen);
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [this] { read(); });
}

void ProcessSignals::read() {
    signalfd_siginfo info{};
    while (::read(descriptor_, &info, sizeof info) == sizeof info) {
        if (static_cast<int>(info.ssi_signo) == reopenSignal) {
            onReopen_();
            continue;
        }
        const sigset_t ending = endingSignals();
        ::pthread_sigmask(SIG_UNBLOCK, &ending, nullptr);
        if (auto terminate = std::exchange(onTerminate_, nullptr)) terminate();
    }
}

}  // namespace marrowby
