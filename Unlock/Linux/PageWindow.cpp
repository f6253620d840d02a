// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/PageWindow.h"

#include "Unlock/Linux/ButtonStrip.h"
#include "Unlock/Linux/MutedLabel.h"
#include "Unlock/Linux/PageColors.h"
#include "Unlock/Linux/RowView.h"

#include <QAccessible>
#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>
#include <QResizeEvent>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <cstdlib>
#include <utility>

namespace marrowby {

namespace {

constexpr int margin = 22;
constexpr double corner = 10;
constexpr QSize largestFirstSize{600, 760};
constexpr QSize smallestSize{320, 160};
/// A window manager's title bar and borders.
constexpr QSize decoration{8, 40};
/// Points by which a fractional scale may change a size.
constexpr int scalingError = 3;

int heightOf(const QLayout& layout, int width) {
    return layout.hasHeightForWidth() ? layout.heightForWidth(width) : layout.sizeHint().height();
}

class ProblemFrame final : public QWidget {
  public:
    using QWidget::QWidget;

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor danger = pagecolors::danger(palette());
        painter.setPen(QPen(danger, 1));
        painter.setBrush(pagecolors::mix(danger, palette().color(QPalette::Window), 0.10));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), corner, corner);
    }
};

}  // namespace

/// A page's rows; related ones share a card.
class PageWindow::Rows final : public QWidget {
  public:
    Rows() : layout_(new QVBoxLayout(this)) {
        layout_->setContentsMargins(margin, 6, margin, margin / 2);
        layout_->setSpacing(0);
    }

    void show(const std::vector<WindowRow>& rows, ControlSink& sink, Mnemonics& keys) {
        std::vector<RowView*> next;
        for (const WindowRow& row : rows) {
            RowView* view = takeView(RowKey::of(row));
            if (view == nullptr) view = RowView::create(row, sink, this);
            view->show(row, keys);
            next.push_back(view);
        }
        for (RowView* gone : views_) {
            if (SecretField* secret = gone->secretField()) secret->clear();
            gone->hide();
            gone->deleteLater();
        }
        views_ = std::move(next);
        while (QLayoutItem* item = layout_->takeAt(0))
            delete item;
        const RowView* above = nullptr;
        for (RowView* view : views_) {
            // No gap within a card.
            if (above != nullptr && !(above->isOnCard() && view->isOnCard()))
                layout_->addSpacing(10);
            layout_->addWidget(view);
            view->setVisible(true);
            above = view;
        }
        layout_->addStretch(1);
        update();
    }

    [[nodiscard]] const std::vector<RowView*>& views() const { return views_; }

    /// How high the part that is seen is.
    void setRoom(int height) {
        for (RowView* view : views_)
            view->setRoom(height - layout_->contentsMargins().top() -
                          layout_->contentsMargins().bottom());
    }
    [[nodiscard]] int heightAt(int width) const { return heightOf(*layout_, width); }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        for (auto view = views_.begin(); view != views_.end();) {
            const auto end = std::find_if(view, views_.end(),
                                          [](const RowView* row) { return !row->isOnCard(); });
            if (view == end) {
                ++view;
                continue;
            }
            paintCard(painter, view, end);
            view = end;
        }
    }

  private:
    using View = std::vector<RowView*>::const_iterator;

    RowView* takeView(const RowKey& key) {
        const auto found = std::ranges::find_if(
            views_, [&key](const RowView* view) { return view->key() == key; });
        if (found == views_.end()) return nullptr;
        RowView* view = *found;
        views_.erase(found);
        return view;
    }

    void paintCard(QPainter& painter, View begin, View end) {
        const QRectF card((*begin)->geometry().united((*(end - 1))->geometry()));
        painter.setPen(QPen(pagecolors::line(palette()), 1));
        painter.setBrush(pagecolors::card(palette()));
        painter.drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), corner, corner);
        for (View view = begin + 1; view < end; ++view) {
            const double y = (*view)->geometry().top() + 0.5;
            painter.drawLine(QPointF(card.left() + 14, y), QPointF(card.right() - 14, y));
        }
    }

    QVBoxLayout* layout_;
    std::vector<RowView*> views_;
};

