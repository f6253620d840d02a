// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Linux/ControlSink.h"
#include "Unlock/Linux/Mnemonics.h"

#include <QWidget>
#include <string>
#include <utility>
#include <vector>

class QHBoxLayout;
class QPushButton;

namespace marrowby {

/// A row of buttons. A button keeps its focus while its id stays.
class ButtonStrip final : public QWidget {
  public:
    ButtonStrip(ControlSink& sink, QWidget* parent);

    /// `about`: read out with each button; may be empty.
    void show(const std::vector<WindowButton>& buttons, const std::string& about, Mnemonics& keys);
    /// The stretch goes before this button: it and all later ones are right-aligned.
    void setStretchBefore(std::size_t index) { stretchBefore_ = index; }
    [[nodiscard]] QPushButton* defaultButton() const { return default_; }

  protected:
    void changeEvent(QEvent* event) override;

  private:
    [[nodiscard]] QPushButton* buttonFor(const ControlID& id);
    void dress();

    ControlSink& sink_;
    QHBoxLayout* layout_;
    std::vector<std::pair<WindowButton, QPushButton*>> shown_;
    QPushButton* default_ = nullptr;
    std::size_t stretchBefore_ = 0;
    bool isDressing_ = false;
};

/// The object name of a control's widget.
[[nodiscard]] QString controlName(const ControlID& id);

}  // namespace marrowby
