// SPDX-License-Identifier: Apache-2.0
#pragma once

// What this application uses of AVFoundation that is newer than the checked headers. A Mac never
// sees this file.

#include_next <AVFoundation/AVFoundation.h>

AVF_EXPORT AVCaptureDeviceType const AVCaptureDeviceTypeExternal API_AVAILABLE(macos(14.0));
AVF_EXPORT AVCaptureDeviceType const AVCaptureDeviceTypeContinuityCamera API_AVAILABLE(macos(14.0));
