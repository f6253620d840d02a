// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/RowView.h"

#include "Unlock/Linux/ButtonStrip.h"
#include "Unlock/Linux/CameraView.h"
#include "Unlock/Linux/GuideRing.h"
#include "Unlock/Linux/MutedLabel.h"
#include "Unlock/Linux/PageColors.h"
#include "Unlock/Linux/SwitchButton.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QScrollBar>
#include <QSignalBlocker>
#include <algorithm>
#include <utility>

namespace marrowby {

namespace {

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

class StatusMark final : public QWidget {
  public:
    explicit StatusMark(QWidget* parent) : QWidget(parent) { setFixedSize(26, 26); }
    void show(bool isGood) {
        isGood_ = isGood;
        update();
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(isGood_ ? pagecolors::good(palette()) : pagecolors::warning(palette()));
        painter.drawEllipse(rect().adjusted(2, 2, -2, -2));
        painter.setPen(
            QPen(pagecolors::card(palette()), 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        if (isGood_) {
            painter.drawPolyline(QPolygonF({{8.2, 13.4}, {11.6, 16.8}, {17.9, 9.8}}));
        } else {
            painter.drawLine(QPointF(13, 7.8), QPointF(13, 13.8));
            painter.drawPoint(QPointF(13, 17.8));
        }
    }

  private:
    bool isGood_ = false;
};

class HeadingView final : public RowView {
  public:
    HeadingView(const WindowRow& row, QWidget* parent)
        : RowView(row, false, parent), label_(new QLabel(this)) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(4, 14, 4, 0);
        layout->addWidget(label_);
        label_->setTextFormat(Qt::PlainText);
        label_->setWordWrap(true);
        scaleFont(*label_, 1.02, true);
    }
    void show(const WindowRow& row, Mnemonics& /*keys*/) override {
        label_->setText(text(std::get<WindowRow::Heading>(row).text));
    }

  private:
    QLabel* label_;
};

class TextView final : public RowView {
  public:
    TextView(const WindowRow& row, QWidget* parent)
        : RowView(row, false, parent), label_(new QLabel(this)) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(4, 2, 4, 2);
        layout->addWidget(label_);
        label_->setTextFormat(Qt::PlainText);
        label_->setWordWrap(true);
    }
    void show(const WindowRow& row, Mnemonics& /*keys*/) override {
        label_->setText(text(std::get<WindowRow::Text>(row).text));
    }

  private:
    QLabel* label_;
};

/// Title and detail on the left, a control on the right.
class TitledView : public RowView {
  protected:
    TitledView(const WindowRow& row, QWidget* parent)
        : RowView(row, true, parent),
          layout_(new QGridLayout(this)),
          title_(new QLabel(this)),
          detail_(new MutedLabel(this)) {
        layout_->setContentsMargins(14, 10, 14, 10);
        layout_->setHorizontalSpacing(12);
        layout_->setVerticalSpacing(1);
        title_->setTextFormat(Qt::PlainText);
        title_->setWordWrap(true);
        layout_->addWidget(title_, 1, 1);
        layout_->addWidget(detail_, 2, 1);
        layout_->setColumnStretch(1, 1);
        layout_->setRowStretch(0, 1);
        layout_->setRowStretch(3, 1);
    }

    void put(QWidget& control, int share = 0) {
        layout_->addWidget(&control, 0, 2, 4, 1,
                           share == 0 ? Qt::AlignVCenter | Qt::AlignRight : Qt::AlignVCenter);
        layout_->setColumnStretch(2, share);
    }
    void lead(QWidget& mark) { layout_->addWidget(&mark, 0, 0, 4, 1, Qt::AlignVCenter); }

    void showTitle(const std::string& title, const std::string& detail) {
        title_->setText(text(title));
        title_->setVisible(!title.empty());
        detail_->show(detail);
    }
    void showTitle(const std::string& title, const std::string& detail, QWidget& control,
                   Mnemonics& keys) {
        showTitle(title, detail);
        // Assistive technology calls a choice by its label, whatever its own name is.
        title_->setBuddy(&control);
        title_->setText(keys.mark(text(title)));
        title_->setAccessibleName(text(title));
        control.setAccessibleName(text(title));
        control.setAccessibleDescription(text(detail));
    }
    void nameTitle(const QString& name) { title_->setObjectName(name); }
    void strengthenTitle() { scaleFont(*title_, 1, true); }

