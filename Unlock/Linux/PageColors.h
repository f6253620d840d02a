// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QPalette>

/// Colours missing from QPalette, for light and dark palettes.
namespace marrowby::pagecolors {

inline bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}
inline QColor good(const QPalette& palette) {
    return isDark(palette) ? QColor(0x57, 0xc7, 0x85) : QColor(0x1f, 0x86, 0x4b);
}
inline QColor warning(const QPalette& palette) {
    return isDark(palette) ? QColor(0xf2, 0xb8, 0x4b) : QColor(0xb3, 0x64, 0x00);
}
inline QColor danger(const QPalette& palette) {
    return isDark(palette) ? QColor(0xff, 0x8a, 0x7d) : QColor(0xb3, 0x26, 0x1e);
}
inline QColor mix(const QColor& first, const QColor& second, double share) {
    const auto part = [share](int one, int other) {
        return static_cast<int>(one * share + other * (1 - share));
    };
    return {part(first.red(), second.red()), part(first.green(), second.green()),
            part(first.blue(), second.blue())};
}
/// Secondary text.
inline QColor muted(const QPalette& palette) {
    return mix(palette.color(QPalette::WindowText), palette.color(QPalette::Window), 0.68);
}
inline QColor line(const QPalette& palette) {
    return mix(palette.color(QPalette::WindowText), palette.color(QPalette::Window), 0.13);
}
/// Background of a group of rows.
inline QColor card(const QPalette& palette) {
    return isDark(palette)
               ? mix(palette.color(QPalette::WindowText), palette.color(QPalette::Window), 0.06)
               : palette.color(QPalette::Base);
}

}  // namespace marrowby::pagecolors
