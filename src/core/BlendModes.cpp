#include "core/BlendModes.h"

#include "core/Numeric.h"

#include <algorithm>
#include <cstdlib>

namespace vm {

namespace {

// num / den rounded to nearest, halves up; both non-negative, den positive.
inline int32_t DivRound(int32_t num, int32_t den) {
    return (2 * num + den) / (2 * den);
}

inline int32_t Burn(int32_t a, int32_t b) {
    if (a == 255) return 255;
    if (b == 0) return 0;
    return std::max(0, 255 - (255 - a) * 255 / b);
}

inline int32_t Dodge(int32_t a, int32_t b) {
    if (a == 0) return 0;
    if (b == 255) return 255;
    return std::min(255, a * 255 / (255 - b));
}

int32_t SeparableChannel(int32_t mode, int32_t a, int32_t b) {
    switch (mode) {
    case BlendDissolve:
        return b;
    case BlendDarken:
        return std::min(a, b);
    case BlendMultiply:
        return DivRound(a * b, 255);
    case BlendColorBurn:
        return Burn(a, b);
    case BlendLinearBurn:
        return std::max(0, a + b - 255);
    case BlendLighten:
        return std::max(a, b);
    case BlendScreen:
        return 255 - DivRound((255 - a) * (255 - b), 255);
    case BlendColorDodge:
        return Dodge(a, b);
    case BlendLinearDodge:
        return std::min(255, a + b);
    case BlendOverlay:
        return a < 128 ? DivRound(2 * a * b, 255) : 255 - DivRound(2 * (255 - a) * (255 - b), 255);
    case BlendSoftLight:
        return DivRound(a * (255 * a + 2 * b * (255 - a)), 65025);
    case BlendVividLight:
        return b < 128 ? Burn(a, 2 * b) : Dodge(a, 2 * (b - 128));
    case BlendLinearLight:
        return ClampByte(a + 2 * b - 255);
    case BlendPinLight:
        return b < 128 ? std::min(a, 2 * b) : std::max(a, 2 * (b - 128));
    case BlendHardMix:
        return a + b >= 255 ? 255 : 0;
    case BlendDifference:
        return std::abs(a - b);
    case BlendExclusion:
        return a + b - DivRound(2 * a * b, 255);
    case BlendSubtract:
        return std::max(0, a - b);
    case BlendDivide:
        if (b == 0) return a == 0 ? 0 : 255;
        return std::min(255, DivRound(a * 255, b));
    case BlendTexture:
        return ClampByte(a + b - 128);
    default:
        return a;
    }
}

// ---- the whole-colour modes, on the 0..255 scale

struct Col {
    double R, G, B;
};

inline double Lum(const Col& c) {
    return 0.3 * c.R + 0.59 * c.G + 0.11 * c.B;
}

Col ClipColor(Col c) {
    const double l = Lum(c);
    const double n = std::min({c.R, c.G, c.B});
    const double x = std::max({c.R, c.G, c.B});
    if (n < 0.0 && l - n > 0.0) {
        c.R = l + (c.R - l) * l / (l - n);
        c.G = l + (c.G - l) * l / (l - n);
        c.B = l + (c.B - l) * l / (l - n);
    }
    if (x > 255.0 && x - l > 0.0) {
        c.R = l + (c.R - l) * (255.0 - l) / (x - l);
        c.G = l + (c.G - l) * (255.0 - l) / (x - l);
        c.B = l + (c.B - l) * (255.0 - l) / (x - l);
    }
    return c;
}

Col SetLum(Col c, double l) {
    const double d = l - Lum(c);
    return ClipColor({c.R + d, c.G + d, c.B + d});
}

inline double Sat(const Col& c) {
    return std::max({c.R, c.G, c.B}) - std::min({c.R, c.G, c.B});
}

Col SetSat(Col c, double s) {
    double* ch[3] = {&c.R, &c.G, &c.B};
    // Order the three channels: min, mid, max. Equal values keep their order.
    std::stable_sort(ch, ch + 3, [](const double* p, const double* q) { return *p < *q; });
    double& lo = *ch[0];
    double& mid = *ch[1];
    double& hi = *ch[2];
    if (hi > lo) {
        mid = (mid - lo) * s / (hi - lo);
        hi = s;
    } else {
        mid = 0.0;
        hi = 0.0;
    }
    lo = 0.0;
    return c;
}

Rgb ToRgb(const Col& c) {
    return {ClampByte(RoundHalfEven(c.R)), ClampByte(RoundHalfEven(c.G)), ClampByte(RoundHalfEven(c.B))};
}

Rgb WholeColour(int32_t mode, const Rgb& base, const Rgb& blend) {
    const Col cb{double(base.R), double(base.G), double(base.B)};
    const Col cs{double(blend.R), double(blend.G), double(blend.B)};
    switch (mode) {
    case BlendDarkerColor:
        return blend.R + blend.G + blend.B < base.R + base.G + base.B ? blend : base;
    case BlendLighterColor:
        return blend.R + blend.G + blend.B > base.R + base.G + base.B ? blend : base;
    case BlendHue:
        return ToRgb(SetLum(SetSat(cs, Sat(cb)), Lum(cb)));
    case BlendSaturation:
        return ToRgb(SetLum(SetSat(cb, Sat(cs)), Lum(cb)));
    case BlendColor:
        return ToRgb(SetLum(cs, Lum(cb)));
    case BlendLuminosity:
        return ToRgb(SetLum(cb, Lum(cs)));
    default:
        return base;
    }
}

inline Rgb Clamped(const Rgb& c) {
    return {ClampByte(c.R), ClampByte(c.G), ClampByte(c.B)};
}

inline int32_t ByOpacity(int32_t a, int32_t m, int32_t opacity) {
    return opacity == 255 ? m : a + Div255((m - a) * opacity);
}

inline bool ValidMode(int32_t mode) {
    return mode >= 0 && mode < BlendModeCount;
}

} // namespace

const QStringList& BlendModeNames() {
    static const QStringList names = {
        QStringLiteral("溶解"),     QStringLiteral("变暗"),     QStringLiteral("正片叠底"),
        QStringLiteral("颜色加深"), QStringLiteral("线性加深"), QStringLiteral("深色"),
        QStringLiteral("变亮"),     QStringLiteral("滤色"),     QStringLiteral("颜色减淡"),
        QStringLiteral("线性减淡"), QStringLiteral("浅色"),     QStringLiteral("叠加"),
        QStringLiteral("柔光"),     QStringLiteral("亮光"),     QStringLiteral("线性光"),
        QStringLiteral("点光"),     QStringLiteral("实色混合"), QStringLiteral("差值"),
        QStringLiteral("排除"),     QStringLiteral("减去"),     QStringLiteral("划分"),
        QStringLiteral("色相"),     QStringLiteral("饱和度"),   QStringLiteral("颜色"),
        QStringLiteral("明度"),     QStringLiteral("纹理"),
    };
    return names;
}

const std::vector<int32_t>& GreyBlendModes() {
    static const std::vector<int32_t> modes = [] {
        std::vector<int32_t> m;
        for (int32_t i = 0; i < BlendModeCount; ++i)
            if (i < BlendHue || i > BlendLuminosity) m.push_back(i);
        return m;
    }();
    return modes;
}

QStringList GreyBlendModeNames() {
    QStringList out;
    for (int32_t m : GreyBlendModes())
        out << BlendModeNames().at(m);
    return out;
}

bool IsSeparableBlendMode(int32_t mode) {
    return ValidMode(mode) && mode != BlendDarkerColor && mode != BlendLighterColor &&
           (mode < BlendHue || mode > BlendLuminosity);
}

int32_t BlendChannel(int32_t mode, int32_t base, int32_t blend) {
    const int32_t a = ClampByte(base), b = ClampByte(blend);
    switch (mode) {
    case BlendDarkerColor:
        return std::min(a, b);
    case BlendLighterColor:
        return std::max(a, b);
    case BlendHue:
    case BlendSaturation:
    case BlendColor:
        return a;
    case BlendLuminosity:
        return b;
    default:
        return SeparableChannel(mode, a, b);
    }
}

bool BuildBlendTable(int32_t mode, BlendTable& table, int32_t opacity) {
    if (!IsSeparableBlendMode(mode)) return false;
    opacity = mode == BlendDissolve ? 255 : std::clamp(opacity, 0, 255);
    for (int32_t a = 0; a < 256; ++a)
        for (int32_t b = 0; b < 256; ++b)
            table[static_cast<size_t>(a * 256 + b)] =
                static_cast<uint8_t>(ByOpacity(a, SeparableChannel(mode, a, b), opacity));
    return true;
}

Rgb MixColors(int32_t mode, const Rgb& base, const Rgb& blend) {
    const Rgb a = Clamped(base), b = Clamped(blend);
    if (!ValidMode(mode)) return a;
    if (IsSeparableBlendMode(mode))
        return {SeparableChannel(mode, a.R, b.R), SeparableChannel(mode, a.G, b.G),
                SeparableChannel(mode, a.B, b.B)};
    return WholeColour(mode, a, b);
}

Rgb BlendColors(int32_t mode, const Rgb& base, const Rgb& blend, int32_t opacity) {
    const Rgb a = Clamped(base);
    if (!ValidMode(mode) || opacity < 0 || opacity > 255) return a;
    if (mode == BlendDissolve) return Rnd() * 255.0f < static_cast<float>(opacity) ? Clamped(blend) : a;
    const Rgb m = MixColors(mode, a, blend);
    return {ByOpacity(a.R, m.R, opacity), ByOpacity(a.G, m.G, opacity), ByOpacity(a.B, m.B, opacity)};
}

int32_t BlendGrey(int32_t mode, int32_t base, int32_t blend, int32_t opacity) {
    const int32_t a = ClampByte(base);
    if (!ValidMode(mode) || opacity < 0 || opacity > 255) return a;
    if (mode == BlendDissolve) return Rnd() * 255.0f < static_cast<float>(opacity) ? ClampByte(blend) : a;
    return ByOpacity(a, BlendChannel(mode, a, blend), opacity);
}

CBlender::CBlender(int32_t mode, int32_t opacity)
    : mode_(mode), opacity_(opacity), valid_(ValidMode(mode) && opacity >= 0 && opacity <= 255) {
    if (valid_ && IsSeparableBlendMode(mode) && mode != BlendDissolve) {
        lookup_ = std::make_unique<BlendTable>();
        BuildBlendTable(mode, *lookup_, opacity);
    }
}

bool CBlender::DissolveTakes() const {
    return Rnd() * 255.0f < static_cast<float>(opacity_);
}

Rgb CBlender::Apply(const Rgb& base, const Rgb& blend) const {
    const Rgb a = Clamped(base);
    if (!valid_) return a;
    const Rgb b = Clamped(blend);
    if (mode_ == BlendDissolve) return DissolveTakes() ? b : a;
    if (lookup_) {
        const BlendTable& t = *lookup_;
        return {t[static_cast<size_t>(a.R * 256 + b.R)], t[static_cast<size_t>(a.G * 256 + b.G)],
                t[static_cast<size_t>(a.B * 256 + b.B)]};
    }
    const Rgb m = WholeColour(mode_, a, b);
    return {ByOpacity(a.R, m.R, opacity_), ByOpacity(a.G, m.G, opacity_), ByOpacity(a.B, m.B, opacity_)};
}

int32_t CBlender::ApplyGrey(int32_t base, int32_t blend) const {
    const int32_t a = ClampByte(base);
    if (!valid_) return a;
    const int32_t b = ClampByte(blend);
    if (mode_ == BlendDissolve) return DissolveTakes() ? b : a;
    if (lookup_) return (*lookup_)[static_cast<size_t>(a * 256 + b)];
    return ByOpacity(a, BlendChannel(mode_, a, b), opacity_);
}

} // namespace vm
