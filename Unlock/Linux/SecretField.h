// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/SecretBytes.h"

#include <QWidget>
#include <cstddef>
#include <optional>

namespace marrowby {

/// A password field that keeps its text in secret memory only, as UTF-8, and shows dots. Takes
/// keys, dead keys and input methods; no paste, drop or copy. Return, Escape and Tab go to the
/// window.
class SecretField final : public QWidget {
  public:
    explicit SecretField(QWidget* parent = nullptr);

    /// Returns and clears the text. Empty when nothing was typed; `nullopt` when secret memory
    /// could not be allocated.
    [[nodiscard]] std::optional<SecretBytes> take();
    void clear();
    [[nodiscard]] std::size_t characterCount() const { return characters_; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void append(const QString& text);
    [[nodiscard]] bool append(char32_t character);
    [[nodiscard]] bool reserve(std::size_t count);
    void removeLast();
    void changed();

    /// Zeros behind the text.
    std::optional<SecretBytes> bytes_;
    std::size_t size_ = 0;
    std::size_t characters_ = 0;
};

}  // namespace marrowby
