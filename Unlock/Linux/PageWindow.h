#pragma once

#include "Unlock/Linux/ControlSink.h"
#include "Unlock/Pages/WindowPresenter.h"

#include <QDialog>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class QLabel;
class QPushButton;
class QScrollArea;

namespace marrowby {

class ButtonStrip;
class MutedLabel;
class RowView;

/// Draws whatever page its presenter has. Return presses the default button, Escape closes the
/// window. Drawn anew, it changes what changed: what has the focus keeps it while its page stays,
/// and so does what was typed. Main thread; the presenter is never called while it draws.
class PageWindow final : public QDialog, private ControlSink {
  public:
    /// `onClosed` comes before the presenter’s own word of it.
    PageWindow(WindowPresenter& presenter, std::function<void()> onClosed);
    ~PageWindow() override;

    void refresh();
    /// Hides it, forgets the presenter and what was typed, and deletes itself when nothing of it
    /// runs any more.
    void retire();

  protected:
    void reject() override;

  private:
    class Rows;

    void press(ControlID id) override;
    void toggle(ControlID id, bool isOn) override;
    void choose(ControlID id, std::size_t option) override;
    void enter(ControlID id, std::string text) override;

    void enterSecret();
    void tell(const std::function<void(WindowPresenter&)>& what);
    void draw(const WindowPage& page);
    void drawProblem(const std::string& problem);
    void chainFocus();
    /// In the order of the page.
    [[nodiscard]] std::vector<QWidget*> focusables() const;
    void focusFirst();
    [[nodiscard]] RowView* secretRow() const;

    WindowPresenter* presenter_;
    std::function<void()> onClosed_;
    std::optional<WindowPage> page_;

    QLabel* title_;
    MutedLabel* detail_;
    QScrollArea* scroll_;
    Rows* content_;
    QWidget* problem_;
    QLabel* problemText_;
    ButtonStrip* buttons_;
};

}  // namespace marrowby
