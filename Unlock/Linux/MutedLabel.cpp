// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/MutedLabel.h"

#include "Unlock/Linux/PageColors.h"

#include <QEvent>

namespace marrowby {

void scaleFont(QWidget& widget, double scale, bool isStrong) {
    QFont font = widget.font();
    font.setPointSizeF(font.pointSizeF() * scale);
    if (isStrong) font.setWeight(QFont::DemiBold);
    widget.setFont(font);
}

MutedLabel::MutedLabel(QWidget* parent, double scale) : QLabel(parent) {
    setWordWrap(true);
    setTextFormat(Qt::PlainText);
    setVisible(false);
    scaleFont(*this, scale);
    updateColors();
}

void MutedLabel::show(const std::string& text) {
    setText(QString::fromStdString(text));
    setVisible(!text.empty());
}

void MutedLabel::updateColors() {
    isUpdatingColors_ = true;
    QPalette colors;
    const QWidget* parent = parentWidget();
    const QPalette base = parent != nullptr ? parent->palette() : palette();
    colors.setColor(QPalette::WindowText, pagecolors::muted(base));
    setPalette(colors);
    isUpdatingColors_ = false;
}

void MutedLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !isUpdatingColors_) updateColors();
}

}  // namespace marrowby
