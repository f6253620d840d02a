// SPDX-License-Identifier: Apache-2.0
#pragma once

// GNUstep's declaration has no element type; AppKit.h redeclares it.
#define screens screensOfAnyType
#include_next <AppKit/NSScreen.h>
#undef screens
