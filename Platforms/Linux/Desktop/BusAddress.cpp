// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/BusAddress.h"

#include <cstdlib>

namespace marrowby::busaddress {
namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string ofSocket(const std::string& path) {
    return "unix:path=" + path;
}

}  // namespace

std::string system() {
    std::string address = environment("DBUS_SYSTEM_BUS_ADDRESS");
    return address.empty() ? ofSocket("/run/dbus/system_bus_socket") : address;
}

std::string session() {
    std::string address = environment("DBUS_SESSION_BUS_ADDRESS");
    const std::string runtime = environment("XDG_RUNTIME_DIR");
    if (!address.empty() || runtime.empty()) return address;
    return ofSocket(runtime + "/bus");
}

}  // namespace marrowby::busaddress
