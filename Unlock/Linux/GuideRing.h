#pragma once

#include "Unlock/Pages/WindowPage.h"

#include <QWidget>

namespace marrowby {

/// The ring of an enrolment: how much of it is done, and an arrow to where the head shall turn.
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
