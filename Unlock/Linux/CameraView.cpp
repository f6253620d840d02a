// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/CameraView.h"

#include "Unlock/Linux/PageColors.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <utility>

namespace marrowby {

namespace {

constexpr double pictureCorner = 10;

/// Shares the bytes, which outlive it.
QImage imageOf(const Bitmap& bitmap) {
    const bool isRgb = bitmap.format() == rgba8 || bitmap.format() == rgbx8;
    if (!isRgb && bitmap.format() != bgrx8) return {};
    return {bitmap.bytes().data(), bitmap.width(), bitmap.height(),
            static_cast<qsizetype>(bitmap.bytesPerRow()),
            isRgb ? QImage::Format_RGBX8888 : QImage::Format_RGB32};
}

/// From the picture's pixels into `place`, which it fills.
QTransform filling(const Bitmap& bitmap, const QRectF& place) {
    const double scale = std::max(place.width() / bitmap.width(), place.height() / bitmap.height());
    QTransform transform;
    transform.translate(place.center().x(), place.center().y());
    transform.scale(-scale, scale);
    transform.translate(-bitmap.width() / 2.0, -bitmap.height() / 2.0);
    return transform;
}

}  // namespace

void paintMirrored(QPainter& painter, const windowrow::CameraPicture& picture,
                   const QRectF& place) {
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setTransform(filling(picture.image, place), true);
    painter.drawImage(QPointF(0, 0), imageOf(picture.image));
    painter.restore();
}

CameraView::CameraView(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void CameraView::show(const windowrow::Picture& picture) {
    setAccessibleName(QString::fromStdString(picture.title));
    if (picture_ == picture.picture) return;
    picture_ = picture.picture;
    update();
}

void CameraView::setHeight(int height) {
    height = std::clamp(height, smallest, largest);
    if (std::exchange(height_, height) != height) updateGeometry();
}

void CameraView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath outline;
    outline.addRoundedRect(rect(), pictureCorner, pictureCorner);
    painter.setClipPath(outline);
    painter.fillRect(rect(), pagecolors::mix(palette().color(QPalette::WindowText),
                                             palette().color(QPalette::Window), 0.16));
    if (!picture_) return;
    paintMirrored(painter, *picture_, rect());
    if (!picture_->face) return;
    const Rect& face = *picture_->face;
    painter.setPen(QPen(pagecolors::good(palette()), 2));
    painter.drawRoundedRect(
        filling(picture_->image, rect()).mapRect(QRectF(face.x, face.y, face.width, face.height)),
        pictureCorner, pictureCorner);
}

}  // namespace marrowby
