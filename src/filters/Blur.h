#pragma once
// The blur family. Every blur runs in the processing frame: it refuses an
// empty selection with its catalogue row's title, reads a private copy of the picture and
// writes back through the mask. RGB 24, RGBA 32 and 8-bit grey are handled;
// other formats pass through unchanged with both events raised. In RGBA 32
// only GaussianBlur touches alpha (as a fourth channel); the others leave it.
// A parameter no dialog can give (a negative radius, a zero threshold where
// it divides) is refused with false before anything happens.
#include "core/Image.h"

#include <cstdint>
#include <vector>

namespace vm {

// The whole selection becomes one flat colour: the mean of the visited pixels.
bool AverageBlur(CImage& Image);
// The (2r + 1)^2 mean with the border pixels standing in beyond the edges.
bool BoxBlur(CImage& Image, int32_t Radius);
// The separable triangular kernel of weights 1 .. r + 1 .. 1; alpha included.
bool GaussianBlur(CImage& Image, int32_t Radius);
// Mean of the neighbours within Threshold of the centre, per channel.
bool SelectiveGaussianBlur(CImage& Image, int32_t Radius, int32_t Threshold);
// Samples along arcs around the centre, both ways, in 16.16 fixed point.
bool RadialBlur(CImage& Image, int32_t Angle, int32_t SampleRadius, int32_t CentreX, int32_t CentreY);
// Samples along the path to the centre, in 16.16 fixed point.
bool ZoomBlur(CImage& Image, int32_t Amount, int32_t SampleRadius, int32_t CentreX, int32_t CentreY);
// Mean along a line of Distance at half the dial's angle.
bool MotionBlur(CImage& Image, int32_t Angle, int32_t Distance);
// Neighbours weighed by their closeness in value to the centre.
bool SurfaceBlur(CImage& Image, int32_t Radius, int32_t Threshold);
// Mean of the frame of the square at distance Radius.
bool FarBlur(CImage& Image, int32_t Radius);
// The window's histogram mean.
bool Unfocus(CImage& Image, int32_t Radius);
// A box mean whose radius at each pixel comes from the map's grey: up to
// RadiusX / 100 and RadiusY / 100 times the grey value. The map is tiled from
// the top left corner, or stretched to the picture's size.
bool VariableBlur(CImage& Image, const CImage& Map, int32_t RadiusX, int32_t RadiusY, bool Stretch);

// ---- line helpers
// One point for each step of the longer side, from (X0, Y0) to (X1, Y1).
void BresenhamLine(int32_t X0, int32_t Y0, int32_t X1, int32_t Y1, std::vector<int32_t>& Xs,
                   std::vector<int32_t>& Ys);
// The offsets of a line of Length from the origin at Angle degrees; the angle
// acts at half its value, as the motion blur has always drawn it.
void GetLineOffsets(int32_t Angle, double Length, std::vector<int32_t>& Xs, std::vector<int32_t>& Ys);

} // namespace vm
