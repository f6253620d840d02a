// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Desktop/ChildProcess.h"
#include "Simulation/Desktop/PrivateFolder.h"

#include <QString>
#include <QVariant>
#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace marrowby {

/// A D-Bus bus of its own, and services on it. It ends when this is destroyed, and when the
/// creating thread ends. One thread.
class PrivateBus {
  public:
    /// Whether a call starts the services that are installed on this machine.
    enum class Installed { started, unknown };

    /// Blocks until the bus answers. `environment`: of services that it starts. The error is a
    /// sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<PrivateBus>, std::string> create(
        Installed services, std::vector<std::string> environment = {});

    [[nodiscard]] std::string address() const;
    /// Kills the bus, as in a crash. Its services end with it.
    void kill() { daemon_.reset(); }
    [[nodiscard]] bool isRunning() const { return daemon_ && daemon_->isRunning(); }
    /// Starts it again at the same address.
    [[nodiscard]] std::expected<void, std::string> startDaemon();

    /// Runs a program, with this bus in its environment and `input` at its standard input, until it
    /// owns the name `service`, at most a minute. The error is a sentence for the user.
    [[nodiscard]] std::expected<ChildProcess, std::string> serve(const std::string& service,
                                                                 ChildProcess::Program program,
                                                                 std::string_view input = {}) const;

    /// Blocking call; the reply's first value, or an invalid QVariant for an error.
    QVariant call(const QString& service, const QString& path, const QString& interface,
                  const QString& method, const QVariantList& arguments = {}) const;

  private:
    PrivateBus(PrivateFolder folder, std::vector<std::string> environment)
        : folder_(std::move(folder)), environment_(std::move(environment)) {}

    const PrivateFolder folder_;
    const std::vector<std::string> environment_;
    std::unique_ptr<ChildProcess> daemon_;
};

}  // namespace marrowby
