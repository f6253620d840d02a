// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Rehearsal/ContactSheet.h"

#include <QPainter>
#include <algorithm>

namespace marrowby {

namespace {

constexpr int columns = 6;
constexpr int gap = 8;
constexpr QSize cameraSize{232, 174};
/// The part of the screen around the island.
constexpr QSize islandSize{464, 104};
constexpr int islandHeight = islandSize.height() * cameraSize.width() / islandSize.width();
constexpr int captionHeight = 34;
constexpr QSize cell{cameraSize.width() + gap,
                     cameraSize.height() + islandHeight + captionHeight + gap};
constexpr QRgb paper = 0xFF1B1D21;
constexpr QRgb nothing = 0xFF2B2E34;
constexpr QRgb ink = 0xFFD8DADF;

void draw(const ContactSheet::Moment& moment, const QPoint& corner, QPainter& painter) {
    const QRect camera(corner, cameraSize);
    painter.fillRect(camera, QColor(nothing));
    if (moment.camera.isNull()) {
        painter.drawText(camera, Qt::AlignCenter, QStringLiteral("camera off"));
    } else {
        painter.drawImage(corner, moment.camera.scaled(cameraSize, Qt::IgnoreAspectRatio,
                                                       Qt::SmoothTransformation));
    }
    const QRect island(corner + QPoint(0, cameraSize.height()),
                       QSize(cameraSize.width(), islandHeight));
    if (moment.screen.isNull()) {
        painter.fillRect(island, QColor(nothing));
    } else {
        const QPoint edge((moment.screen.width() - islandSize.width()) / 2, 0);
        painter.drawImage(island.topLeft(), moment.screen.copy(QRect(edge, islandSize))
                                                .scaled(island.size(), Qt::IgnoreAspectRatio,
                                                        Qt::SmoothTransformation));
    }
    const QRect caption(island.bottomLeft() + QPoint(2, 3),
                        QSize(cameraSize.width() - 4, captionHeight));
    painter.drawText(caption, Qt::AlignTop | Qt::TextWordWrap,
                     QString::fromStdString(moment.caption));
}

}  // namespace

QImage ContactSheet::drawn() const {
    const int count = static_cast<int>(moments_.size());
    const int rows = (count + columns - 1) / columns;
    QImage sheet(std::min(count, columns) * cell.width() + gap, rows * cell.height() + gap,
                 QImage::Format_RGB32);
    sheet.fill(paper);
    QPainter painter(&sheet);
    painter.setPen(QColor(ink));
    QFont font = painter.font();
    font.setPixelSize(12);
    painter.setFont(font);
    for (int i = 0; i < count; ++i) {
        const QPoint corner(gap + i % columns * cell.width(), gap + i / columns * cell.height());
        draw(moments_[static_cast<std::size_t>(i)], corner, painter);
    }
    return sheet;
}

std::expected<void, std::string> ContactSheet::save(const std::filesystem::path& file) const {
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    constexpr int smallest = 0;
    if (drawn().save(QString::fromStdString(file.string()), "PNG", smallest)) return {};
    return std::unexpected("The contact sheet couldn’t be written to " + file.string() + ".");
}

}  // namespace marrowby
