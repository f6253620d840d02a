// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/PanelPainter.h"

#include <QColor>
#include <QCoreApplication>
#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>
#include <QPen>
#include <QPolygonF>
#include <QString>
#include <algorithm>
#include <cmath>
#include <variant>

namespace marrowby::panelpainter {
namespace {

/// QPainter counts in sixteenths of a degree.
constexpr double fullTurn = 360 * 16;

QColor qColor(const PanelColor& color) {
    return QColor::fromRgbF(float(color.red), float(color.green), float(color.blue),
                            float(color.alpha));
}

QPen pen(const PanelColor& color, double width) {
    return {qColor(color), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

struct Brush {
    QPainter& painter;

    void operator()(const panelshape::RoundedRectangle& shape) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(qColor(shape.color));
        painter.drawRoundedRect(
            QRectF(shape.frame.x, shape.frame.y, shape.frame.width, shape.frame.height),
            shape.radius, shape.radius);
    }
    void operator()(const panelshape::Arc& shape) {
        painter.setPen(pen(shape.color, shape.width));
        painter.setBrush(Qt::NoBrush);
        const QRectF box(shape.centre.x - shape.radius, shape.centre.y - shape.radius,
                         2 * shape.radius, 2 * shape.radius);
        // Qt's arcs start at 3 o'clock and run anticlockwise.
        painter.drawArc(box, int(std::lround((0.25 - shape.begin) * fullTurn)),
                        -int(std::lround(shape.length * fullTurn)));
    }
    void operator()(const panelshape::Polyline& shape) {
        painter.setPen(pen(shape.color, shape.width));
        painter.setBrush(Qt::NoBrush);
        QPolygonF points;
        for (const Point& point : shape.points)
            points.append({point.x, point.y});
        painter.drawPolyline(points);
    }
    void operator()(const panelshape::Dot& shape) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(qColor(shape.color));
        painter.drawEllipse(QPointF(shape.centre.x, shape.centre.y), shape.radius, shape.radius);
    }
    void operator()(const panelshape::Text& shape) {
        QFont font = QGuiApplication::font();
        font.setPixelSize(std::max(1, int(std::lround(shape.size))));
        const QFontMetricsF metrics(font);
        const QString text = QString::fromStdString(shape.text);
        const double width = metrics.horizontalAdvance(text);
        if (!(width > 0 && shape.frame.width > 0)) return;
        const double shrunk = std::min(1.0, shape.frame.width / width);
        painter.save();
        painter.setFont(font);
        painter.setPen(qColor(shape.color));
        painter.translate(shape.frame.x, shape.frame.centre().y);
        painter.scale(shrunk, shrunk);
        painter.drawText(QPointF(0, (metrics.ascent() - metrics.descent()) / 2), text);
        painter.restore();
    }
};

}  // namespace

bool canPaint() {
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}

QImage paint(const PanelDrawing& drawing, const Size& size, double scale) {
    QImage image(int(std::ceil(size.width * scale)), int(std::ceil(size.height * scale)),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    for (const PanelShape& shape : drawing)
        std::visit(Brush{.painter = painter}, shape);
    return image;
}

}  // namespace marrowby::panelpainter
