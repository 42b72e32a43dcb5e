#include "core/ColorSpaces.h"

#include "core/Numeric.h"

#include <algorithm>
#include <cmath>

namespace vm {

namespace {

inline int32_t ToByte(double v) {
    return ClampByte(RoundHalfEven(v));
}

// sRGB transfer curve and its inverse, on 0..1.
double Linear(double c) {
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}
double Encoded(double c) {
    return c <= 0.0031308 ? 12.92 * c : 1.055 * std::pow(c, 1.0 / 2.4) - 0.055;
}

// D65 reference white.
constexpr double WhiteX = 0.95047, WhiteY = 1.0, WhiteZ = 1.08883;
constexpr double Epsilon = 216.0 / 24389.0;
constexpr double Kappa = 24389.0 / 27.0;

double LabF(double t) {
    return t > Epsilon ? std::cbrt(t) : (Kappa * t + 16.0) / 116.0;
}
double LabFInverse(double f) {
    const double cube = f * f * f;
    return cube > Epsilon ? cube : (116.0 * f - 16.0) / Kappa;
}

} // namespace

Hsb RgbToHsb(int32_t r, int32_t g, int32_t b) {
    r = ClampByte(r);
    g = ClampByte(g);
    b = ClampByte(b);
    const int32_t hi = std::max({r, g, b}), lo = std::min({r, g, b});
    const double range = hi - lo;
    Hsb out;
    out.B = hi * 100.0 / 255.0;
    out.S = hi == 0 ? 0.0 : range * 100.0 / hi;
    if (range > 0) {
        double h;
        if (hi == r)
            h = (g - b) / range;
        else if (hi == g)
            h = 2.0 + (b - r) / range;
        else
            h = 4.0 + (r - g) / range;
        h *= 60.0;
        out.H = h < 0.0 ? h + 360.0 : h;
    }
    return out;
}

void HsvSectorToRgb(double h, double s, double v, double& r, double& g, double& b) {
    const int sector = std::clamp(static_cast<int>(h), 0, 5);
    const double f = h - sector;
    const double p = v * (1.0 - s), q = v * (1.0 - s * f), t = v * (1.0 - s * (1.0 - f));
    switch (sector) {
    case 0:
        r = v, g = t, b = p;
        break;
    case 1:
        r = q, g = v, b = p;
        break;
    case 2:
        r = p, g = v, b = t;
        break;
    case 3:
        r = p, g = q, b = v;
        break;
    case 4:
        r = t, g = p, b = v;
        break;
    default:
        r = v, g = p, b = q;
        break;
    }
}

void HsbToRgb(const Hsb& c, int32_t& r, int32_t& g, int32_t& b) {
    const double v = std::clamp(c.B, 0.0, 100.0) / 100.0 * 255.0;
    const double s = std::clamp(c.S, 0.0, 100.0) / 100.0;
    const double h = std::isfinite(c.H) ? ModPositive(c.H, 360.0) / 60.0 : 0.0;
    double rr, gg, bb;
    HsvSectorToRgb(h, s, v, rr, gg, bb);
    r = ToByte(rr);
    g = ToByte(gg);
    b = ToByte(bb);
}

Cmyk RgbToCmyk(int32_t r, int32_t g, int32_t b) {
    const double rr = ClampByte(r) / 255.0, gg = ClampByte(g) / 255.0, bb = ClampByte(b) / 255.0;
    const double k = 1.0 - std::max({rr, gg, bb});
    Cmyk out;
    out.K = k * 100.0;
    if (k < 1.0) {
        out.C = (1.0 - rr - k) / (1.0 - k) * 100.0;
        out.M = (1.0 - gg - k) / (1.0 - k) * 100.0;
        out.Y = (1.0 - bb - k) / (1.0 - k) * 100.0;
    }
    return out;
}

void CmykToRgb(const Cmyk& c, int32_t& r, int32_t& g, int32_t& b) {
    auto unit = [](double v) { return std::isfinite(v) ? std::clamp(v, 0.0, 100.0) / 100.0 : 0.0; };
    const double k = unit(c.K);
    r = ToByte(255.0 * (1.0 - unit(c.C)) * (1.0 - k));
    g = ToByte(255.0 * (1.0 - unit(c.M)) * (1.0 - k));
    b = ToByte(255.0 * (1.0 - unit(c.Y)) * (1.0 - k));
}

Lab RgbToLab(int32_t r, int32_t g, int32_t b) {
    const double lr = Linear(ClampByte(r) / 255.0), lg = Linear(ClampByte(g) / 255.0),
                 lb = Linear(ClampByte(b) / 255.0);
    const double x = 0.4124564 * lr + 0.3575761 * lg + 0.1804375 * lb;
    const double y = 0.2126729 * lr + 0.7151522 * lg + 0.0721750 * lb;
    const double z = 0.0193339 * lr + 0.1191920 * lg + 0.9503041 * lb;
    const double fx = LabF(x / WhiteX), fy = LabF(y / WhiteY), fz = LabF(z / WhiteZ);
    return {116.0 * fy - 16.0, 500.0 * (fx - fy), 200.0 * (fy - fz)};
}

void LabToRgb(const Lab& c, int32_t& r, int32_t& g, int32_t& b) {
    const double l = std::isfinite(c.L) ? c.L : 0.0, a = std::isfinite(c.A) ? c.A : 0.0,
                 bb = std::isfinite(c.B) ? c.B : 0.0;
    const double fy = (l + 16.0) / 116.0, fx = fy + a / 500.0, fz = fy - bb / 200.0;
    const double x = WhiteX * LabFInverse(fx), y = WhiteY * LabFInverse(fy), z = WhiteZ * LabFInverse(fz);
    const double lr = 3.2404542 * x - 1.5371385 * y - 0.4985314 * z;
    const double lg = -0.9692660 * x + 1.8760108 * y + 0.0415560 * z;
    const double lb = 0.0556434 * x - 0.2040259 * y + 1.0572252 * z;
    auto channel = [](double v) { return ToByte(255.0 * Encoded(std::clamp(v, 0.0, 1.0))); };
    r = channel(lr);
    g = channel(lg);
    b = channel(lb);
}

int32_t GreyValue(int32_t r, int32_t g, int32_t b) {
    return (299 * ClampByte(r) + 587 * ClampByte(g) + 114 * ClampByte(b) + 500) / 1000;
}

void NearestWebSafe(int32_t& r, int32_t& g, int32_t& b) {
    auto snap = [](int32_t v) { return (ClampByte(v) + 25) / 51 * 51; };
    r = snap(r);
    g = snap(g);
    b = snap(b);
}

} // namespace vm
