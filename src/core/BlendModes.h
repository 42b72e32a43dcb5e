#pragma once
// The editor's blend modes: how a colour laid on a picture (by the paint
// bucket, the Edit fill, the gradient and the render filters) mixes with the
// pixel below it. Numbering is the order of the blend-mode list.
//
// Separable modes work on one channel at a time in 8-bit integers, with a the
// base (the picture) and b the blend (what is laid on), both 0..255. Where a
// formula divides, the rule is stated; "round" is to nearest, halves up
// (all operands are non-negative):
//
//   溶解 dissolve        b (the pixel is taken or left whole, see below)
//   变暗 darken          min(a, b)
//   正片叠底 multiply     round(a b / 255)
//   颜色加深 colour burn  a = 255: 255; b = 0: 0; else max(0, 255 - trunc((255 - a) 255 / b))
//   线性加深 linear burn  max(0, a + b - 255)
//   变亮 lighten         max(a, b)
//   滤色 screen          255 - round((255 - a)(255 - b) / 255)
//   颜色减淡 colour dodge a = 0: 0; b = 255: 255; else min(255, trunc(a 255 / (255 - b)))
//   线性减淡 linear dodge min(255, a + b)
//   叠加 overlay         a < 128: round(2 a b / 255); else 255 - round(2 (255 - a)(255 - b) / 255)
//   柔光 soft light      round(a (255 a + 2 b (255 - a)) / 65025), the smooth (Pegtop) form
//                        a^2 (1 - 2b) + 2ab in unit terms: no seam at b = 128, and b = 0
//                        squares the base while b = 255 gives the base's screen with itself
//   亮光 vivid light     b < 128: colour burn with 2b; else colour dodge with 2 (b - 128)
//   线性光 linear light  clamp(a + 2b - 255)
//   点光 pin light       b < 128: min(a, 2b); else max(a, 2 (b - 128))
//   实色混合 hard mix     a + b >= 255: 255; else 0
//   差值 difference      |a - b|
//   排除 exclusion       a + b - round(2 a b / 255)
//   减去 subtract        max(0, a - b)
//   划分 divide          b = 0: (a = 0: 0; else 255); else min(255, round(a 255 / b))
//   纹理 texture         clamp(a + b - 128): a grain merge. The list names the mode and
//                        nothing more; grain merge is the texture-laying mode of the
//                        common editors and keeps a mid-grey blend neutral.
//
// Whole-colour modes look at the pixel as one colour:
//   深色 darker colour   the colour with the smaller R + G + B; a tie keeps the base
//   浅色 lighter colour  the colour with the larger R + G + B; a tie keeps the base
//   色相 hue, 饱和度 saturation, 颜色 color, 明度 luminosity: the usual compositing
//   definitions (luminosity 0.3 R + 0.59 G + 0.11 B, SetLum, SetSat and the clip to
//   the gamut), computed in doubles on the 0..255 scale; each channel of the result
//   is rounded to nearest, halves to even.
//
// Opacity O (0..255) then moves the base towards the mixed value m: a +
// trunc((m - a) O / 255). Dissolve instead takes the blend colour whole where
// a draw r from the shared random source falls under the opacity (r 255 < O)
// and leaves the base elsewhere; at 255 every pixel is taken.
#include <QStringList>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace vm {

enum BlendMode : int32_t {
    BlendDissolve = 0,
    BlendDarken = 1,
    BlendMultiply = 2,
    BlendColorBurn = 3,
    BlendLinearBurn = 4,
    BlendDarkerColor = 5,
    BlendLighten = 6,
    BlendScreen = 7,
    BlendColorDodge = 8,
    BlendLinearDodge = 9,
    BlendLighterColor = 10,
    BlendOverlay = 11,
    BlendSoftLight = 12,
    BlendVividLight = 13,
    BlendLinearLight = 14,
    BlendPinLight = 15,
    BlendHardMix = 16,
    BlendDifference = 17,
    BlendExclusion = 18,
    BlendSubtract = 19,
    BlendDivide = 20,
    BlendHue = 21,
    BlendSaturation = 22,
    BlendColor = 23,
    BlendLuminosity = 24,
    BlendTexture = 25,
};
constexpr int32_t BlendModeCount = 26;

// The list's captions, in mode order.
const QStringList& BlendModeNames();

// Grey pictures have one channel, so the list for them leaves out hue,
// saturation, color and luminosity: on a grey base the first three change
// nothing and the last is a plain replacement. Darker and lighter colour stay:
// on one channel they are darken and lighten. The modes, in list order.
const std::vector<int32_t>& GreyBlendModes();
QStringList GreyBlendModeNames();

// True for the modes that work channel by channel (dissolve included: its
// chance is per pixel, its value per channel).
bool IsSeparableBlendMode(int32_t Mode);

// The mixed value of one channel at full opacity. Whole-colour modes answer
// what they do on a grey pixel with a grey blend (see BlendGrey). An unknown
// mode leaves the base.
int32_t BlendChannel(int32_t Mode, int32_t Base, int32_t Blend);

// Table[Base * 256 + Blend] of a separable mode, opacity folded in (dissolve
// gives the blend value at any opacity: its opacity is the draw). False, and
// the table untouched, for a whole-colour or unknown mode.
using BlendTable = std::array<uint8_t, 65536>;
bool BuildBlendTable(int32_t Mode, BlendTable& Table, int32_t Opacity255 = 255);

struct Rgb {
    int32_t R = 0, G = 0, B = 0;
    bool operator==(const Rgb&) const = default;
};

// Blend laid on Base at full opacity, for every mode (dissolve: the blend).
// Components are taken as 0..255.
Rgb MixColors(int32_t Mode, const Rgb& Base, const Rgb& Blend);

// Blend laid on Base in Mode at Opacity255, dissolve drawing from the shared
// random source. Mode or opacity out of range: the base stays.
Rgb BlendColors(int32_t Mode, const Rgb& Base, const Rgb& Blend, int32_t Opacity255);

// One grey channel: the value of a grey base under a grey blend, with the
// whole-colour fall-backs described above (darker colour min, lighter colour
// max, hue/saturation/color the base, luminosity the blend).
int32_t BlendGrey(int32_t Mode, int32_t Base, int32_t Blend, int32_t Opacity255);

// The same work prepared once for many pixels: a separable mode is a table
// lookup, the whole-colour modes are computed per pixel.
class CBlender {
  public:
    CBlender(int32_t Mode, int32_t Opacity255);
    // False for an unknown mode or an opacity out of 0..255: nothing to do.
    bool Valid() const { return valid_; }
    int32_t Mode() const { return mode_; }
    int32_t Opacity() const { return opacity_; }
    Rgb Apply(const Rgb& Base, const Rgb& Blend) const;
    int32_t ApplyGrey(int32_t Base, int32_t Blend) const;
    // Dissolve's draw for one pixel: whether the blend is taken there.
    bool DissolveTakes() const;

  private:
    int32_t mode_;
    int32_t opacity_;
    bool valid_;
    std::unique_ptr<BlendTable> lookup_; // separable modes only
};

} // namespace vm
