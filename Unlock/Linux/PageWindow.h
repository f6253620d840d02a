// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Linux/ControlSink.h"
#include "Unlock/Pages/WindowPresenter.h"

#include <QDialog>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class QBoxLayout;
class QLabel;
class QPushButton;
class QScrollArea;

namespace marrowby {

class ButtonStrip;
class MutedLabel;
class RowView;

/// Draws its presenter's current page. Return presses the default button, Escape closes the window.
/// A redraw changes only what differs: focus and typed text survive while the row stays. As high as
/// its page until the user gives it a size, as far as the screen goes; then the rows scroll. Main
/// thread; never calls the presenter while drawing.
class PageWindow final : public QDialog, private ControlSink {
  public:
    /// `onClosed` is called before the presenter is.
    PageWindow(WindowPresenter& presenter, std::function<void()> onClosed);
    ~PageWindow() override;

    void setVisible(bool visible) override;
    void refresh();
    /// Hides the window, detaches the presenter, wipes typed secrets, and deletes itself once none
    /// of its code runs.
    void retire();

  protected:
    void reject() override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    class Rows;

    void press(ControlID id) override;
    void toggle(ControlID id, bool isOn) override;
    void choose(ControlID id, std::size_t option) override;
    void enter(ControlID id, std::string text) override;

    void enterSecret();
    void notify(const std::function<void(WindowPresenter&)>& what);
    void draw(const WindowPage& page);
    void drawProblem(const std::string& problem);
    /// Takes the page's size; on the same page it only grows.
    void fit(bool isOtherPage);
    void chainFocus();
    /// In page order.
    [[nodiscard]] std::vector<QWidget*> focusables() const;
    void focusFirst();
    [[nodiscard]] RowView* secretRow() const;

    WindowPresenter* presenter_;
    std::function<void()> onClosed_;
    std::optional<WindowPage> page_;
    QSize fitted_;
    /// Every size that fit() gave; another one is the user's.
    std::vector<QSize> given_;
    bool isUsersSize_ = false;

    QBoxLayout* header_;
    QBoxLayout* foot_;
    QLabel* title_;
    MutedLabel* detail_;
    QScrollArea* scroll_;
    Rows* content_;
    QWidget* problem_;
    QLabel* problemText_;
    ButtonStrip* buttons_;
};

}  // namespace marrowby
