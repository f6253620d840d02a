// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Pages/WindowPage.h"

#include <QWidget>

namespace marrowby {

/// The enrolment's ring: progress, and an arrow towards which to turn the head.
class GuideRing final : public QWidget {
  public:
    explicit GuideRing(QWidget* parent = nullptr);
    void show(const windowrow::Guide& guide);
    [[nodiscard]] QSize sizeHint() const override { return {272, 272}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    windowrow::Guide guide_;
};

}  // namespace marrowby
