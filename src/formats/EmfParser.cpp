#include "formats/EmfParser.h"

#include "core/Numeric.h"
#include "formats/CodecCommon.h"
#include "formats/DibCodec.h"
#include "formats/MetafilePlayer.h"
#include "formats/ParserCommon.h"
#include "formats/ParserRegistry.h"

#include <QFile>
#include <QPainter>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <unordered_map>
#include <vector>

#include <uemf.h>
#include <uemf_safe.h>

namespace vm {

namespace {

// The records that only set one value of the drawing state: two points, a
// mode or a colour.
bool PlaySetterRecord(MetafilePlayer& player, uint32_t type, ByteReader& r) {
    using PointSetter = void (MetafilePlayer::*)(double, double);
    static const std::pair<uint32_t, PointSetter> points[] = {
        {U_EMR_SETWINDOWEXTEX, &MetafilePlayer::SetWindowExt},
        {U_EMR_SETWINDOWORGEX, &MetafilePlayer::SetWindowOrg},
        {U_EMR_SETVIEWPORTEXTEX, &MetafilePlayer::SetViewportExt},
        {U_EMR_SETVIEWPORTORGEX, &MetafilePlayer::SetViewportOrg},
        {U_EMR_MOVETOEX, &MetafilePlayer::MoveTo},
        {U_EMR_LINETO, &MetafilePlayer::LineTo},
    };
    using ModeSetter = void (MetafilePlayer::*)(int32_t);
    static const std::pair<uint32_t, ModeSetter> modes[] = {
        {U_EMR_SETMAPMODE, &MetafilePlayer::SetMapMode},
        {U_EMR_SETBKMODE, &MetafilePlayer::SetBkMode},
        {U_EMR_SETPOLYFILLMODE, &MetafilePlayer::SetPolyFillMode},
        {U_EMR_SETROP2, &MetafilePlayer::SetRop2},
    };
    using ValueSetter = void (MetafilePlayer::*)(uint32_t);
    static const std::pair<uint32_t, ValueSetter> values[] = {
        {U_EMR_SETTEXTALIGN, &MetafilePlayer::SetTextAlign},
    };
    static const std::pair<uint32_t, ValueSetter> colours[] = {
        {U_EMR_SETTEXTCOLOR, &MetafilePlayer::SetTextColor},
        {U_EMR_SETBKCOLOR, &MetafilePlayer::SetBkColor},
    };
    for (const auto& [t, set] : points)
        if (t == type) {
            const double x = r.I32();
            (player.*set)(x, r.I32());
            return true;
        }
    for (const auto& [t, set] : modes)
        if (t == type) return (player.*set)(r.I32()), true;
    for (const auto& [t, set] : values)
        if (t == type) return (player.*set)(r.U32()), true;
    for (const auto& [t, set] : colours)
        if (t == type) return (player.*set)(r.U32() & 0xFFFFFF), true;
    return false;
}

constexpr uint32_t EmfSignature = 0x464D4520; // " EMF"
constexpr size_t MinHeaderSize = 88;

struct EmfHeader {
    int32_t FrameLeft = 0, FrameTop = 0, FrameRight = 0, FrameBottom = 0;
    int32_t DeviceX = 0, DeviceY = 0, MillimetresX = 0, MillimetresY = 0;
};

bool ReadHeader(const QByteArray& bytes, EmfHeader& h) {
    if (static_cast<size_t>(bytes.size()) < MinHeaderSize) return false;
    ByteReader r(bytes);
    const uint32_t type = r.U32();
    const uint32_t size = r.U32();
    if (type != U_EMR_HEADER || size < MinHeaderSize || size > static_cast<size_t>(bytes.size()))
        return false;
    r.Seek(24);
    h.FrameLeft = r.I32();
    h.FrameTop = r.I32();
    h.FrameRight = r.I32();
    h.FrameBottom = r.I32();
    if (r.U32() != EmfSignature) return false;
    r.Seek(72);
    h.DeviceX = r.I32();
    h.DeviceY = r.I32();
    h.MillimetresX = r.I32();
    h.MillimetresY = r.I32();
    return h.DeviceX > 0 && h.DeviceY > 0 && h.MillimetresX > 0 && h.MillimetresY > 0;
}

GdiObject StockObject(uint32_t index) {
    GdiObject o;
    switch (index) {
    case 0:   // WHITE_BRUSH
    case 1:   // LTGRAY_BRUSH
    case 2:   // GRAY_BRUSH
    case 3:   // DKGRAY_BRUSH
    case 4: { // BLACK_BRUSH
        static const uint32_t greys[] = {0xFFFFFF, 0xC0C0C0, 0x808080, 0x404040, 0x000000};
        o.Type = GdiObject::Brush;
        o.BrushValue.Color = greys[index];
        break;
    }
    case 5: // NULL_BRUSH
        o.Type = GdiObject::Brush;
        o.BrushValue.Style = 1;
        break;
    case 6: // WHITE_PEN
    case 7: // BLACK_PEN
        o.Type = GdiObject::Pen;
        o.PenValue.Color = index == 6 ? 0xFFFFFF : 0;
        break;
    case 8: // NULL_PEN
        o.Type = GdiObject::Pen;
        o.PenValue.Style = 5;
        break;
    case 10:
    case 11:
    case 12:
    case 13:
    case 14:
    case 16:
    case 17:
        o.Type = GdiObject::Font;
        break;
    default:
        break;
    }
    return o;
}

QRectF ReadRect(ByteReader& r) {
    const double l = r.I32(), t = r.I32(), rr = r.I32(), b = r.I32();
    return QRectF(QPointF(l, t), QPointF(rr, b));
}

QPolygonF ReadPoints(ByteReader& r, size_t count, bool small) {
    QPolygonF points;
    points.reserve(static_cast<qsizetype>(count));
    for (size_t i = 0; i < count; ++i) {
        const double x = small ? r.I16() : r.I32();
        const double y = small ? r.I16() : r.I32();
        points.append(QPointF(x, y));
    }
    return points;
}

// The bitmap of a transfer record: BITMAPINFO and bits by their offsets from
// the record's start.
QImage RecordBitmap(const ByteReader& record, uint32_t offBmi, uint32_t cbBmi, uint32_t offBits,
                    uint32_t cbBits, uint32_t usage) {
    const size_t size = record.Size();
    if (cbBmi == 0 || offBmi > size || cbBmi > size - offBmi || offBits > size || cbBits > size - offBits)
        return {};
    const ByteReader bits = record.Slice(offBits, cbBits);
    return RecordDib(record.Slice(offBmi, cbBmi), &bits, usage);
}

// The record types the player acts on; the others are passed over unread.
bool Played(uint32_t type) {
    switch (type) {
    case U_EMR_POLYBEZIER:
    case U_EMR_POLYGON:
    case U_EMR_POLYLINE:
    case U_EMR_POLYBEZIERTO:
    case U_EMR_POLYLINETO:
    case U_EMR_POLYPOLYLINE:
    case U_EMR_POLYPOLYGON:
    case U_EMR_SETWINDOWEXTEX:
    case U_EMR_SETWINDOWORGEX:
    case U_EMR_SETVIEWPORTEXTEX:
    case U_EMR_SETVIEWPORTORGEX:
    case U_EMR_SETPIXELV:
    case U_EMR_SETMAPMODE:
    case U_EMR_SETBKMODE:
    case U_EMR_SETPOLYFILLMODE:
    case U_EMR_SETROP2:
    case U_EMR_SETTEXTALIGN:
    case U_EMR_SETTEXTCOLOR:
    case U_EMR_SETBKCOLOR:
    case U_EMR_MOVETOEX:
    case U_EMR_EXCLUDECLIPRECT:
    case U_EMR_INTERSECTCLIPRECT:
    case U_EMR_SCALEVIEWPORTEXTEX:
    case U_EMR_SCALEWINDOWEXTEX:
    case U_EMR_SAVEDC:
    case U_EMR_RESTOREDC:
    case U_EMR_SETWORLDTRANSFORM:
    case U_EMR_MODIFYWORLDTRANSFORM:
    case U_EMR_SELECTOBJECT:
    case U_EMR_CREATEPEN:
    case U_EMR_CREATEBRUSHINDIRECT:
    case U_EMR_DELETEOBJECT:
    case U_EMR_ELLIPSE:
    case U_EMR_RECTANGLE:
    case U_EMR_ROUNDRECT:
    case U_EMR_ARC:
    case U_EMR_CHORD:
    case U_EMR_PIE:
    case U_EMR_CREATEPALETTE:
    case U_EMR_LINETO:
    case U_EMR_ARCTO:
    case U_EMR_BEGINPATH:
    case U_EMR_ENDPATH:
    case U_EMR_CLOSEFIGURE:
    case U_EMR_FILLPATH:
    case U_EMR_STROKEANDFILLPATH:
    case U_EMR_STROKEPATH:
    case U_EMR_SELECTCLIPPATH:
    case U_EMR_ABORTPATH:
    case U_EMR_EXTSELECTCLIPRGN:
    case U_EMR_BITBLT:
    case U_EMR_STRETCHBLT:
    case U_EMR_SETDIBITSTODEVICE:
    case U_EMR_STRETCHDIBITS:
    case U_EMR_EXTCREATEFONTINDIRECTW:
    case U_EMR_EXTTEXTOUTA:
    case U_EMR_EXTTEXTOUTW:
    case U_EMR_POLYBEZIER16:
    case U_EMR_POLYGON16:
    case U_EMR_POLYLINE16:
    case U_EMR_POLYBEZIERTO16:
    case U_EMR_POLYLINETO16:
    case U_EMR_POLYPOLYLINE16:
    case U_EMR_POLYPOLYGON16:
    case U_EMR_CREATEMONOBRUSH:
    case U_EMR_CREATEDIBPATTERNBRUSHPT:
    case U_EMR_EXTCREATEPEN:
    case U_EMR_CREATECOLORSPACE:
    case U_EMR_CREATECOLORSPACEW:
        return true;
    default:
        return false;
    }
}

void PlayRecords(const QByteArray& bytes, MetafilePlayer& player) {
    const ByteReader file(bytes);
    std::unordered_map<uint32_t, GdiObject> objects;
    size_t pos = 0;
    bool first = true;
    while (pos + 8 <= file.Size()) {
        ByteReader head = file.Slice(pos, file.Size() - pos);
        const uint32_t type = head.U32();
        const uint32_t size = head.U32();
        if (size < 8 || size % 4 != 0 || size > head.Size()) break;
        const ByteReader record = file.Slice(pos, size);
        pos += size;
        if (first) {
            first = false;
            continue; // the header
        }
        if (type == U_EMR_EOF) break;
        if (!Played(type)) continue;
        // libuemf checks that every count and offset inside the record stays
        // within it; a record that fails is skipped, not trusted.
        if (!U_emf_record_safe(record.Start())) continue;
        ByteReader r = record;
        r.Seek(8);
        auto point = [&r]() {
            const double x = r.I32();
            return QPointF(x, r.I32());
        };
        if (PlaySetterRecord(player, type, r)) continue;

        switch (type) {
        case U_EMR_POLYBEZIER:
        case U_EMR_POLYGON:
        case U_EMR_POLYLINE:
        case U_EMR_POLYBEZIERTO:
        case U_EMR_POLYLINETO:
        case U_EMR_POLYBEZIER16:
        case U_EMR_POLYGON16:
        case U_EMR_POLYLINE16:
        case U_EMR_POLYBEZIERTO16:
        case U_EMR_POLYLINETO16: {
            const bool small = type >= U_EMR_POLYBEZIER16;
            r.Seek(24);
            const size_t count = std::min<size_t>(r.U32(), r.Remaining() / (small ? 4 : 8));
            const QPolygonF points = ReadPoints(r, count, small);
            switch (small ? type - U_EMR_POLYBEZIER16 + U_EMR_POLYBEZIER : type) {
            case U_EMR_POLYBEZIER:
                player.PolyBezier(points);
                break;
            case U_EMR_POLYGON:
                player.Polygon(points);
                break;
            case U_EMR_POLYLINE:
                player.Polyline(points);
                break;
            case U_EMR_POLYBEZIERTO:
                player.PolyBezierTo(points);
                break;
            default:
                player.PolylineTo(points);
                break;
            }
            break;
        }
        case U_EMR_POLYPOLYLINE:
        case U_EMR_POLYPOLYGON:
        case U_EMR_POLYPOLYLINE16:
        case U_EMR_POLYPOLYGON16: {
            const bool small = type == U_EMR_POLYPOLYLINE16 || type == U_EMR_POLYPOLYGON16;
            r.Seek(24);
            const size_t polys = r.U32();
            const size_t points = r.U32();
            if (polys > r.Remaining() / 4) break;
            std::vector<size_t> counts(polys);
            size_t sum = 0;
            for (size_t& c : counts)
                sum += (c = r.U32());
            if (sum > points || points > r.Remaining() / (small ? 4 : 8)) break;
            std::vector<QPolygonF> list;
            for (size_t c : counts)
                list.push_back(ReadPoints(r, c, small));
            if (type == U_EMR_POLYPOLYGON || type == U_EMR_POLYPOLYGON16)
                player.PolyPolygon(list);
            else
                player.PolyPolyline(list);
            break;
        }
        case U_EMR_SCALEVIEWPORTEXTEX:
        case U_EMR_SCALEWINDOWEXTEX: {
            const double xn = r.I32(), xd = r.I32(), yn = r.I32(), yd = r.I32();
            if (type == U_EMR_SCALEWINDOWEXTEX)
                player.ScaleWindowExt(xn, xd, yn, yd);
            else
                player.ScaleViewportExt(xn, xd, yn, yd);
            break;
        }
        case U_EMR_SETPIXELV: {
            const QPointF p = point();
            player.SetPixel(p.x(), p.y(), r.U32() & 0xFFFFFF);
            break;
        }
        case U_EMR_EXCLUDECLIPRECT:
        case U_EMR_INTERSECTCLIPRECT: {
            const QRectF rc = ReadRect(r);
            if (type == U_EMR_EXCLUDECLIPRECT)
                player.ExcludeClipRect(rc.left(), rc.top(), rc.right(), rc.bottom());
            else
                player.IntersectClipRect(rc.left(), rc.top(), rc.right(), rc.bottom());
            break;
        }
        case U_EMR_EXTSELECTCLIPRGN: {
            const uint32_t cb = r.U32();
            const int32_t mode = r.I32();
            if (cb < 32) {
                if (mode == 5) player.ResetClip();
                break;
            }
            const size_t regionAt = r.Position();
            r.Skip(8);
            const uint32_t count = r.U32();
            r.Seek(regionAt + 32);
            std::vector<QRectF> rects;
            for (uint32_t i = 0; i < count && r.Remaining() >= 16; ++i) {
                const QRectF rc = ReadRect(r);
                rects.push_back(QRectF(rc.topLeft(), rc.bottomRight()).normalized());
            }
            player.SelectClipRects(rects, mode);
            break;
        }
        case U_EMR_SAVEDC:
            player.SaveDC();
            break;
        case U_EMR_RESTOREDC:
            player.RestoreDC(r.I32());
            break;
        case U_EMR_SETWORLDTRANSFORM:
        case U_EMR_MODIFYWORLDTRANSFORM: {
            float m[6];
            for (float& v : m) {
                const uint32_t bits = r.U32();
                std::memcpy(&v, &bits, 4);
            }
            bool finite = true;
            for (float v : m)
                finite = finite && std::isfinite(v);
            if (!finite) break;
            const QTransform t(m[0], m[1], m[2], m[3], m[4], m[5]);
            if (type == U_EMR_SETWORLDTRANSFORM)
                player.SetWorldTransform(t);
            else
                player.ModifyWorldTransform(t, r.U32());
            break;
        }
        case U_EMR_SELECTOBJECT: {
            const uint32_t index = r.U32();
            if (index & 0x80000000u)
                player.SelectObject(StockObject(index & 0x7FFFFFFF));
            else if (auto it = objects.find(index); it != objects.end())
                player.SelectObject(it->second);
            break;
        }
        case U_EMR_DELETEOBJECT:
            objects.erase(r.U32());
            break;
        case U_EMR_CREATEPEN: {
            GdiObject o;
            o.Type = GdiObject::Pen;
            const uint32_t index = r.U32();
            o.PenValue.Style = r.U32();
            o.PenValue.Width = r.I32();
            r.I32();
            o.PenValue.Color = r.U32() & 0xFFFFFF;
            objects[index] = o;
            break;
        }
        case U_EMR_EXTCREATEPEN: {
            GdiObject o;
            o.Type = GdiObject::Pen;
            const uint32_t index = r.U32();
            r.Skip(16); // the bitmap of a pattern pen is not used
            o.PenValue.Style = r.U32();
            o.PenValue.Width = r.U32();
            r.U32();
            o.PenValue.Color = r.U32() & 0xFFFFFF;
            // A cosmetic pen is one pixel wide whatever the mapping.
            if (!(o.PenValue.Style & 0x00010000)) o.PenValue.Width = 0;
            objects[index] = o;
            break;
        }
        case U_EMR_CREATEBRUSHINDIRECT: {
            GdiObject o;
            o.Type = GdiObject::Brush;
            const uint32_t index = r.U32();
            o.BrushValue.Style = r.U32();
            o.BrushValue.Color = r.U32() & 0xFFFFFF;
            o.BrushValue.Hatch = r.U32();
            objects[index] = o;
            break;
        }
        case U_EMR_CREATEMONOBRUSH:
        case U_EMR_CREATEDIBPATTERNBRUSHPT: {
            GdiObject o;
            o.Type = GdiObject::Brush;
            o.BrushValue.Style = 5;
            const uint32_t index = r.U32();
            const uint32_t usage = r.U32(), offBmi = r.U32(), cbBmi = r.U32(), offBits = r.U32(),
                           cbBits = r.U32();
            o.BrushValue.Pattern = RecordBitmap(record, offBmi, cbBmi, offBits, cbBits, usage);
            objects[index] = o;
            break;
        }
        case U_EMR_EXTCREATEFONTINDIRECTW: {
            GdiObject o;
            o.Type = GdiObject::Font;
            const uint32_t index = r.U32();
            GdiFont& f = o.FontValue;
            f.Height = r.I32();
            r.I32();
            f.Escapement = r.I32();
            r.I32();
            f.Weight = r.I32();
            f.Italic = r.U8();
            f.Underline = r.U8();
            f.StrikeOut = r.U8();
            r.Skip(5);
            std::u16string face;
            for (int i = 0; i < 32 && r.Remaining() >= 2; ++i) {
                const char16_t c = r.U16();
                if (!c) break;
                face.push_back(c);
            }
            f.Face = QString::fromStdU16String(face);
            objects[index] = o;
            break;
        }
        case U_EMR_CREATEPALETTE:
        case U_EMR_CREATECOLORSPACE:
        case U_EMR_CREATECOLORSPACEW: {
            GdiObject o;
            o.Type = GdiObject::Other;
            objects[r.U32()] = o;
            break;
        }
        case U_EMR_ELLIPSE:
        case U_EMR_RECTANGLE: {
            const QRectF rc = ReadRect(r);
            if (type == U_EMR_ELLIPSE)
                player.Ellipse(rc.left(), rc.top(), rc.right(), rc.bottom());
            else
                player.Rectangle(rc.left(), rc.top(), rc.right(), rc.bottom());
            break;
        }
        case U_EMR_ROUNDRECT: {
            const QRectF rc = ReadRect(r);
            const QPointF corner = point();
            player.RoundRect(rc.left(), rc.top(), rc.right(), rc.bottom(), corner.x(), corner.y());
            break;
        }
        case U_EMR_ARC:
        case U_EMR_CHORD:
        case U_EMR_PIE:
        case U_EMR_ARCTO: {
            const QRectF rc = ReadRect(r);
            const QPointF s = point(), e = point();
            const int kind = type == U_EMR_PIE ? 1 : (type == U_EMR_CHORD ? 2 : 0);
            player.ArcShape(kind, rc.left(), rc.top(), rc.right(), rc.bottom(), s.x(), s.y(), e.x(), e.y());
            break;
        }
        case U_EMR_BEGINPATH:
            player.BeginPath();
            break;
        case U_EMR_ENDPATH:
            player.EndPath();
            break;
        case U_EMR_CLOSEFIGURE:
            player.CloseFigure();
            break;
        case U_EMR_FILLPATH:
            player.FillPath();
            break;
        case U_EMR_STROKEPATH:
            player.StrokePath();
            break;
        case U_EMR_STROKEANDFILLPATH:
            player.StrokeAndFillPath();
            break;
        case U_EMR_ABORTPATH:
            player.AbortPath();
            break;
        case U_EMR_SELECTCLIPPATH:
            player.SelectClipPath(r.I32());
            break;
        case U_EMR_BITBLT:
        case U_EMR_STRETCHBLT: {
            r.Seek(24);
            const double xd = r.I32(), yd = r.I32(), wd = r.I32(), hd = r.I32();
            const uint32_t rop = r.U32();
            const double xs = r.I32(), ys = r.I32();
            r.Skip(24 + 4); // the source transform and background colour
            const uint32_t usage = r.U32(), offBmi = r.U32(), cbBmi = r.U32(), offBits = r.U32(),
                           cbBits = r.U32();
            double ws = wd, hs = hd;
            if (type == U_EMR_STRETCHBLT) {
                ws = r.I32();
                hs = r.I32();
            }
            if (cbBmi == 0)
                player.PatBlt(xd, yd, wd, hd, rop);
            else
                player.StretchBitmap(RecordBitmap(record, offBmi, cbBmi, offBits, cbBits, usage), xd, yd, wd,
                                     hd, xs, ys, ws, hs, rop);
            break;
        }
        case U_EMR_STRETCHDIBITS:
        case U_EMR_SETDIBITSTODEVICE: {
            r.Seek(24);
            const double xd = r.I32(), yd = r.I32();
            const double xs = r.I32();
            double ys = r.I32();
            const double ws = r.I32(), hs = r.I32();
            const uint32_t offBmi = r.U32(), cbBmi = r.U32(), offBits = r.U32(), cbBits = r.U32(),
                           usage = r.U32();
            uint32_t rop = 0x00CC0020;
            double wd = ws, hd = hs;
            if (type == U_EMR_STRETCHDIBITS) {
                rop = r.U32();
                wd = r.I32();
                hd = r.I32();
            }
            const QImage dib = RecordBitmap(record, offBmi, cbBmi, offBits, cbBits, usage);
            ByteReader info = record.Slice(offBmi, cbBmi);
            info.Seek(8);
            // Device-independent transfers count the source from the bottom
            // row of a bottom-up bitmap.
            if (!dib.isNull() && info.I32() > 0) ys = dib.height() - ys - hs;
            player.StretchBitmap(dib, xd, yd, wd, hd, xs, ys, ws, hs, rop);
            break;
        }
        case U_EMR_EXTTEXTOUTA:
        case U_EMR_EXTTEXTOUTW: {
            r.Seek(36);
            const QPointF at = point();
            const uint32_t chars = r.U32();
            const uint32_t offString = r.U32();
            const uint32_t options = r.U32();
            const QRectF box = ReadRect(r);
            const size_t unit = type == U_EMR_EXTTEXTOUTW ? 2 : 1;
            if (offString > size || chars > (size - offString) / unit) break;
            ByteReader chars8 = record.Slice(offString, chars * unit);
            QString text;
            if (unit == 2) {
                std::u16string s(chars, u'\0');
                for (char16_t& c : s)
                    c = chars8.U16();
                text = QString::fromStdU16String(s);
            } else {
                QByteArray latin(static_cast<qsizetype>(chars), '\0');
                chars8.Read(latin.data(), chars);
                text = QString::fromLatin1(latin);
            }
            player.TextOut(at.x(), at.y(), text, options, (options & 6) ? &box : nullptr);
            break;
        }
        default:
            break; // comments, palettes, colour management, escapes
        }
    }
}

bool EmfHead(const QByteArray& bytes) {
    QByteArray head = bytes.left(76);
    if (head.size() < 76) head.append(76 - head.size(), '\0');
    ByteReader plain(head);
    const uint32_t first = plain.U32();
    plain.Seek(40);
    if (first == 1 && plain.U32() == EmfSignature) return true;
    ByteReader r(head);
    uint16_t checksum = 0;
    for (int i = 0; i < 10; ++i)
        checksum ^= r.U16();
    return first == 1 && checksum == r.U16();
}

bool LoadEmf(const QByteArray& bytes, CImage& image, LoadOptions&) {
    auto fail = [] { return false; };
    EmfHeader h;
    if (!ReadHeader(bytes, h)) return fail();
    const int64_t frameWidth = static_cast<int64_t>(h.FrameRight) - h.FrameLeft;
    const int64_t frameHeight = static_cast<int64_t>(h.FrameBottom) - h.FrameTop;
    if (frameWidth <= 0 || frameHeight <= 0 || frameWidth > INT32_MAX || frameHeight > INT32_MAX)
        return fail();
    const int32_t width = HimetricToPixels(static_cast<int32_t>(frameWidth));
    const int32_t height = HimetricToPixels(static_cast<int32_t>(frameHeight));
    // The frame, in the reference device's pixels, lands on the whole picture.
    const double perHimetricX = static_cast<double>(h.DeviceX) / (h.MillimetresX * 100.0);
    const double perHimetricY = static_cast<double>(h.DeviceY) / (h.MillimetresY * 100.0);
    const QTransform base =
        QTransform::fromTranslate(-h.FrameLeft * perHimetricX, -h.FrameTop * perHimetricY) *
        QTransform::fromScale(width / (frameWidth * perHimetricX), height / (frameHeight * perHimetricY));
    auto play = [&](MetafilePlayer& player) { PlayRecords(bytes, player); };
    if (!RenderWithAlpha(image, width, height, play, base, perHimetricX * 100.0)) return fail();

    image.Resolution = static_cast<float>(ScreenDpi);
    image.SetPropertyBuffer(QByteArray());
    image.PropertyCount = 0;
    image.RawPixelFormat = image.PixelFormat;
    return true;
}

bool SaveEmf(const CImage& image, const SaveOptions&, QByteArray& out, QString& error) {
    const int32_t w = image.Width(), h = image.Height();
    // The frame in hundredths of a millimetre must fit its 32-bit fields.
    if (w > 80000000 || h > 80000000) {
        error = TooLargeMessage(QStringLiteral("EMF"), 80000000);
        return false;
    }
    const U_RECTL bounds{0, 0, w - 1, h - 1};
    // The frame in hundredths of a millimetre, from the display's size.
    const U_RECTL frame{0, 0, RoundHalfEven(w * (100.0 * ScreenMillimetresX / ScreenPixelsX)),
                        RoundHalfEven(h * (100.0 * ScreenMillimetresY / ScreenPixelsY))};
    const U_SIZEL device{ScreenPixelsX, ScreenPixelsY};
    const U_SIZEL millimetres{ScreenMillimetresX, ScreenMillimetresY};
    const QByteArray info = BuildDibInfo(image);
    QByteArray bits = BuildDibBits(image);

    char* header = U_EMRHEADER_set(bounds, frame, nullptr, 0, nullptr, device, millimetres, 0);
    const U_XFORM identity{1, 0, 0, 1, 0, 0};
    char* blit = U_EMRBITBLT_set(bounds, U_POINTL{0, 0}, U_POINTL{w, h}, U_POINTL{0, 0}, identity,
                                 U_COLORREF{}, U_DIB_RGB_COLORS, U_SRCCOPY,
                                 reinterpret_cast<PU_BITMAPINFO>(const_cast<char*>(info.constData())),
                                 static_cast<uint32_t>(bits.size()), bits.data());
    EMFTRACK track{};
    char* eof = U_EMREOF_set(0, nullptr, &track);
    bool ok = header && blit && eof;
    out.clear();
    if (ok) {
        auto sizeOf = [](const char* record) {
            uint32_t n = 0;
            std::memcpy(&n, record + 4, 4);
            return n;
        };
        out.append(header, sizeOf(header));
        out.append(blit, sizeOf(blit));
        out.append(eof, sizeOf(eof));
        ByteWriter patch;
        patch.Data() = out;
        patch.PutU32At(48, static_cast<uint32_t>(out.size())); // nBytes
        patch.PutU32At(52, 3);                                 // nRecords
        out = patch.Data();
        out[56] = 1; // nHandles: the reserved handle 0 alone
        out[57] = 0;
    }
    std::free(header);
    std::free(blit);
    std::free(eof);
    return ok;
}

} // namespace

const FileFamily& EmfFamily() {
    static const FileFamily family = [] {
        FileFamily f;
        f.Code = RawEmf;
        f.Name = "EmfParser";
        f.Signature = EmfHead;
        f.Load = LoadEmf;
        f.Save = SaveEmf;
        // One bitmap transfer is not the metafile the picture came from.
        f.SavesBack = false;
        return f;
    }();
    return family;
}

bool EmfParser::IsEmf(const QString& file) {
    return EmfHead(ReadFileHead(file, 76));
}

bool EmfParser::LoadPictureFromFile(const QString& file, CImage& image) {
    int32_t frame = 0;
    return LoadFamilyFile(EmfFamily(), file, image, frame);
}

bool EmfParser::SavePictureToFile(const QString& file, CImage& image) {
    return SaveFamilyFile(EmfFamily(), file, image, SaveOptions());
}

bool EmfParser::GetImageThumbAndInfo(const QString& file, QPainter* graphics, int32_t& width, int32_t& height,
                                     int32_t& bitDepth) {
    return FamilyThumbAndInfo(EmfFamily(), file, graphics, width, height, bitDepth);
}

} // namespace vm
