#include "core/StartUpTables.h"

#include "core/ColorRef.h"
#include "core/ColorSpaces.h"
#include "core/Numeric.h"

#include <QColor>
#include <QGuiApplication>
#include <QPalette>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace vm {

namespace {

struct RgbEntry {
    uint32_t Rgb; // 0xRRGGBB, as colours are usually written
    const char* Name;
};

int32_t RgbToColorRef(uint32_t rgb) {
    return MakeColorRef(static_cast<int>((rgb >> 16) & 0xFF), static_cast<int>((rgb >> 8) & 0xFF),
                        static_cast<int>(rgb & 0xFF));
}

std::vector<NamedColor> FromRgbEntries(const RgbEntry* first, const RgbEntry* last) {
    std::vector<NamedColor> out;
    out.reserve(static_cast<size_t>(last - first));
    for (const RgbEntry* e = first; e != last; ++e)
        out.push_back({RgbToColorRef(e->Rgb), QString::fromUtf8(e->Name)});
    return out;
}

// HSV with every component in 0..1 (hue in turns), rounded to whole bytes.
int32_t HsvColorRef(double hueTurns, double saturation, double value) {
    double r = 0, g = 0, b = 0;
    HsvSectorToRgb(ModPositive(hueTurns, 1.0) * 6.0, saturation, value, r, g, b);
    return MakeColorRef(RoundHalfEven(r * 255), RoundHalfEven(g * 255), RoundHalfEven(b * 255));
}

const RgbEntry NamedColorEntries[] = {
    {0xF0F8FF, "alice blue"},
    {0xFAEBD7, "antique white"},
    {0x00FFFF, "aqua"},
    {0x7FFFD4, "aquamarine"},
    {0xF0FFFF, "azure"},
    {0xF5F5DC, "beige"},
    {0xFFE4C4, "bisque"},
    {0x000000, "black"},
    {0xFFEBCD, "blanched almond"},
    {0x0000FF, "blue"},
    {0x8A2BE2, "blue violet"},
    {0xA52A2A, "brown"},
    {0xDEB887, "burly wood"},
    {0x5F9EA0, "cadet blue"},
    {0x7FFF00, "chartreuse"},
    {0xD2691E, "chocolate"},
    {0xFF7F50, "coral"},
    {0x6495ED, "cornflower blue"},
    {0xFFF8DC, "cornsilk"},
    {0xDC143C, "crimson"},
    {0x00FFFF, "cyan"},
    {0x00008B, "dark blue"},
    {0x008B8B, "dark cyan"},
    {0xB8860B, "dark goldenrod"},
    {0xA9A9A9, "dark gray"},
    {0x006400, "dark green"},
    {0xBDB76B, "dark khaki"},
    {0x8B008B, "dark magenta"},
    {0x556B2F, "dark olive green"},
    {0xFF8C00, "dark orange"},
    {0x9932CC, "dark orchid"},
    {0x8B0000, "dark red"},
    {0xE9967A, "dark salmon"},
    {0x8FBC8F, "dark sea green"},
    {0x483D8B, "dark slate blue"},
    {0x2F4F4F, "dark slate gray"},
    {0x00CED1, "dark turquoise"},
    {0x9400D3, "dark violet"},
    {0xFF1493, "deep pink"},
    {0x00BFFF, "deep sky blue"},
    {0x696969, "dim gray"},
    {0x1E90FF, "dodger blue"},
    {0xB22222, "firebrick"},
    {0xFFFAF0, "floral white"},
    {0x228B22, "forest green"},
    {0xFF00FF, "fuchsia"},
    {0xDCDCDC, "gainsboro"},
    {0xF8F8FF, "ghost white"},
    {0xFFD700, "gold"},
    {0xDAA520, "goldenrod"},
    {0x808080, "gray"},
    {0x008000, "green"},
    {0xADFF2F, "green yellow"},
    {0xF0FFF0, "honeydew"},
    {0xFF69B4, "hot pink"},
    {0xCD5C5C, "indian red"},
    {0x4B0082, "indigo"},
    {0xFFFFF0, "ivory"},
    {0xF0E68C, "khaki"},
    {0xE6E6FA, "lavender"},
    {0xFFF0F5, "lavender blush"},
    {0x7CFC00, "lawn green"},
    {0xFFFACD, "lemon chiffon"},
    {0xADD8E6, "light blue"},
    {0xF08080, "light coral"},
    {0xE0FFFF, "light cyan"},
    {0xFAFAD2, "light goldenrod yellow"},
    {0xD3D3D3, "light gray"},
    {0x90EE90, "light green"},
    {0xFFB6C1, "light pink"},
    {0xFFA07A, "light salmon"},
    {0x20B2AA, "light sea green"},
    {0x87CEFA, "light sky blue"},
    {0x778899, "light slate gray"},
    {0xB0C4DE, "light steel blue"},
    {0xFFFFE0, "light yellow"},
    {0x00FF00, "lime"},
    {0x32CD32, "lime green"},
    {0xFAF0E6, "linen"},
    {0xFF00FF, "magenta"},
    {0x800000, "maroon"},
    {0x66CDAA, "medium aquamarine"},
    {0x0000CD, "medium blue"},
    {0xBA55D3, "medium orchid"},
    {0x9370DB, "medium purple"},
    {0x3CB371, "medium sea green"},
    {0x7B68EE, "medium slate blue"},
    {0x00FA9A, "medium spring green"},
    {0x48D1CC, "medium turquoise"},
    {0xC71585, "medium violet red"},
    {0x191970, "midnight blue"},
    {0xF5FFFA, "mint cream"},
    {0xFFE4E1, "misty rose"},
    {0xFFE4B5, "moccasin"},
    {0xFFDEAD, "navajo white"},
    {0x000080, "navy"},
    {0xFDF5E6, "old lace"},
    {0x808000, "olive"},
    {0x6B8E23, "olive drab"},
    {0xFFA500, "orange"},
    {0xFF4500, "orange red"},
    {0xDA70D6, "orchid"},
    {0xEEE8AA, "pale goldenrod"},
    {0x98FB98, "pale green"},
    {0xAFEEEE, "pale turquoise"},
    {0xDB7093, "pale violet red"},
    {0xFFEFD5, "papaya whip"},
    {0xFFDAB9, "peach puff"},
    {0xCD853F, "peru"},
    {0xFFC0CB, "pink"},
    {0xDDA0DD, "plum"},
    {0xB0E0E6, "powder blue"},
    {0x800080, "purple"},
    {0xFF0000, "red"},
    {0xBC8F8F, "rosy brown"},
    {0x4169E1, "royal blue"},
    {0x8B4513, "saddle brown"},
    {0xFA8072, "salmon"},
    {0xF4A460, "sandy brown"},
    {0x2E8B57, "sea green"},
    {0xFFF5EE, "sea shell"},
    {0xA0522D, "sienna"},
    {0xC0C0C0, "silver"},
    {0x87CEEB, "sky blue"},
    {0x6A5ACD, "slate blue"},
    {0x708090, "slate gray"},
    {0xFFFAFA, "snow"},
    {0x00FF7F, "spring green"},
    {0x4682B4, "steel blue"},
    {0xD2B48C, "tan"},
    {0x008080, "teal"},
    {0xD8BFD8, "thistle"},
    {0xFF6347, "tomato"},
    {0x40E0D0, "turquoise"},
    {0xEE82EE, "violet"},
    {0xF5DEB3, "wheat"},
    {0xFFFFFF, "white"},
    {0xF5F5F5, "white smoke"},
    {0xFFFF00, "yellow"},
    {0x9ACD32, "yellow green"},
};

// Values are COLORREF here, as the photo filters have always been written.
const std::pair<int32_t, const char*> PhotoFilterEntries[] = {
    {35564, "加温滤镜 (85)"},
    {38650, "加温滤镜 (LBA)"},
    {1290731, "加温滤镜 (81)"},
    {0xFF6D00, "冷却滤镜 (80)"},
    {0xFF5D00, "冷却滤镜 (LBB)"},
    {0xFFB500, "冷却滤镜 (82)"},
    {1710826, "红"},
    {1541363, "橙"},
    {1958905, "黄"},
    {1689881, "绿"},
    {15387421, "青"},
    {15349021, "蓝"},
    {15343003, "紫"},
    {14883043, "洋红"},
    {3373740, "深褐"},
    {255, "深红"},
    {13443584, "深蓝"},
    {36096, "深祖母绿"},
    {54783, "深黄"},
    {11649536, "水下"},
};

std::vector<NamedColor> BuildSystemColors() {
    static const char* const names[25] = {
        "滚动条",       "桌面",       "活动标题栏",     "非活动标题栏", "菜单条",
        "窗口背景",     "窗口边框",   "菜单文字",       "窗口文本",     "活动标题栏文本",
        "活动边框",     "非活动边框", "应用程序工作区", "突出显示文本", "突出显示",
        "按钮表面",     "按钮亮阴影", "无效字体",       "按钮表面文字", "非活动标题栏文本",
        "按钮突出显示", "按钮阴影",   "按钮暗阴影",     "工具提示文本", "工具提示"};
    // The value of entry i is what the desktop means by system colour i; the
    // names were laid out with 13 and 14 the other way round and stay so.
    using P = QPalette;
    struct Source {
        P::ColorGroup Group;
        P::ColorRole Role;
    };
    static const Source sources[25] = {
        {P::Active, P::Midlight},          // 0 scroll bar
        {P::Active, P::Dark},              // 1 desktop
        {P::Active, P::Highlight},         // 2 active caption
        {P::Inactive, P::Mid},             // 3 inactive caption
        {P::Active, P::Window},            // 4 menu
        {P::Active, P::Base},              // 5 window
        {P::Active, P::Shadow},            // 6 window frame
        {P::Active, P::WindowText},        // 7 menu text
        {P::Active, P::Text},              // 8 window text
        {P::Active, P::HighlightedText},   // 9 caption text
        {P::Active, P::Button},            // 10 active border
        {P::Inactive, P::Window},          // 11 inactive border
        {P::Active, P::Mid},               // 12 application workspace
        {P::Active, P::Highlight},         // 13 highlight
        {P::Active, P::HighlightedText},   // 14 highlighted text
        {P::Active, P::Button},            // 15 button face
        {P::Active, P::Dark},              // 16 button shadow
        {P::Disabled, P::Text},            // 17 grey text
        {P::Active, P::ButtonText},        // 18 button text
        {P::Inactive, P::PlaceholderText}, // 19 inactive caption text
        {P::Active, P::Light},             // 20 button highlight
        {P::Active, P::Shadow},            // 21 3D dark shadow
        {P::Active, P::Midlight},          // 22 3D light
        {P::Active, P::ToolTipText},       // 23 tool tip text
        {P::Active, P::ToolTipBase},       // 24 tool tip background
    };
    const QPalette palette = QGuiApplication::palette();
    std::vector<NamedColor> out;
    out.reserve(25);
    for (int i = 0; i < 25; ++i)
        out.push_back({QColorToColorRef(palette.color(sources[i].Group, sources[i].Role)),
                       QString::fromUtf8(names[i])});
    return out;
}

std::vector<NamedColor> BuildDefaultSwatches() {
    std::vector<NamedColor> out;
    out.reserve(121);
    auto add = [&](int32_t color, const QString& name) { out.push_back({color, name}); };
    auto addRgb = [&](uint32_t rgb, const char* name) { add(RgbToColorRef(rgb), QString::fromUtf8(name)); };

    addRgb(0xFF0000, "RGB红");
    addRgb(0xFFFF00, "RGB黄");
    addRgb(0x00FF00, "RGB绿");
    addRgb(0x00FFFF, "RGB青");
    addRgb(0x0000FF, "RGB蓝");
    addRgb(0xFF00FF, "RGB洋红");

    // Grey in steps of 5 % ink coverage, white to black.
    addRgb(0xFFFFFF, "白色");
    for (int percent = 5; percent <= 95; percent += 5) {
        const int level = RoundHalfEven(255.0 * (100 - percent) / 100.0);
        add(MakeColorRef(level, level, level), QStringLiteral("%1%灰色").arg(percent));
    }
    addRgb(0x000000, "黑色");

    // Process inks as they print on coated paper: duller than the screen primaries.
    addRgb(0xED1C24, "CMYK红");
    addRgb(0xFFF200, "CMYK黄");
    addRgb(0x00A651, "CMYK绿");
    addRgb(0x00AEEF, "CMYK青");
    addRgb(0x2E3192, "CMYK蓝");
    addRgb(0xEC008C, "CMYK洋红");

    // Six series around a twelve-step hue circle, light to dark, then muted.
    static const char* const hues[12] = {"红", "橙",   "黄", "黄绿", "绿",   "青绿",
                                         "青", "天蓝", "蓝", "紫",   "洋红", "玫红"};
    struct Series {
        const char* Prefix;
        double Saturation, Value;
    };
    static const Series series[6] = {{"蜡笔", 0.35, 1.00}, {"浅", 0.60, 1.00},   {"纯", 0.85, 0.93},
                                     {"深", 0.90, 0.62},   {"较深", 1.00, 0.38}, {"灰", 0.30, 0.62}};
    for (const Series& s : series)
        for (int h = 0; h < 12; ++h)
            add(HsvColorRef(h / 12.0, s.Saturation, s.Value),
                QString::fromUtf8(s.Prefix) + QString::fromUtf8(hues[h]));

    // Browns, cool (greyish) and warm (reddish), light to near black.
    addRgb(0xC4B5A0, "浅冷褐");
    addRgb(0x9A8A78, "中冷褐");
    addRgb(0x6F6254, "深冷褐");
    addRgb(0x4A4038, "深黑冷褐");
    addRgb(0xC9A27A, "浅暖褐");
    addRgb(0xA37A4E, "中暖褐");
    addRgb(0x7E5630, "深暖褐");
    addRgb(0x5A3A1C, "深黑暖褐");

    // A few everyday colours that the series above miss.
    addRgb(0xD4AF37, "金色");
    addRgb(0xC0C0C0, "银色");
    addRgb(0xF5F5DC, "米色");
    addRgb(0xFFFFF0, "象牙白");
    addRgb(0x000080, "海军蓝");
    addRgb(0xB22222, "砖红");
    addRgb(0x808000, "橄榄绿");
    addRgb(0xC3B091, "卡其色");
    return out;
}

// The web-safe cube: every channel one of 00, 33, 66, 99, CC, FF.
std::vector<int32_t> WebSafeColors(bool redOutermost, bool ascending) {
    std::vector<int32_t> out;
    out.reserve(216);
    for (int a = 0; a < 6; ++a)
        for (int b = 0; b < 6; ++b)
            for (int c = 0; c < 6; ++c) {
                const int x = (ascending ? a : 5 - a) * 0x33;
                const int y = (ascending ? b : 5 - b) * 0x33;
                const int z = (ascending ? c : 5 - c) * 0x33;
                out.push_back(redOutermost ? MakeColorRef(x, y, z) : MakeColorRef(z, y, x));
            }
    return out;
}

// Sort key by hue: chromatic colours round the circle, each hue from vivid
// to dull and light to dark; the greys last, white to black. Ties fall back
// on the value itself so that the order never depends on the sort.
std::tuple<int, int, int, int32_t> HueKey(int32_t color) {
    int r = 0, g = 0, b = 0;
    SplitColor(color, r, g, b);
    const QColor c(r, g, b);
    const int hue = c.hsvHue();
    if (hue < 0) return {360, 0, -c.value(), color};
    return {hue, -c.hsvSaturation(), -c.value(), color};
}

// Sort key for the spectrum book: 24 hue bands, each from light to dark.
std::tuple<int, int, int, int32_t> SpectrumKey(int32_t color) {
    int r = 0, g = 0, b = 0;
    SplitColor(color, r, g, b);
    const QColor c(r, g, b);
    const int hue = c.hsvHue();
    if (hue < 0) return {24, -c.lightness(), 0, color};
    return {hue / 15, -c.lightness(), -c.hsvSaturation(), color};
}

std::vector<NamedColor> Named(const std::vector<int32_t>& colors) {
    std::vector<NamedColor> out;
    out.reserve(colors.size());
    for (int32_t c : colors)
        out.push_back({c, WebColorName(c)});
    return out;
}

std::vector<NamedColor> BuildWebBook(int book) {
    switch (book) {
    case WebSafeBook:
        return Named(WebSafeColors(true, true));
    case WebHueBook: {
        std::vector<int32_t> colors = WebSafeColors(true, true);
        std::sort(colors.begin(), colors.end(), [](int32_t a, int32_t b) { return HueKey(a) < HueKey(b); });
        return Named(colors);
    }
    case WebSpectrumBook: {
        std::vector<int32_t> colors = WebSafeColors(true, true);
        static const int halfSteps[5] = {0x1A, 0x4D, 0x80, 0xB3, 0xE6};
        for (int r : halfSteps)
            for (int g : halfSteps)
                for (int b : halfSteps)
                    colors.push_back(MakeColorRef(r, g, b));
        std::sort(colors.begin(), colors.end(),
                  [](int32_t a, int32_t b) { return SpectrumKey(a) < SpectrumKey(b); });
        return Named(colors);
    }
    case MacSystemBook:
        return Named(WebSafeColors(true, false));
    default:
        return Named(WebSafeColors(false, true));
    }
}

} // namespace