PageWindow::PageWindow(WindowPresenter& presenter, std::function<void()> onClosed)
    : presenter_(&presenter),
      onClosed_(std::move(onClosed)),
      header_(new QVBoxLayout),
      foot_(new QVBoxLayout),
      title_(new QLabel),
      detail_(new MutedLabel(this, 1)),
      scroll_(new QScrollArea),
      content_(new Rows),
      problem_(new ProblemFrame),
      problemText_(new QLabel),
      buttons_(new ButtonStrip(*this, this)) {
    setWindowFlags(Qt::Window);
    setMinimumSize(smallestSize);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, margin, 0, margin - 6);
    layout->setSpacing(0);
    header_->setContentsMargins(margin + 4, 0, margin + 4, 10);
    header_->setSpacing(6);
    title_->setTextFormat(Qt::PlainText);
    title_->setWordWrap(true);
    // At the side where the window's lines begin, not where a Latin name would.
    title_->setAlignment(
        QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter) |
        Qt::AlignAbsolute);
    scaleFont(*title_, 1.7, true);
    header_->addWidget(title_);
    header_->addWidget(detail_);
    layout->addLayout(header_);

    scroll_->setFrameShape(QFrame::NoFrame);
    scroll_->setWidgetResizable(true);
    // Its own minimum would take the header's place on a page of few rows.
    scroll_->setMinimumHeight(1);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll_->setFocusPolicy(Qt::NoFocus);
    scroll_->setWidget(content_);
    // Shows the window’s background.
    scroll_->viewport()->setAutoFillBackground(false);
    content_->setAutoFillBackground(false);
    layout->addWidget(scroll_, 1);

    auto* problemLayout = new QVBoxLayout(problem_);
    problemLayout->setContentsMargins(14, 10, 14, 10);
    problemLayout->addWidget(problemText_);
    problemText_->setTextFormat(Qt::PlainText);
    problemText_->setWordWrap(true);
    foot_->setContentsMargins(margin, 8, margin, 0);
    foot_->setSpacing(12);
    foot_->addWidget(problem_);
    foot_->addWidget(buttons_);
    layout->addLayout(foot_);

    draw(presenter.page());
}

PageWindow::~PageWindow() = default;

// The window manager places it: it knows its own borders. A QDialog would place itself.
void PageWindow::setVisible(bool visible) {
    QWidget::setVisible(visible);  // NOLINT(bugprone-parent-virtual-call)
}

void PageWindow::refresh() {
    if (presenter_ == nullptr) return;
    WindowPage page = presenter_->page();
    if (page_ != page) draw(page);
}

void PageWindow::retire() {
    presenter_ = nullptr;
    if (const RowView* row = secretRow()) row->secretField()->clear();
    hide();
    deleteLater();
}

void PageWindow::reject() {
    if (presenter_ == nullptr) return;
    WindowPresenter& presenter = *presenter_;
    onClosed_();
    presenter.windowClosed();
}

void PageWindow::draw(const WindowPage& page) {
    const bool isOtherPage = windowTitle() != QString::fromStdString(page.title);
    setWindowTitle(QString::fromStdString(page.title));
    title_->setText(QString::fromStdString(page.title));
    detail_->show(page.detail);
    drawProblem(page.problem);
    // The first of several buttons is left-aligned.
    buttons_->setStretchBefore(page.buttons.size() > 1 ? 1 : 0);
    // The foot's keys come first: they are on most pages.
    Mnemonics keys;
    buttons_->show(page.buttons, {}, keys);
    content_->show(page.rows, *this, keys);
    page_ = page;
    fit(isOtherPage);
    chainFocus();
    const QWidget* focused = focusWidget();
    const bool isLost =
        focused == nullptr || focused->isHidden() || !focused->isEnabled() || focused == this;
    if (isOtherPage || isLost) focusFirst();
    if (isOtherPage) scroll_->verticalScrollBar()->setValue(0);
}

void PageWindow::fit(bool isOtherPage) {
    if (isUsersSize_) return;
    const QScreen* const on = screen();
    if (on == nullptr) return;
    const QSize most =
        (on->availableSize() - decoration).boundedTo(largestFirstSize).expandedTo(smallestSize);
    // What was just drawn has its size only then.
    QApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    const QMargins margins = layout()->contentsMargins();
    const int rest = margins.top() + margins.bottom() + heightOf(*header_, most.width()) +
                     heightOf(*foot_, most.width());
    content_->setRoom(most.height() - rest);
    const int height =
        std::min(rest + content_->heightAt(most.width()) + scalingError, most.height());
    // Not by the present height: scaling may round it, again and again.
    const QSize wanted{most.width(), isOtherPage ? height : std::max(height, fitted_.height())};
    if (std::exchange(fitted_, wanted) == wanted) return;
    if (std::ranges::find(given_, wanted) == given_.end()) given_.push_back(wanted);
    resize(wanted);
    if (!isVisible()) return;
    // Grown over the screen's edge where it stands.
    const QRect available = on->availableGeometry();
    const QSize frame = fitted_ + frameGeometry().size() - size();
    const int lowest = available.top() + available.height() - frame.height();
    const int y = std::max(available.top(), std::min(frameGeometry().top(), lowest));
    if (y != frameGeometry().top()) move(frameGeometry().left(), y);
}

