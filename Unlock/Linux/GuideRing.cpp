// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/GuideRing.h"

#include "Unlock/Linux/CameraView.h"
#include "Unlock/Linux/PageColors.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <utility>

namespace marrowby {

namespace {

constexpr int marks = 72;
constexpr double markLength = 13;

/// A head and shoulders, centred in a ring of radius 1.
QPainterPath person() {
    QPainterPath path;
    path.addEllipse(QPointF(0, -0.16), 0.26, 0.32);
    QPainterPath shoulders;
    shoulders.moveTo(-0.52, 0.68);
    shoulders.cubicTo(-0.46, 0.36, -0.24, 0.28, 0, 0.28);
    shoulders.cubicTo(0.24, 0.28, 0.46, 0.36, 0.52, 0.68);
    shoulders.closeSubpath();
    path.addPath(shoulders);
    return path;
}

}  // namespace

GuideRing::GuideRing(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void GuideRing::show(const windowrow::Guide& guide) {
    if (guide == guide_) return;
    guide_ = guide;
    setAccessibleName(QString::fromStdString(translated("Captured")));
    setAccessibleDescription(
        QStringLiteral("%1 %").arg(static_cast<int>(std::clamp(guide.progress, 0.0, 1.0) * 100)));
    update();
}

void GuideRing::setSide(int side) {
    side = std::clamp(side, smallest, largest);
    if (std::exchange(side_, side) != side) updateGeometry();
}

void GuideRing::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(width() / 2.0, height() / 2.0);
    const double radius = std::min(width(), height()) / 2.0 - 6;
    const QColor done =
        guide_.progress >= 1 ? pagecolors::good(palette()) : palette().color(QPalette::Highlight);
    const QColor toDo = pagecolors::mix(palette().color(QPalette::WindowText),
                                        palette().color(QPalette::Window), 0.24);

    // Progress as tick marks, clockwise from the top.
    const double reached = std::clamp(guide_.progress, 0.0, 1.0) * marks;
    for (int mark = 0; mark < marks; ++mark) {
        const bool isDone = mark < reached;
        painter.save();
        painter.rotate(360.0 * mark / marks);
        painter.setPen(QPen(isDone ? done : toDo, isDone ? 3.6 : 2.2, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(0, -radius), QPointF(0, -radius + markLength));
        painter.restore();
    }

    const double inner = radius - markLength - 10;
    painter.save();
    if (guide_.picture) {
        QPainterPath circle;
        circle.addEllipse(QPointF(), inner, inner);
        painter.setClipPath(circle);
        paintMirrored(painter, *guide_.picture, circle.boundingRect());
    }
    painter.restore();

    painter.save();
    painter.scale(inner * 0.86, inner * 0.86);
    painter.setPen(Qt::NoPen);
    painter.setBrush(pagecolors::mix(palette().color(QPalette::WindowText),
                                     palette().color(QPalette::Window), 0.16));
    if (!guide_.picture) painter.drawPath(person());
    painter.restore();

    if (!guide_.direction) return;
    painter.rotate(*guide_.direction);
    painter.setPen(QPen(done, 5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const double tip = -radius + markLength + 9;
    painter.drawLine(QPointF(0, tip + 26), QPointF(0, tip));
    painter.drawPolyline(QPolygonF({{-11, tip + 11}, {0, tip}, {11, tip + 11}}));
}

}  // namespace marrowby
