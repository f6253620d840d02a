#pragma once

// GNUstep's has no type of element; declared anew in AppKit.h.
#define screens screensOfAnyType
#include_next <AppKit/NSScreen.h>
#undef screens
