#pragma once
// Short forms for writing filter rows of the catalogue: each row then reads
// like its line in the parameter table.
#include "core/Catalogue.h"

#include <initializer_list>

namespace vm::rows {

inline const QString Pixels = QStringLiteral("像素");
inline const QString Levels = QStringLiteral("色阶");
inline const QString Percent = QStringLiteral("%");

// The formats every filter menu allows.
inline std::vector<uint32_t> FilterFormats() {
    return {PixelFormat24bppRGB, PixelFormat32bppARGB, PixelFormat8bppGray};
}

// Colour-only filters: the menus keep them off for grey pictures.
inline std::vector<uint32_t> ColourFormats() {
    return {PixelFormat24bppRGB, PixelFormat32bppARGB};
}

inline SliderSpec S(const char* key, const char* label, const QString& unit, int32_t min, int32_t max,
                    int32_t def) {
    return Slider(QString::fromUtf8(key), QString::fromUtf8(label), unit, min, max, def);
}
inline SliderSpec S(const char* key, const char* label, int32_t min, int32_t max, int32_t def) {
    return S(key, label, QString(), min, max, def);
}
inline SliderSpec Rgba(SliderSpec s, int32_t maxOnRgba32) {
    s.MaxOnRgba32 = maxOnRgba32;
    return s;
}
inline SliderSpec Reset(SliderSpec s, int32_t reset) {
    s.Reset = reset;
    return s;
}
// The angle dial: whole degrees, -360..360.
inline SliderSpec Dial(int32_t def, const char* key = "Angle", const char* label = "角度") {
    return S(key, label, QStringLiteral("度"), -360, 360, def);
}
inline ChoiceSpec Options(const char* key, const char* label, std::initializer_list<const char*> choices,
                          int32_t def) {
    ChoiceSpec c;
    c.Key = QString::fromUtf8(key);
    c.Label = QString::fromUtf8(label);
    for (const char* choice : choices)
        c.Choices << QString::fromUtf8(choice);
    c.Default = def;
    return c;
}
// The edge option of the distortions and of the marble: any value but 1
// clamps, 1 wraps.
inline ChoiceSpec EdgeOption() {
    return Options("Edge", "边缘", {"重复边缘", "折回"}, 0);
}
inline CheckSpec Check(const char* key, const char* label, bool def) {
    return {QString::fromUtf8(key), QString::fromUtf8(label), def};
}
// A whole number typed into a box; Blank tells whether an empty box is taken
// (as 0).
inline TextSpec IntText(const QString& key, const QString& label, const QString& def, bool blank = false) {
    return {key, label, def,
            [blank](const QString& t) {
                if (blank && t.trimmed().isEmpty()) return true;
                bool ok = false;
                t.trimmed().toInt(&ok);
                return ok;
            },
            QStringLiteral("应为整数")};
}
inline TextSpec RealText(const char* key, const char* label, const char* def) {
    return {QString::fromUtf8(key), QString::fromUtf8(label), QString::fromUtf8(def),
            [](const QString& t) {
                bool ok = false;
                t.trimmed().toDouble(&ok);
                return ok;
            },
            QStringLiteral("应为数字")};
}
inline RepeatRead Repeat(const char* key, const char* section, const char* storedKey,
                         std::optional<int32_t> def) {
    return {QString::fromUtf8(key), QString::fromUtf8(section), QString::fromUtf8(storedKey), def};
}

inline Operation Row(const char* key, const char* function, const char* title, const QString& family) {
    Operation op;
    op.Key = QString::fromUtf8(key);
    op.Function = QString::fromUtf8(function);
    op.Title = QString::fromUtf8(title);
    op.Family = family;
    op.Formats = FilterFormats();
    op.Filter = true;
    return op;
}

} // namespace vm::rows
