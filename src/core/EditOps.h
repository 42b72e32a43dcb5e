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

// The grey a colour takes in a grey picture: the mean of its channels, as a
// new grey picture takes its background.
int32_t GreyOfColor(int32_t Color);

} // namespace vm
