// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/ButtonStrip.h"

#include "Unlock/Linux/PageColors.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>

namespace marrowby {

namespace {

/// Shows the focus by a ring of the text's colour, so that it isn't taken for the default button.
class PageButton final : public QPushButton {
  public:
    using QPushButton::QPushButton;

  protected:
    void paintEvent(QPaintEvent* event) override {
        QPushButton::paintEvent(event);
        if (!hasFocus()) return;
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(palette().color(QPalette::ButtonText), 1.5));
        painter.drawRoundedRect(QRectF(rect()).adjusted(3, 3, -3, -3), 2.5, 2.5);
    }
};

}  // namespace

QString controlName(const ControlID& id) {
    return QStringLiteral("control-%1-%2").arg(static_cast<int>(id.control)).arg(id.item);
}

ButtonStrip::ButtonStrip(ControlSink& sink, QWidget* parent)
    : QWidget(parent), sink_(sink), layout_(new QHBoxLayout(this)) {
    layout_->setContentsMargins({});
    layout_->setSpacing(8);
}

QPushButton* ButtonStrip::buttonFor(const ControlID& id) {
    for (auto& [shown, button] : shown_) {
        if (button != nullptr && shown.id == id) return std::exchange(button, nullptr);
    }
    auto* button = new PageButton(this);
    button->setObjectName(controlName(id));
    button->setAutoDefault(false);
    QObject::connect(button, &QPushButton::clicked, this, [this, id] { sink_.press(id); });
    return button;
}

void ButtonStrip::show(const std::vector<WindowButton>& buttons, const std::string& about,
                       Mnemonics& keys) {
    std::vector<std::pair<WindowButton, QPushButton*>> next;
    next.reserve(buttons.size());
    for (const WindowButton& wanted : buttons)
        next.emplace_back(wanted, buttonFor(wanted.id));
    for (const auto& [gone, button] : shown_) {
        if (button == nullptr) continue;
        button->hide();
        button->deleteLater();
    }
    shown_ = std::move(next);
    while (QLayoutItem* item = layout_->takeAt(0))
        delete item;
    default_ = nullptr;
    for (std::size_t i = 0; i < shown_.size(); ++i) {
        const auto& [wanted, button] = shown_[i];
        if (i == stretchBefore_) layout_->addStretch(1);
        layout_->addWidget(button);
        const QString title = QString::fromStdString(wanted.title);
        button->setText(keys.mark(title));
        button->setAccessibleName(
            wanted.spokenTitle.empty() ? title : QString::fromStdString(wanted.spokenTitle));
        button->setAccessibleDescription(QString::fromStdString(about));
        const QFontMetrics metrics = button->fontMetrics();
        button->setMinimumSize(metrics.horizontalAdvance(title) + 28, metrics.height() + 12);
        button->setEnabled(wanted.isEnabled);
        button->setDefault(wanted.isDefault);
        if (wanted.isDefault) default_ = button;
    }
    dress();
    setVisible(!shown_.empty());
}

void ButtonStrip::dress() {
    isDressing_ = true;
    for (const auto& [shown, button] : shown_) {
        QPalette palette = this->palette();
        if (shown.isDestructive)
            palette.setColor(QPalette::Active, QPalette::ButtonText, pagecolors::danger(palette));
        button->setPalette(palette);
    }
    isDressing_ = false;
}

void ButtonStrip::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !isDressing_) dress();
}

}  // namespace marrowby