  private:
    QGridLayout* layout_;
    QLabel* title_;
    MutedLabel* detail_;
};

class StatusView final : public TitledView {
  public:
    StatusView(const WindowRow& row, ControlSink& sink, QWidget* parent)
        : TitledView(row, parent), mark_(new StatusMark(this)), fix_(new ButtonStrip(sink, this)) {
        lead(*mark_);
        put(*fix_);
        strengthenTitle();
        nameTitle(QStringLiteral("status"));
    }
    void show(const WindowRow& row, Mnemonics& keys) override {
        const auto& status = std::get<WindowRow::Status>(row);
        showTitle(status.title, status.detail);
        mark_->show(status.isGood);
        fix_->show(status.fix ? std::vector{*status.fix} : std::vector<WindowButton>(),
                   status.title, keys);
    }

  private:
    StatusMark* mark_;
    ButtonStrip* fix_;
};

class ToggleView final : public TitledView {
  public:
    ToggleView(const WindowRow& row, ControlSink& sink, QWidget* parent)
        : TitledView(row, parent), control_(new SwitchButton(this)) {
        const ControlID id = std::get<WindowRow::Toggle>(row).id;
        control_->setObjectName(controlName(id));
        put(*control_);
        // Not clicked: assistive technology toggles without a click.
        QObject::connect(control_, &QCheckBox::toggled, this,
                         [&sink, id](bool isOn) { sink.toggle(id, isOn); });
    }
    void show(const WindowRow& row, Mnemonics& keys) override {
        const auto& toggle = std::get<WindowRow::Toggle>(row);
        showTitle(toggle.title, toggle.detail, *control_, keys);
        const QSignalBlocker blocker(control_);
        control_->setChecked(toggle.isOn);
        control_->update();
    }

  protected:
    /// Clicking anywhere in the row toggles the switch.
    void mouseReleaseEvent(QMouseEvent* event) override {
        TitledView::mouseReleaseEvent(event);
        if (rect().contains(event->position().toPoint()) && event->button() == Qt::LeftButton)
            control_->click();
    }

  private:
    SwitchButton* control_;
};

class ChoiceView final : public TitledView {
  public:
    ChoiceView(const WindowRow& row, ControlSink& sink, QWidget* parent)
        : TitledView(row, parent), control_(new QComboBox(this)) {
        const ControlID id = std::get<WindowRow::Choice>(row).id;
        control_->setObjectName(controlName(id));
        control_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        control_->setMinimumHeight(control_->fontMetrics().height() + 12);
        // Scrolling the page must not change the value.
        control_->setFocusPolicy(Qt::StrongFocus);
        control_->installEventFilter(this);
        put(*control_);
        QObject::connect(control_, &QComboBox::activated, this, [&sink, id](int option) {
            sink.choose(id, static_cast<std::size_t>(option));
        });
    }
    void show(const WindowRow& row, Mnemonics& keys) override {
        const auto& choice = std::get<WindowRow::Choice>(row);
        showTitle(choice.title, choice.detail, *control_, keys);
        control_->view()->setAccessibleName(text(choice.title));
        if (choice.options != options_) {
            options_ = choice.options;
            control_->clear();
            for (const auto& option : options_)
                control_->addItem(text(option));
        }
        control_->setCurrentIndex(static_cast<int>(choice.selected));
    }

  protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Wheel) {
            event->ignore();
            return true;
        }
        return TitledView::eventFilter(object, event);
    }

  private:
    QComboBox* control_;
    std::vector<std::string> options_;
};

class ActionsView final : public TitledView {
  public:
    ActionsView(const WindowRow& row, ControlSink& sink, QWidget* parent)
        : TitledView(row, parent), strip_(new ButtonStrip(sink, this)) {
        put(*strip_);
    }
    void show(const WindowRow& row, Mnemonics& keys) override {
        const auto& actions = std::get<WindowRow::Actions>(row);
        showTitle(actions.title, actions.detail);
        strip_->show(actions.buttons, actions.title, keys);
    }

  private:
    ButtonStrip* strip_;
};

