// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <expected>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace marrowby {

/// A file descriptor that closes itself.
class OwnedFile {
  public:
    OwnedFile() = default;
    explicit OwnedFile(int descriptor) : descriptor_(descriptor) {}
    OwnedFile(OwnedFile&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    OwnedFile& operator=(OwnedFile&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    OwnedFile(const OwnedFile&) = delete;
    OwnedFile& operator=(const OwnedFile&) = delete;
    ~OwnedFile() { close(); }

    [[nodiscard]] int get() const { return descriptor_; }
    void close();

  private:
    int descriptor_ = -1;
};

struct Pipe {
    OwnedFile reading;
    OwnedFile writing;
    [[nodiscard]] static std::expected<Pipe, std::string> create();
    /// Blocks for a line; empty when the writers end, or are silent for `limit`, before its end.
    [[nodiscard]] std::string readLine(TimeInterval limit) const;
};

/// A running program in its own session, which the terminal's interrupt does not reach. Destroying
/// it ends and reaps it. One thread moves and ends it; isRunning() is for any.
class ChildProcess {
  public:
    struct Program {
        /// The first is looked up in PATH.
        std::vector<std::string> arguments;
        /// NAME=value; added to this process's own environment.
        std::vector<std::string> environment;
        /// Descriptors of this process that become the child's 0 to 3; the null device where none.
        int standardInput = -1;
        int standardOutput = -1;
        int standardError = -1;
        int third = -1;
        /// Sent when the starting thread ends, and to end the program. 0: it outlives us and ends
        /// by itself.
        int endSignal = 0;
    };

    /// Fails with a sentence where the program is missing or cannot run.
    [[nodiscard]] static std::expected<ChildProcess, std::string> start(const Program& program);

    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    [[nodiscard]] pid_t id() const { return id_; }
    /// Becomes readable when the program has ended.
    [[nodiscard]] int endDescriptor() const { return end_.get(); }
    [[nodiscard]] bool isRunning() const;
    /// False when it still runs after `limit`.
    bool waitEnded(TimeInterval limit) const;
    /// Of a program that has ended: its status, or nothing when a signal ended it.
    [[nodiscard]] std::optional<int> exitStatus() const;
    void send(int signal) const;

  private:
    ChildProcess(pid_t id, OwnedFile end, int endSignal)
        : id_(id), end_(std::move(end)), endSignal_(endSignal) {}

    pid_t id_ = -1;
    OwnedFile end_;
    int endSignal_ = 0;
};

}  // namespace marrowby
