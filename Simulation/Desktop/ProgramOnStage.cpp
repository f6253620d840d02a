// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/ProgramOnStage.h"

#include <array>
#include <utility>

#include <signal.h>
#include <unistd.h>

namespace marrowby {

std::expected<std::unique_ptr<ProgramOnStage>, std::string> ProgramOnStage::start(
    const std::filesystem::path& program, std::vector<std::string> arguments,
    std::vector<std::string> environment, std::function<void(const std::string& line)> onLine) {
    auto orders = Pipe::create();
    if (!orders) return std::unexpected(orders.error());
    auto answers = Pipe::create();
    if (!answers) return std::unexpected(answers.error());
    arguments.insert(arguments.begin(), program.string());
    auto process = ChildProcess::start({.arguments = std::move(arguments),
                                        .environment = std::move(environment),
                                        .standardInput = orders->reading.get(),
                                        .standardOutput = answers->writing.get(),
                                        .standardError = STDERR_FILENO,
                                        .endSignal = SIGTERM});
    if (!process) return std::unexpected(process.error());
    return std::unique_ptr<ProgramOnStage>(
        new ProgramOnStage(*std::move(process), std::move(orders->writing),
                           std::move(answers->reading), std::move(onLine)));
}

ProgramOnStage::ProgramOnStage(ChildProcess process, OwnedFile orders, OwnedFile answers,
                               std::function<void(const std::string& line)> onLine)
    : orders_(std::move(orders)),
      answers_(std::move(answers)),
      onLine_(std::move(onLine)),
      notifier_(answers_.get(), QSocketNotifier::Read),
      process_(std::move(process)) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] { read(); });
}

bool ProgramOnStage::order(const std::string& line) const {
    const std::string whole = line + "\n";
    return ::write(orders_.get(), whole.data(), whole.size()) == static_cast<ssize_t>(whole.size());
}

void ProgramOnStage::read() {
    std::array<char, 4096> buffer{};
    const ssize_t size = ::read(answers_.get(), buffer.data(), buffer.size());
    if (size <= 0) {
        notifier_.setEnabled(false);
        return;
    }
    unread_.append(buffer.data(), static_cast<std::size_t>(size));
    for (auto end = unread_.find('\n'); end != std::string::npos; end = unread_.find('\n')) {
        const std::string line = unread_.substr(0, end);
        unread_.erase(0, end + 1);
        onLine_(line);
    }
}

}  // namespace marrowby
