// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/PanelDrawing.h"

#include <QImage>

namespace marrowby::panelpainter {

/// Whether text can be drawn: it needs a QGuiApplication, on any platform plugin.
[[nodiscard]] bool canPaint();

/// Size in pixels, `scale` pixels to a point; premultiplied alpha. Main thread.
[[nodiscard]] QImage paint(const PanelDrawing& drawing, const Size& size, double scale);

}  // namespace marrowby::panelpainter
