// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/SecretField.h"

#include "Unlock/Linux/PageColors.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyleOptionFrame>
#include <algorithm>
#include <array>
#include <utility>

namespace marrowby {

namespace {

constexpr std::size_t firstCapacity = 256;

/// Reports a password edit to assistive technology, and only its dots.
class AccessibleSecret final : public QAccessibleWidget {
  public:
    explicit AccessibleSecret(SecretField& field)
        : QAccessibleWidget(&field, QAccessible::EditableText), field_(field) {}

    [[nodiscard]] QAccessible::State state() const override {
        auto state = QAccessibleWidget::state();
        state.passwordEdit = true;
        state.editable = true;
        return state;
    }
    [[nodiscard]] QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Value) return QAccessibleWidget::text(kind);
        return {static_cast<qsizetype>(field_.characterCount()), QChar(0x2022)};
    }

  private:
    SecretField& field_;
};

QAccessibleInterface* makeAccessible(const QString& /*name*/, QObject* object) {
    auto* field = dynamic_cast<SecretField*>(object);
    return field != nullptr ? new AccessibleSecret(*field) : nullptr;
}

struct Encoded {
    std::array<std::uint8_t, 4> bytes{};
    std::size_t size = 0;
};

Encoded utf8(char32_t character) {
    const auto low = [character](unsigned shift) {
        return static_cast<std::uint8_t>(0x80U | ((character >> shift) & 0x3fU));
    };
    if (character < 0x80) return {{static_cast<std::uint8_t>(character)}, 1};
    if (character < 0x800)
        return {{static_cast<std::uint8_t>(0xc0U | (character >> 6U)), low(0)}, 2};
    if (character < 0x10000)
        return {{static_cast<std::uint8_t>(0xe0U | (character >> 12U)), low(6), low(0)}, 3};
    return {{static_cast<std::uint8_t>(0xf0U | (character >> 18U)), low(12), low(6), low(0)}, 4};
}

bool isTypable(char32_t character) {
    const bool isControl = character < 0x20 || (character >= 0x7f && character < 0xa0);
    const bool isHalf = character >= 0xd800 && character < 0xe000;
    return !isControl && !isHalf;
}

}  // namespace

SecretField::SecretField(QWidget* parent) : QWidget(parent) {
    static const bool isInstalled = [] {
        QAccessible::installFactory(makeAccessible);
        return true;
    }();
    Q_UNUSED(isInstalled)
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::IBeamCursor);
    setAttribute(Qt::WA_InputMethodEnabled);
    setInputMethodHints(Qt::ImhHiddenText | Qt::ImhSensitiveData | Qt::ImhNoPredictiveText |
                        Qt::ImhNoAutoUppercase);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

std::optional<SecretBytes> SecretField::take() {
    if (!reserve(0)) return std::nullopt;
    std::optional<SecretBytes> taken = std::exchange(bytes_, std::nullopt);
    if (taken) taken->shrink(size_);
    clear();
    return taken;
}

void SecretField::clear() {
    bytes_.reset();
    size_ = 0;
    characters_ = 0;
    changed();
}

bool SecretField::reserve(std::size_t count) {
    const std::size_t wanted = size_ + count;
    if (bytes_ && wanted <= bytes_->size()) return true;
    auto larger = SecretBytes::create(std::max(firstCapacity, wanted * 2));
    if (!larger) return false;
    if (bytes_) std::ranges::copy(bytes_->values().first(size_), larger->values().begin());
    bytes_ = std::move(*larger);
    return true;
}

void SecretField::append(const QString& text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        char32_t character = text.at(i).unicode();
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() &&
            text.at(i + 1).isLowSurrogate()) {
            character = QChar::surrogateToUcs4(text.at(i), text.at(i + 1));
            ++i;
        }
        if (!append(character)) QApplication::beep();
    }
    changed();
}

bool SecretField::append(char32_t character) {
    if (!isTypable(character)) return false;
    Encoded encoded = utf8(character);
    if (!reserve(encoded.size) || !bytes_) return false;
    for (std::size_t i = 0; i < encoded.size; ++i)
        bytes_->values()[size_++] = std::exchange(encoded.bytes.at(i), 0);
    ++characters_;
    return true;
}

void SecretField::removeLast() {
    if (!bytes_ || size_ == 0) return;
    const auto values = bytes_->values();
    while (size_ > 0) {
        const bool isFirst = (values[--size_] & 0xc0U) != 0x80U;
        values[size_] = 0;
        if (isFirst) break;
    }
    --characters_;
    changed();
}

void SecretField::changed() {
    update();
    if (!QAccessible::isActive()) return;
    QAccessibleValueChangeEvent event(this, {});
    QAccessible::updateAccessibility(&event);
}

void SecretField::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Backspace) {
        if (event->modifiers() & Qt::ControlModifier) {
            clear();
        } else {
            removeLast();
        }
        return;
    }
    const bool isCommand = event->modifiers() & (Qt::AltModifier | Qt::MetaModifier) ||
                           event->modifiers() == Qt::ControlModifier;
    const QString text = event->text();
    const char32_t first = text.isEmpty() ? 0 : text.at(0).unicode();
    if (isCommand || first < 0x20 || first == 0x7f) return event->ignore();
    append(text);
}

void SecretField::inputMethodEvent(QInputMethodEvent* event) {
    // Preedit text is not shown, and existing text is never replaced.
    append(event->commitString());
    event->accept();
}

QVariant SecretField::inputMethodQuery(Qt::InputMethodQuery query) const {
    switch (static_cast<int>(query)) {
        case Qt::ImEnabled:
            return true;
        case Qt::ImHints:
            return static_cast<int>(inputMethodHints());
        case Qt::ImCursorRectangle:
            return rect();
        case Qt::ImSurroundingText:
        case Qt::ImCurrentSelection:
            return QString();
        default:
            return QWidget::inputMethodQuery(query);
    }
}

QSize SecretField::sizeHint() const {
    return {fontMetrics().averageCharWidth() * 26, fontMetrics().height() + 14};
}

void SecretField::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    QStyleOptionFrame frame;
    frame.initFrom(this);
    frame.lineWidth = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &frame, this);
    frame.state |= QStyle::State_Sunken;
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &frame, &painter, this);

    painter.setRenderHint(QPainter::Antialiasing);
    const double radius = fontMetrics().height() * 0.2;
    const double step = radius * 3.1;
    const double left = 9;
    // When it overflows, the end stays visible.
    const auto fitting = static_cast<std::size_t>((width() - 2 * left - 4) / step);
    const std::size_t shown = std::min(characters_, fitting);
    const double middle = height() / 2.0;
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().text());
    for (std::size_t i = 0; i < shown; ++i) {
        painter.drawEllipse(QPointF(left + radius + static_cast<double>(i) * step, middle), radius,
                            radius);
    }
    if (!hasFocus()) return;
    const double caret = left + static_cast<double>(shown) * step;
    const double half = fontMetrics().height() * 0.5;
    painter.drawRect(QRectF(caret, middle - half, 1, 2 * half));
}

void SecretField::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    update();
}

void SecretField::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    update();
}

}  // namespace marrowby