class TextFieldView final : public TitledView {
  public:
    TextFieldView(const WindowRow& row, ControlSink& sink, QWidget* parent)
        : TitledView(row, parent), field_(new QLineEdit(this)) {
        const ControlID id = std::get<WindowRow::TextField>(row).id;
        field_->setObjectName(controlName(id));
        field_->setMinimumHeight(field_->fontMetrics().height() + 14);
        field_->setTextMargins(5, 0, 5, 0);
        put(*field_, 2);
        QObject::connect(field_, &QLineEdit::textEdited, this, [&sink, id](const QString& edited) {
            sink.enter(id, edited.toStdString());
        });
    }
    void show(const WindowRow& row, Mnemonics& keys) override {
        const auto& wanted = std::get<WindowRow::TextField>(row);
        showTitle(wanted.title, {}, *field_, keys);
        if (field_->text() == text(wanted.text)) return;
        const int cursor = field_->cursorPosition();
        field_->setText(text(wanted.text));
        field_->setCursorPosition(cursor);
    }
    [[nodiscard]] QWidget* field() const override { return field_; }

  private:
    QLineEdit* field_;
};

class SecretFieldView final : public TitledView {
  public:
    SecretFieldView(const WindowRow& row, QWidget* parent)
        : TitledView(row, parent), field_(new SecretField(this)) {
        field_->setObjectName(controlName(std::get<WindowRow::SecretField>(row).id));
        put(*field_, 2);
    }
    void show(const WindowRow& row, Mnemonics& keys) override {
        showTitle(std::get<WindowRow::SecretField>(row).title, {}, *field_, keys);
    }
    [[nodiscard]] QWidget* field() const override { return field_; }
    [[nodiscard]] SecretField* secretField() const override { return field_; }

  private:
    SecretField* field_;
};

class PictureView final : public RowView {
  public:
    PictureView(const WindowRow& row, QWidget* parent)
        : RowView(row, false, parent), camera_(new CameraView(this)) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(4, 4, 4, 4);
        layout->addWidget(camera_, 0, Qt::AlignHCenter);
    }
    void show(const WindowRow& row, Mnemonics& /*keys*/) override {
        camera_->show(std::get<WindowRow::Picture>(row));
    }
    /// Leaves half of it to the other rows.
    void setRoom(int height) override { camera_->setHeight(height / 2); }

  private:
    CameraView* camera_;
};

/// With a mark at the limit.
class MeterBar final : public QProgressBar {
  public:
    explicit MeterBar(QWidget* parent) : QProgressBar(parent) {
        setRange(0, steps);
        setFixedSize(150, 14);
    }
    void show(const WindowRow::Meter& meter) {
        limit_ = meter.limit;
        isGood_ = meter.isGood;
        setValue(static_cast<int>(meter.level * steps));
        setAccessibleName(QString::fromStdString(meter.title));
        setAccessibleDescription(QString::fromStdString(meter.detail));
        update();
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        // Grows as one reads.
        if (layoutDirection() == Qt::RightToLeft) {
            painter.translate(width(), 0);
            painter.scale(-1, 1);
        }
        const QRectF groove = QRectF(rect()).adjusted(1, 4, -1, -4);
        painter.setPen(Qt::NoPen);
        painter.setBrush(pagecolors::line(palette()));
        painter.drawRoundedRect(groove, 3, 3);
        QRectF bar = groove;
        bar.setWidth(groove.width() * value() / steps);
        painter.setBrush(isGood_ ? pagecolors::good(palette()) : pagecolors::warning(palette()));
        painter.drawRoundedRect(bar, 3, 3);
        painter.setPen(QPen(palette().color(QPalette::WindowText), 2));
        const double mark = groove.left() + groove.width() * limit_;
        painter.drawLine(QPointF(mark, 1), QPointF(mark, height() - 1));
    }

  private:
    static constexpr int steps = 1000;
    double limit_ = 0;
    bool isGood_ = false;
};

class MeterView final : public TitledView {
  public:
    MeterView(const WindowRow& row, QWidget* parent)
        : TitledView(row, parent), bar_(new MeterBar(this)) {
        put(*bar_);
    }
    void show(const WindowRow& row, Mnemonics& /*keys*/) override {
        const auto& meter = std::get<WindowRow::Meter>(row);
        showTitle(meter.title, meter.detail);
        bar_->show(meter);
    }

  private:
    MeterBar* bar_;
};

