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
    /// Within bounds.
    void setSide(int side);
    [[nodiscard]] QSize sizeHint() const override { return {side_, side_}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    static constexpr int smallest = 120;
    static constexpr int largest = 272;

    windowrow::Guide guide_;
    int side_ = largest;
};

}  // namespace marrowby
