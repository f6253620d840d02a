#pragma once

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/PanelDrawing.h"

#include <QImage>

namespace marrowby::panelpainter {

/// Text needs a QGuiApplication, on whatever platform.
[[nodiscard]] bool canPaint();

/// In pixels, `scale` to a point; premultiplied. For the adapters of this folder only. Main thread.
[[nodiscard]] QImage paint(const PanelDrawing& drawing, const Size& size, double scale);

}  // namespace marrowby::panelpainter
