#pragma once

#include "UnlockCore/Foundation/SecretBytes.h"

#include <QWidget>
#include <cstddef>
#include <optional>

namespace marrowby {

/// A field for a password that holds it in secret memory only, as UTF-8: what is typed goes there
/// character by character and is shown as dots. Takes keys and what dead keys and input methods
/// compose of them; nothing is pasted, dropped or copied out. The keys that end editing (Return,
/// Escape, Tab) are left to the window.
class SecretField final : public QWidget {
  public:
    explicit SecretField(QWidget* parent = nullptr);

    /// What was typed, empty where nothing was; the field is empty then. Nothing when the system
    /// gave no secret memory.
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

    /// Zeros behind what was typed.
    std::optional<SecretBytes> bytes_;
    std::size_t size_ = 0;
    std::size_t characters_ = 0;
};

}  // namespace marrowby
