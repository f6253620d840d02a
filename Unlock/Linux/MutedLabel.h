// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLabel>

namespace marrowby {

/// Small, muted, wrapping text; hidden while empty.
class MutedLabel final : public QLabel {
  public:
    explicit MutedLabel(QWidget* parent = nullptr, double scale = 0.94);
    void show(const std::string& text);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void updateColors();
    bool isUpdatingColors_ = false;
};

void scaleFont(QWidget& widget, double scale, bool isStrong = false);

}  // namespace marrowby
