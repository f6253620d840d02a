// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Pages/WindowPage.h"

#include <QRectF>
#include <QWidget>
#include <optional>

class QPainter;

namespace marrowby {

/// Fills `place` with the middle of the picture, mirrored.
void paintMirrored(QPainter& painter, const windowrow::CameraPicture& picture, const QRectF& place);

/// The camera's picture with a frame around the face; grey before the first.
class CameraView final : public QWidget {
  public:
    explicit CameraView(QWidget* parent = nullptr);
    void show(const windowrow::Picture& picture);
    /// Within bounds.
    void setHeight(int height);
    [[nodiscard]] QSize sizeHint() const override { return {height_ * 16 / 9, height_}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    static constexpr int smallest = 90;
    static constexpr int largest = 260;

    std::optional<windowrow::CameraPicture> picture_;
    int height_ = largest;
};

}  // namespace marrowby