QString WebColorName(int32_t Color) {
    return u'#' +
           QStringLiteral("%1").arg(static_cast<uint32_t>(Color) & 0xFFFFFFu, 6, 16, QChar(u'0')).toUpper();
}

const std::vector<NamedColor>& SystemColorTable() {
    static const std::vector<NamedColor> table = BuildSystemColors();
    return table;
}

const std::vector<NamedColor>& NamedColorTable() {
    static const std::vector<NamedColor> table =
        FromRgbEntries(std::begin(NamedColorEntries), std::end(NamedColorEntries));
    return table;
}

const std::vector<NamedColor>& DefaultSwatchTable() {
    static const std::vector<NamedColor> table = BuildDefaultSwatches();
    return table;
}

const std::vector<NamedColor>& WebColorTable(int Book) {
    static const std::array<std::vector<NamedColor>, WebColorBookCount> books = [] {
        std::array<std::vector<NamedColor>, WebColorBookCount> b;
        for (int i = 0; i < WebColorBookCount; ++i)
            b[i] = BuildWebBook(i);
        return b;
    }();
    static const std::vector<NamedColor> none;
    return Book >= 0 && Book < WebColorBookCount ? books[Book] : none;
}

const std::vector<NamedColor>& PhotoFilterTable() {
    static const std::vector<NamedColor> table = [] {
        std::vector<NamedColor> out;
        for (const auto& [color, name] : PhotoFilterEntries)
            out.push_back({color, QString::fromUtf8(name)});
        return out;
    }();
    return table;
}

void BuildStartUpTables() {
    SystemColorTable();
    NamedColorTable();
    DefaultSwatchTable();
    for (int i = 0; i < WebColorBookCount; ++i)
        WebColorTable(i);
    PhotoFilterTable();
}

} // namespace vm
