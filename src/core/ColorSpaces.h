#pragma once
// Colour conversions of the colour and information panels. RGB components are
// 0..255 integers; the other spaces are doubles, so that a round trip through
// them gives the same RGB back, and the panels round them for display.
#include <cstdint>

namespace vm {

// Hue in degrees 0..360 (0 for a grey), saturation and brightness 0..100.
struct Hsb {
    double H = 0.0, S = 0.0, B = 0.0;
};
Hsb RgbToHsb(int32_t R, int32_t G, int32_t B);
// H is taken modulo 360; S and B are held to 0..100.
void HsbToRgb(const Hsb& Color, int32_t& R, int32_t& G, int32_t& B);

// The six sectors of the hue circle: H in 0..6 (sixths of a turn), S and V
// in 0..1, giving R, G and B in 0..V.
void HsvSectorToRgb(double H, double S, double V, double& R, double& G, double& B);

// Percentages 0..100, the plain device conversion without a profile:
// K = 1 - max(R, G, B), C = (1 - R - K) / (1 - K) and likewise (all 0 for black).
struct Cmyk {
    double C = 0.0, M = 0.0, Y = 0.0, K = 0.0;
};
Cmyk RgbToCmyk(int32_t R, int32_t G, int32_t B);
// Components held to 0..100.
void CmykToRgb(const Cmyk& Color, int32_t& R, int32_t& G, int32_t& B);

// CIE L*a*b* of an sRGB colour, white point D65: L 0..100, a and b about
// -128..127.
struct Lab {
    double L = 0.0, A = 0.0, B = 0.0;
};
Lab RgbToLab(int32_t R, int32_t G, int32_t B);
// Colours outside the sRGB gamut are clipped channel by channel.
void LabToRgb(const Lab& Color, int32_t& R, int32_t& G, int32_t& B);

// Grey of a colour by the luma weights 0.299, 0.587, 0.114, rounded.
int32_t GreyValue(int32_t R, int32_t G, int32_t B);

// The nearest of the 216 web-safe colours: each channel to the nearest
// multiple of 51.
void NearestWebSafe(int32_t& R, int32_t& G, int32_t& B);

} // namespace vm
