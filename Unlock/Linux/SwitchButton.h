// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCheckBox>

namespace marrowby {

/// A check box drawn as a switch.
class SwitchButton final : public QCheckBox {
  public:
    explicit SwitchButton(QWidget* parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    [[nodiscard]] bool hitButton(const QPoint& point) const override;
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace marrowby
