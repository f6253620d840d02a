// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Desktop/PrivateBus.h"
#include "Simulation/Desktop/PrivateKeyring.h"

#include <QString>
#include <QStringList>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace marrowby {

/// Null when the bus or the mock services are not installed.
[[nodiscard]] std::unique_ptr<PrivateBus> startBusForMocks();

/// Runs a mock service, from a template or with its own object, until it owns its name; null on
/// failure. Destroying it kills it.
using MockService = std::unique_ptr<ChildProcess>;
[[nodiscard]] MockService startMock(const PrivateBus& bus, const QString& service,
                                    const QStringList& arguments);

/// The arguments of each call of a mock's method.
[[nodiscard]] std::vector<QVariantList> callsOfMock(const PrivateBus& bus, const QString& service,
                                                    const QString& path, const QString& method);

/// Null when the daemon is not installed or does not start.
[[nodiscard]] std::unique_ptr<PrivateKeyring> startKeyring(const PrivateBus& bus,
                                                           const std::filesystem::path& home,
                                                           const std::string& password);

inline constexpr const char* noPrivateBus = "Skipped: needs dbus-daemon and python3-dbusmock.";
inline constexpr const char* noKeyringDaemon = "Skipped: needs gnome-keyring.";

}  // namespace marrowby
