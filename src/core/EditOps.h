#pragma once
// The pixel work of the Edit menu: clearing the selected pixels and filling
// them with a colour. Both run in the processing frame, so an empty selection
// is refused with the usual message and a partly selected pixel moves only by
// its weight.
#include "core/Image.h"

namespace vm {

// "清除": the selected pixels take BackColor (a COLORREF); on RGBA 32 they
// become transparent instead and keep their colour bytes. Grey pictures take
// the background's grey. Other formats raise both events and stay as they are.
bool Clear(CImage& Image, int32_t BackColor);

// "填充": the selected pixels move Opacity percent (1..100, held to that range)
// of the way to Color; on RGBA 32 the alpha moves the same way towards opaque.
// Formats as for Clear.
bool FillWithColor(CImage& Image, int32_t Color, int32_t Opacity);

// The bucket's and the fill dialog's fill: Color (a COLORREF) is laid on the
// selected pixels in BlendMode (see BlendModes.h) at Opacity255 (0..255, held
// to that range). RGBA 32 pixels that are not opaque are composited: the
// colour covers them by the opacity, mixed with the pixel below by its own
// alpha, and the alpha grows to a + (255 - a) Opacity / 255; dissolve makes a
// taken pixel opaque. Grey pictures take the grey of the colour and the grey
// list's fall-backs. Other formats raise both events and stay as they are.
bool FillWithColor(CImage& Image, int32_t Color, int32_t BlendMode, int32_t Opacity255);

// The same with a pattern instead of one colour: Pattern (RGB 24; any other
// format is first laid on white) is tiled from the image's first pixel, so
// pixel (x, y) takes the pattern's (x mod width, y mod height). False without
// a pattern to tile, before anything is raised.
bool FillWithPattern(CImage& Image, const CImage& Pattern, int32_t BlendMode, int32_t Opacity255);

// The grey a colour takes in a grey picture: the mean of its channels, as a
// new grey picture takes its background.
int32_t GreyOfColor(int32_t Color);

} // namespace vm
