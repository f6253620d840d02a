// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Tests/Platforms/Linux/MockServices.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QVariantMap>
#include <cstddef>

#include <gtest/gtest.h>
#include <unistd.h>

namespace marrowby {

inline constexpr const char* logindName = "org.freedesktop.login1";
inline constexpr const char* managerPath = "/org/freedesktop/login1";
inline constexpr const char* managerInterface = "org.freedesktop.login1.Manager";
inline constexpr const char* sessionPath = "/org/freedesktop/login1/session/c1";
inline constexpr const char* sessionInterface = "org.freedesktop.login1.Session";
inline constexpr const char* mockInterface = "org.freedesktop.DBus.Mock";

/// A mock logind with the session c1, on a bus of its own.
class MockLogind {
  public:
    explicit MockLogind(const PrivateBus& bus)
        : bus_(bus), program_(startMock(bus, logindName, {"--system", "--template", "logind"})) {
        call(managerPath, "AddSession", {"c1", "seat0", quint32{getuid()}, "somebody", true});
    }

    [[nodiscard]] bool isRunning() const { return program_ != nullptr; }

    QVariant call(const char* path, const char* method, const QVariantList& arguments) const {
        return bus_.call(logindName, path, mockInterface, method, arguments);
    }
    void setSession(const char* property, bool value) const {
        const QVariantMap changed{{property, value}};
        call(sessionPath, "UpdateProperties", {sessionInterface, changed});
    }
    void ofSession(const char* signal) const {
        call(sessionPath, "EmitSignal", {sessionInterface, signal, "", QVariantList()});
    }
    void prepareForSleep(bool isPreparing) const {
        call(managerPath, "EmitSignal",
             {managerInterface, "PrepareForSleep", "b", QVariantList{isPreparing}});
    }
    void announceSession() const {
        call(managerPath, "EmitSignal",
             {managerInterface, "SessionNew", "so",
              QVariantList{"c1", QVariant::fromValue(QDBusObjectPath(sessionPath))}});
    }
    /// An unlock request is carried out, a little later, as by a desktop.
    void obeyUnlock() const {
        const char* code =
            "from gi.repository import GLib\n"
            "GLib.timeout_add(20, lambda session=self, no=dbus.Boolean(False, variant_level=1):\n"
            "    session.UpdateProperties('org.freedesktop.login1.Session', {'LockedHint': no}))";
        call(sessionPath, "AddMethod", {sessionInterface, "Unlock", "", "", code});
    }
    /// As obeyUnlock(), at once.
    void obeyLock() const {
        const char* code =
            "yes = dbus.Boolean(True, variant_level=1)\n"
            "self.UpdateProperties('org.freedesktop.login1.Session', {'LockedHint': yes})";
        call(sessionPath, "AddMethod", {sessionInterface, "Lock", "", "", code});
    }
    /// Python code of the manager's method.
    void setAnswer(const char* method, const char* signature, const char* code) const {
        call(managerPath, "AddMethod", {managerInterface, method, signature, "o", code});
    }
    [[nodiscard]] std::size_t inhibitorCount() const {
        const QVariant reply =
            bus_.call(logindName, managerPath, managerInterface, "ListInhibitors");
        std::size_t count = 0;
        if (!reply.isValid()) {
            ADD_FAILURE() << "The mock does not answer.";
            return count;
        }
        const auto list = reply.value<QDBusArgument>();
        list.beginArray();
        for (; !list.atEnd(); ++count) {
            QString what;
            QString who;
            QString why;
            QString mode;
            list.beginStructure();
            list >> what >> who >> why >> mode;
            list.endStructure();
            EXPECT_EQ(what + " " + mode, "sleep delay");
        }
        list.endArray();
        return count;
    }

  private:
    const PrivateBus& bus_;
    MockService program_;
};

}  // namespace marrowby
