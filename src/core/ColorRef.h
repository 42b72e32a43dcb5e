#pragma once
// COLORREF values (red in the low byte, then green, then blue) as Qt colours.
#include <QColor>

#include <cstdint>

namespace vm {

inline QColor ColorRefToQColor(uint32_t c) {
    return QColor(static_cast<int>(c & 0xFF), static_cast<int>((c >> 8) & 0xFF),
                  static_cast<int>((c >> 16) & 0xFF));
}

inline int32_t QColorToColorRef(const QColor& c) {
    return c.red() | (c.green() << 8) | (c.blue() << 16);
}

} // namespace vm
