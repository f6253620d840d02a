// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/ChildProcess.h"

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace marrowby {

namespace {

constexpr TimeInterval patience{2.0};

std::string systemText(int error) {
    return std::generic_category().message(error);
}

std::optional<std::string> findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) return name;
    const char* path = std::getenv("PATH");
    std::string_view folders = path != nullptr ? path : "/usr/bin:/bin";
    while (!folders.empty()) {
        const std::size_t colon = folders.find(':');
        const std::filesystem::path file = std::filesystem::path(folders.substr(0, colon)) / name;
        if (::access(file.c_str(), X_OK) == 0) return file.string();
        folders = colon == std::string_view::npos ? "" : folders.substr(colon + 1);
    }
    return std::nullopt;
}

/// Pointers into `strings`, as exec wants them.
std::vector<char*> pointers(std::vector<std::string>& strings) {
    std::vector<char*> result;
    result.reserve(strings.size() + 1);
    for (auto& text : strings)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

std::vector<std::string> mergedEnvironment(const std::vector<std::string>& added) {
    const auto isReplaced = [&](std::string_view entry) {
        for (const auto& text : added) {
            if (entry.starts_with(std::string_view(text).substr(0, text.find('=') + 1)))
                return true;
        }
        return false;
    };
    std::vector<std::string> result = added;
    for (char** entry = ::environ; *entry != nullptr; ++entry) {
        if (!isReplaced(*entry)) result.emplace_back(*entry);
    }
    return result;
}

struct Launch {
    const char* file;
    char* const* arguments;
    char* const* environment;
    std::array<int, 4> descriptors;
    int endSignal;
    pid_t parent;
    int failures;
};

/// In the child, between fork and exec: only calls that are safe there.
[[noreturn]] void becomeProgram(const Launch& launch) {
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    ::setsid();
    if (launch.endSignal != 0) {
        ::prctl(PR_SET_PDEATHSIG, launch.endSignal);
        if (::getppid() != launch.parent) ::_exit(127);
    }
    // Duplicated first, so that no target overwrites a source.
    std::array<int, 4> sources{};
    for (std::size_t i = 0; i < sources.size(); ++i) {
        sources[i] = launch.descriptors[i] < 0 ? -1 : ::fcntl(launch.descriptors[i], F_DUPFD, 16);
    }
    const int failures = ::fcntl(launch.failures, F_DUPFD_CLOEXEC, 16);
    ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    for (std::size_t i = 0; i < sources.size(); ++i) {
        if (sources[i] >= 0) ::dup2(sources[i], static_cast<int>(i));
    }
    ::execve(launch.file, launch.arguments, launch.environment);
    const int error = errno;
    [[maybe_unused]] const auto written = ::write(failures, &error, sizeof error);
    ::_exit(127);
}

}  // namespace

void OwnedFile::close() {
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

std::expected<Pipe, std::string> Pipe::create() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::unexpected("No pipe could be made: " + systemText(errno) + ".");
    }
    return Pipe{.reading = OwnedFile(ends[0]), .writing = OwnedFile(ends[1])};
}

std::string Pipe::readLine(TimeInterval limit) const {
    std::string line;
    while (true) {
        pollfd wanted{.fd = reading.get(), .events = POLLIN, .revents = 0};
        char character = 0;
        if (::poll(&wanted, 1, static_cast<int>(limit.count() * 1000)) <= 0 ||
            ::read(reading.get(), &character, 1) != 1) {
            return {};
        }
        if (character == '\n') return line;
        line += character;
    }
}

std::expected<ChildProcess, std::string> ChildProcess::start(const Program& program) {
    const std::string& name = program.arguments.front();
    const auto file = findProgram(name);
    if (!file) return std::unexpected(name + " is not installed.");
    auto failures = Pipe::create();
    if (!failures) return std::unexpected(failures.error());
    const OwnedFile nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));

    std::vector<std::string> arguments = program.arguments;
    std::vector<std::string> environment = mergedEnvironment(program.environment);
    const std::vector<char*> argumentPointers = pointers(arguments);
    const std::vector<char*> environmentPointers = pointers(environment);
    const auto orNothing = [&](int descriptor) {
        return descriptor >= 0 ? descriptor : nothing.get();
    };
    const Launch launch{
        .file = file->c_str(),
        .arguments = argumentPointers.data(),
        .environment = environmentPointers.data(),
        .descriptors = {orNothing(program.standardInput), orNothing(program.standardOutput),
                        orNothing(program.standardError), program.third},
        .endSignal = program.endSignal,
        .parent = ::getpid(),
        .failures = failures->writing.get()};
    const pid_t child = ::fork();
    if (child == 0) becomeProgram(launch);
    if (child < 0)
        return std::unexpected(name + " could not be started: " + systemText(errno) + ".");

    // Not reaped yet, so the id cannot have passed to another process.
    OwnedFile end(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
    const int endError = end.get() < 0 ? errno : 0;
    ChildProcess process(child, std::move(end), program.endSignal);
    failures->writing.close();
    int error = 0;
    const auto count = ::read(failures->reading.get(), &error, sizeof error);
    if (count == static_cast<ssize_t>(sizeof error) || endError != 0) {
        process.endSignal_ = SIGKILL;
        return std::unexpected(
            name + " could not be started: " + systemText(endError != 0 ? endError : error) + ".");
    }
    return process;
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : id_(std::exchange(other.id_, -1)),
      end_(std::move(other.end_)),
      endSignal_(other.endSignal_) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    std::swap(id_, other.id_);
    std::swap(end_, other.end_);
    std::swap(endSignal_, other.endSignal_);
    return *this;
}

ChildProcess::~ChildProcess() {
    if (id_ < 0) return;
    if (endSignal_ != 0) send(endSignal_);
    if (!waitEnded(patience)) send(SIGKILL);
    while (::waitpid(id_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

bool ChildProcess::isRunning() const {
    return !waitEnded(TimeInterval(0));
}

bool ChildProcess::waitEnded(TimeInterval limit) const {
    pollfd wanted{.fd = end_.get(), .events = POLLIN, .revents = 0};
    return ::poll(&wanted, 1, static_cast<int>(std::ceil(limit.count() * 1000))) > 0;
}

std::optional<int> ChildProcess::exitStatus() const {
    siginfo_t info{};
    // The destructor reaps it.
    if (::waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
        info.si_code != CLD_EXITED) {
        return std::nullopt;
    }
    return info.si_status;
}

void ChildProcess::send(int signal) const {
    ::kill(id_, signal);
}

}  // namespace marrowby
