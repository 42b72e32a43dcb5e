#pragma once
// Read-only tables that the start-up builds before any window exists. The
// computed ones are made at compile time; the ones that need Qt (names, the
// palette) are built on first use and never change afterwards.
#include <QString>

#include <array>
#include <cstdint>
#include <vector>

namespace vm {

// A colour as COLORREF (red in the low byte) with its display name.
struct NamedColor {
    int32_t Color = 0;
    QString Name;
};

namespace detail {
// Largest n with n^3 <= Numerator / Denominator, by integer bisection, so that
// the floor is exact also where the cube root is (nearly) a whole number.
constexpr int32_t FloorCubeRoot(int64_t Numerator, int64_t Denominator) {
    int64_t lo = 0, hi = 1;
    while (hi * hi * hi * Denominator <= Numerator)
        hi *= 2;
    while (hi - lo > 1) {
        const int64_t mid = (lo + hi) / 2;
        if (mid * mid * mid * Denominator <= Numerator)
            lo = mid;
        else
            hi = mid;
    }
    return static_cast<int32_t>(lo);
}

constexpr std::array<int32_t, 512> MakeLabCubeRootTable() {
    std::array<int32_t, 512> table{};
    // floor(1024 * cbrt(i / 255)) = floor(cbrt(1024^3 * i / 255)).
    for (int64_t i = 0; i < 512; ++i)
        table[i] = FloorCubeRoot((int64_t{1} << 30) * i, 255);
    return table;
}
} // namespace detail

// Fixed-point cube roots for the Lab conversion: floor(1024 * cbrt(i / 255)).
inline constexpr std::array<int32_t, 512> LabCubeRootTable = detail::MakeLabCubeRootTable();

// The standard zoom steps of the canvas, ascending.
inline constexpr std::array<double, 21> ZoomFactorTable = {
    0.0276, 0.05, 0.0625, 0.0833, 0.125, 0.167, 0.25, 0.33, 0.5, 0.67, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20};

// The 25 classic desktop system colours, indexed like the Windows constants
// (0 scroll bar ... 24 tool tip background), taken from the application
// palette when first asked for. Build after the QGuiApplication exists.
const std::vector<NamedColor>& SystemColorTable();
// The 140 web/X11 colour names, lower case with blanks ("alice blue").
const std::vector<NamedColor>& NamedColorTable();
// The editor's own default swatch book, 121 entries.
const std::vector<NamedColor>& DefaultSwatchTable();

// The five web colour books, named "#" + the COLORREF in six hexadecimal
// digits (so blue comes first): web-safe, by hue, spectrum (341 entries: the
// web-safe cube plus the 125 colours halfway between its levels), Mac order,
// Windows order.
enum WebColorBook { WebSafeBook = 0, WebHueBook, WebSpectrumBook, MacSystemBook, WindowsSystemBook };
inline constexpr int WebColorBookCount = 5;
// A book number outside 0..4 answers an empty table.
const std::vector<NamedColor>& WebColorTable(int Book);

// The 20 photo filter colours.
const std::vector<NamedColor>& PhotoFilterTable();

// Builds every table now, so that the first use later costs nothing.
void BuildStartUpTables();

// The name of a web colour entry: "#" and six upper-case hexadecimal digits.
QString WebColorName(int32_t Color);

} // namespace vm