class GuideView final : public RowView {
  public:
    GuideView(const WindowRow& row, QWidget* parent)
        : RowView(row, false, parent), ring_(new GuideRing(this)), hint_(new QLabel(this)) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(4, 8, 4, 4);
        layout->setSpacing(12);
        layout->addWidget(ring_, 0, Qt::AlignHCenter);
        layout->addWidget(hint_);
        hint_->setTextFormat(Qt::PlainText);
        hint_->setWordWrap(true);
        hint_->setAlignment(Qt::AlignHCenter);
        scaleFont(*hint_, 1.15, true);
        hint_->setObjectName(QStringLiteral("guide-hint"));
    }
    void show(const WindowRow& row, Mnemonics& /*keys*/) override {
        const auto& guide = std::get<WindowRow::Guide>(row);
        ring_->show(guide);
        if (hint_->text() == text(guide.hint)) return;
        hint_->setText(text(guide.hint));
        QAccessibleEvent said(hint_, QAccessible::Alert);
        QAccessible::updateAccessibility(&said);
    }
    void setRoom(int height) override {
        const QMargins margins = layout()->contentsMargins();
        ring_->setSide(height - margins.top() - margins.bottom() - layout()->spacing() -
                       2 * hint_->fontMetrics().lineSpacing());
    }

  private:
    GuideRing* ring_;
    QLabel* hint_;
};

class LogView final : public RowView {
  public:
    LogView(const WindowRow& row, QWidget* parent)
        : RowView(row, true, parent), lines_(new QPlainTextEdit(this)) {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(6, 6, 6, 6);
        layout->addWidget(lines_);
        lines_->setReadOnly(true);
        lines_->setTabChangesFocus(true);
        lines_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
        scaleFont(*lines_, 0.9);
        lines_->setAccessibleName(text(translated("Log")));
        lines_->setFrameShape(QFrame::NoFrame);
        lines_->document()->setDocumentMargin(6);
        // Shows the card’s background.
        lines_->viewport()->setAutoFillBackground(false);
    }
    void show(const WindowRow& row, Mnemonics& /*keys*/) override {
        const auto& lines = std::get<WindowRow::Log>(row).lines;
        if (lines == shown_) return;
        shown_ = lines;
        QString all;
        for (const auto& line : lines)
            all += (all.isEmpty() ? "" : "\n") + text(line);
        QScrollBar& bar = *lines_->verticalScrollBar();
        const bool followsEnd = bar.value() == bar.maximum();
        const int place = bar.value();
        lines_->setPlainText(all);
        bar.setValue(followsEnd ? bar.maximum() : place);
        const auto height = static_cast<int>(std::clamp<std::size_t>(lines.size() + 1, 2, 10));
        lines_->setFixedHeight(height * lines_->fontMetrics().lineSpacing() + 16);
    }

  private:
    QPlainTextEdit* lines_;
    std::vector<std::string> shown_;
};

struct Maker {
    const WindowRow& row;
    ControlSink& sink;
    QWidget* parent;

    RowView* operator()(const WindowRow::Heading&) const { return new HeadingView(row, parent); }
    RowView* operator()(const WindowRow::Text&) const { return new TextView(row, parent); }
    RowView* operator()(const WindowRow::Status&) const {
        return new StatusView(row, sink, parent);
    }
    RowView* operator()(const WindowRow::Toggle&) const {
        return new ToggleView(row, sink, parent);
    }
    RowView* operator()(const WindowRow::Choice&) const {
        return new ChoiceView(row, sink, parent);
    }
    RowView* operator()(const WindowRow::Actions&) const {
        return new ActionsView(row, sink, parent);
    }
    RowView* operator()(const WindowRow::TextField&) const {
        return new TextFieldView(row, sink, parent);
    }
    RowView* operator()(const WindowRow::SecretField&) const {
        return new SecretFieldView(row, parent);
    }
    RowView* operator()(const WindowRow::Picture&) const { return new PictureView(row, parent); }
    RowView* operator()(const WindowRow::Meter&) const { return new MeterView(row, parent); }
    RowView* operator()(const WindowRow::Guide&) const { return new GuideView(row, parent); }
    RowView* operator()(const WindowRow::Log&) const { return new LogView(row, parent); }
};

}  // namespace

RowKey RowKey::of(const WindowRow& row) {
    return {.kind = row.index(), .id = controlOf(row)};
}

RowView* RowView::create(const WindowRow& row, ControlSink& sink, QWidget* parent) {
    return std::visit(Maker{row, sink, parent}, row);
}

}  // namespace marrowby
