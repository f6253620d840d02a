#pragma once

#include "Tests/Platforms/Linux/TemporaryFolder.h"

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QVariantList>
#include <memory>
#include <string>

namespace marrowby {

/// A D-Bus bus for one test, and mock services on it.
class PrivateBus {
  public:
    struct Kill {
        void operator()(QProcess* process) const;
    };
    using Program = std::unique_ptr<QProcess, Kill>;

    /// Null when the bus or the mock services are not installed.
    [[nodiscard]] static std::unique_ptr<PrivateBus> start();

    [[nodiscard]] std::string address() const;
    /// Kills the bus, as in a crash. Mock services end with it.
    void kill() { daemon_.reset(); }
    /// Restarts it at the same address; false on failure.
    [[nodiscard]] bool startDaemon();

    /// Runs a mock service, from a template or with its own object, until it owns its name; null on
    /// failure. Destroying it kills it.
    [[nodiscard]] Program mock(const QString& service, const QStringList& arguments) const;

    /// The same for any program, with this bus in its environment.
    [[nodiscard]] Program serve(const QString& service, const QString& program,
                                const QStringList& arguments, QProcessEnvironment environment,
                                const QByteArray& input = {}) const;

    /// Blocking call; the reply's first value, or an invalid QVariant for an error.
    QVariant call(const QString& service, const QString& path, const QString& interface,
                  const QString& method, const QVariantList& arguments = {}) const;

  private:
    PrivateBus() = default;
    [[nodiscard]] bool hasOwner(const QString& service) const;

    TemporaryFolder folder_;
    Program daemon_;
};

inline constexpr const char* noPrivateBus = "Skipped: needs dbus-daemon and python3-dbusmock.";

}  // namespace marrowby
