// SPDX-License-Identifier: Apache-2.0

// Fakes the functions of the private SkyLight framework. The linker redirects dlopen here.

#include "Tests/MacOnLinux/SkyLight.h"

#include "Platforms/macOS/Rules/SkyLightSpace.h"

#include <cstring>

#import <Foundation/Foundation.h>
#include <dlfcn.h>

namespace marrowby {

std::vector<std::string>& skyLightCalls() {
    static std::vector<std::string> calls;
    return calls;
}

}  // namespace marrowby

namespace {

using Connection = marrowby::SkyLightFunctions::Connection;
using Space = marrowby::SkyLightFunctions::Space;

void said(const std::string& call) {
    marrowby::skyLightCalls().push_back(call);
}

std::string numbers(CFArrayRef array) {
    // Reads the object here, so that AddressSanitizer checks it: GNUstep is not instrumented.
    (void)*reinterpret_cast<const volatile char*>(array);
    std::string text = "[";
    for (NSNumber* number in (__bridge NSArray*)array)
        text += (text.size() > 1 ? " " : "") + std::to_string(number.longLongValue);
    return text + "]";
}

}  // namespace

extern "C" {

Connection SLSMainConnectionID() {
    return 7;
}
Space SLSSpaceCreate(Connection /*connection*/, std::int32_t one, std::int32_t zero) {
    said("create " + std::to_string(one) + " " + std::to_string(zero));
    return 9;
}
std::int32_t SLSSpaceSetAbsoluteLevel(Connection /*connection*/, Space space, std::int32_t level) {
    said("level " + std::to_string(space) + " " + std::to_string(level));
    return 0;
}
std::int32_t SLSShowSpaces(Connection /*connection*/, CFArrayRef spaces) {
    said("show " + numbers(spaces));
    return 0;
}
std::int32_t SLSSpaceAddWindowsAndRemoveFromSpaces(Connection /*connection*/, Space space,
                                                   CFArrayRef windows, std::int32_t options) {
    said("add " + std::to_string(space) + " " + numbers(windows) + " " + std::to_string(options));
    return 0;
}
std::int32_t SLSRemoveWindowsFromSpaces(Connection /*connection*/, CFArrayRef windows,
                                        CFArrayRef spaces) {
    said("remove " + numbers(windows) + " " + numbers(spaces));
    return 0;
}

void* __real_dlopen(const char* path, int mode);

void* __wrap_dlopen(const char* path, int mode) {
    const bool isSkyLight = path && std::strcmp(path, marrowby::skylight::path) == 0;
    // The functions are defined in this program.
    return __real_dlopen(isSkyLight ? nullptr : path, mode);
}
}