void PageWindow::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    // One given earlier may come late.
    const bool isGiven = std::ranges::any_of(given_, [this](QSize given) {
        const QSize off = size() - given;
        return std::abs(off.width()) <= scalingError && std::abs(off.height()) <= scalingError;
    });
    if (event->spontaneous() && !isGiven) isUsersSize_ = true;
    if (!isUsersSize_) return;
    layout()->activate();
    content_->setRoom(scroll_->viewport()->height());
}

void PageWindow::keyPressEvent(QKeyEvent* event) {
    QScrollBar& bar = *scroll_->verticalScrollBar();
    // Of a page that only tells something, too.
    if (event->key() == Qt::Key_PageDown) return bar.triggerAction(QScrollBar::SliderPageStepAdd);
    if (event->key() == Qt::Key_PageUp) return bar.triggerAction(QScrollBar::SliderPageStepSub);
    QDialog::keyPressEvent(event);
}

void PageWindow::drawProblem(const std::string& problem) {
    problem_->setVisible(!problem.empty());
    const QString said = QString::fromStdString(problem);
    if (problemText_->text() == said) return;
    problemText_->setText(said);
    if (problem.empty()) return;
    QAccessibleEvent alert(problemText_, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

/// Tab follows the page's order, whatever the order of creation.
void PageWindow::chainFocus() {
    QWidget* before = nullptr;
    for (QWidget* widget : focusables()) {
        if (before != nullptr) QWidget::setTabOrder(before, widget);
        before = widget;
    }
}

std::vector<QWidget*> PageWindow::focusables() const {
    std::vector<QWidget*> found;
    const auto append = [this, &found](const QWidget* parent) {
        for (auto* widget : parent->findChildren<QWidget*>()) {
            // Skips windows of their own, such as an open combo box's list.
            if (widget->window() != this || widget->isHidden()) continue;
            if (widget->focusPolicy() & Qt::TabFocus) found.push_back(widget);
        }
    };
    for (const RowView* row : content_->views())
        append(row);
    append(buttons_);
    return found;
}

/// Focuses the first text field, else the default button, else the first control.
void PageWindow::focusFirst() {
    for (const RowView* row : content_->views()) {
        if (QWidget* field = row->field()) {
            scroll_->ensureWidgetVisible(field);
            return field->setFocus(Qt::TabFocusReason);
        }
    }
    if (QPushButton* button = buttons_->defaultButton(); button != nullptr && button->isEnabled())
        return button->setFocus(Qt::OtherFocusReason);
    for (QWidget* widget : focusables()) {
        if (widget->isEnabled()) return widget->setFocus(Qt::TabFocusReason);
    }
}

RowView* PageWindow::secretRow() const {
    const auto& rows = content_->views();
    const auto found = std::ranges::find_if(
        rows, [](const RowView* row) { return row->secretField() != nullptr; });
    return found == rows.end() ? nullptr : *found;
}

void PageWindow::press(ControlID id) {
    enterSecret();
    notify([id](WindowPresenter& presenter) { presenter.press(id); });
}

void PageWindow::toggle(ControlID id, bool isOn) {
    notify([id, isOn](WindowPresenter& presenter) { presenter.toggle(id, isOn); });
}

void PageWindow::choose(ControlID id, std::size_t option) {
    notify([id, option](WindowPresenter& presenter) { presenter.choose(id, option); });
}

void PageWindow::enter(ControlID id, std::string text) {
    notify([id, &text](WindowPresenter& presenter) { presenter.enter(id, std::move(text)); });
}

void PageWindow::enterSecret() {
    const RowView* row = presenter_ != nullptr ? secretRow() : nullptr;
    const auto id = row != nullptr ? row->key().id : std::nullopt;
    if (!id) return;
    if (auto secret = row->secretField()->take()) presenter_->enter(*id, *std::move(secret));
}

/// The call may close the window.
void PageWindow::notify(const std::function<void(WindowPresenter&)>& what) {
    if (presenter_ == nullptr) return;
    what(*presenter_);
    // Forces a redraw: the presenter may have rejected what the control shows.
    page_.reset();
    refresh();
}

}  // namespace marrowby
