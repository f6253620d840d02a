#pragma once

#include <QLabel>

namespace marrowby {

/// Small text of less weight that wraps; not there while it is empty.
class MutedLabel final : public QLabel {
  public:
    explicit MutedLabel(QWidget* parent = nullptr, double scale = 0.94);
    void show(const std::string& text);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void dress();
    bool isDressing_ = false;
};

/// The widget's font, larger or smaller and perhaps of more weight.
void scaleFont(QWidget& widget, double scale, bool isStrong = false);

}  // namespace marrowby
