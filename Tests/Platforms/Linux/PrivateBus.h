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

/// A message bus for one test, and mock services on it.
class PrivateBus {
  public:
    struct Kill {
        void operator()(QProcess* process) const;
    };
    using Program = std::unique_ptr<QProcess, Kill>;

    /// Nothing where the bus or the mock services are not installed.
    [[nodiscard]] static std::unique_ptr<PrivateBus> start();

    [[nodiscard]] std::string address() const;
    /// Ends the bus at once, as a crash would. Mock services end with it.
    void kill() { daemon_.reset(); }
    /// At the same address. False when it does not come up.
    [[nodiscard]] bool startDaemon();

    /// Runs a mock service until it has its name, from a template or with an object of its own;
    /// absent when it does not come up. Destroying it kills it.
    [[nodiscard]] Program mock(const QString& service, const QStringList& arguments) const;

    /// Runs any program in the same way, with this bus in its environment.
    [[nodiscard]] Program serve(const QString& service, const QString& program,
                                const QStringList& arguments, QProcessEnvironment environment,
                                const QByteArray& input = {}) const;

    /// Calls and waits; what came back first, nothing in an error.
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
