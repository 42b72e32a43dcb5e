#pragma once
// Tone curves: three 256-entry tables applied in the processing frame, and
// the tables built from control points through the editor's natural spline.
#include "core/Image.h"

#include <QList>
#include <QString>

#include <array>

namespace vm {

using ToneTable = std::array<uint8_t, 256>;

// Red, green and blue through their tables ("曲线"). Grey pictures take the
// third table; palette pictures map their entries; alpha is left alone.
bool Curve(CImage& Image, const ToneTable& Red, const ToneTable& Green, const ToneTable& Blue);
// The same under another command's name, for the tone operations that end here.
bool CurveNamed(CImage& Image, const ToneTable& Red, const ToneTable& Green, const ToneTable& Blue,
                const QString& Name);

struct CurvePoint {
    int32_t X = 0;
    int32_t Y = 0;
    bool Active = false; // the point the mouse is dragging
};

// The table of a list of points in X order. Active points are kept clear of
// their neighbours and inside the graph as the curve dialog needs.
std::array<int32_t, 256> TableFromPoints(const QList<CurvePoint>& Points);
ToneTable ToToneTable(const std::array<int32_t, 256>& Table);
ToneTable IdentityTable();

// Reads "x,y;x,y;..." into points; false on malformed text, coordinates
// outside 0..255, or X not strictly rising.
bool ParseCurvePoints(const QString& Text, QList<CurvePoint>& Points);

} // namespace vm
