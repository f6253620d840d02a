// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/SwitchButton.h"

#include "Unlock/Linux/PageColors.h"

#include <QPainter>

namespace marrowby {

namespace {

/// Room for the focus ring.
constexpr int grooveMargin = 3;

}  // namespace

SwitchButton::SwitchButton(QWidget* parent) : QCheckBox(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize SwitchButton::sizeHint() const {
    const int height = fontMetrics().height() + 4;
    return {height * 9 / 5 + 2 * grooveMargin, height + 2 * grooveMargin};
}

bool SwitchButton::hitButton(const QPoint& point) const {
    return rect().contains(point);
}

void SwitchButton::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF groove =
        QRectF(rect()).adjusted(grooveMargin, grooveMargin, -grooveMargin, -grooveMargin);
    const double radius = groove.height() / 2;
    const QColor highlight = palette().color(QPalette::Highlight);
    const QColor off = pagecolors::mix(palette().color(QPalette::WindowText),
                                       palette().color(QPalette::Window), 0.38);
    if (hasFocus()) {
        painter.setPen(QPen(highlight, 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(groove.adjusted(-2, -2, 2, 2), radius + 2, radius + 2);
    }
    painter.setOpacity(isEnabled() ? 1 : 0.4);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isChecked() ? highlight : off);
    painter.drawRoundedRect(groove, radius, radius);
    painter.setBrush(Qt::white);
    const bool isAtRight = isChecked() == (layoutDirection() == Qt::LeftToRight);
    const double centre = isAtRight ? groove.right() - radius : groove.left() + radius;
    painter.drawEllipse(QPointF(centre, groove.center().y()), radius - 2.5, radius - 2.5);
}

}  // namespace marrowby
