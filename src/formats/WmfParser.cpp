#include "formats/WmfParser.h"

#include "core/Numeric.h"
#include "formats/CodecCommon.h"
#include "formats/DibCodec.h"
#include "formats/MetafilePlayer.h"
#include "formats/ParserCommon.h"
#include "formats/ParserRegistry.h"

#include <QFile>
#include <QPainter>

#include <cstdlib>
#include <cstring>
#include <vector>

#include <uwmf.h>

namespace vm {

namespace {

constexpr uint32_t PlaceableKey = 0x9AC6CDD7;
constexpr size_t PlaceableSize = 22;
constexpr size_t StandardHeaderSize = 18;

// Record functions, as the WMF record's function word holds them.
enum WmfFunction : uint16_t {
    WmfEof = 0x0000,
    WmfSaveDC = 0x001E,
    WmfRealizePalette = 0x0035,
    WmfSetBkMode = 0x0102,
    WmfSetMapMode = 0x0103,
    WmfSetRop2 = 0x0104,
    WmfSetPolyFillMode = 0x0106,
    WmfSetStretchBltMode = 0x0107,
    WmfRestoreDC = 0x0127,
    WmfSelectClipRegion = 0x012C,
    WmfSelectObject = 0x012D,
    WmfSetTextAlign = 0x012E,
    WmfDibCreatePatternBrush = 0x0142,
    WmfDeleteObject = 0x01F0,
    WmfSetBkColor = 0x0201,
    WmfSetTextColor = 0x0209,
    WmfSetWindowOrg = 0x020B,
    WmfSetWindowExt = 0x020C,
    WmfSetViewportOrg = 0x020D,
    WmfSetViewportExt = 0x020E,
    WmfOffsetWindowOrg = 0x020F,
    WmfOffsetViewportOrg = 0x0211,
    WmfLineTo = 0x0213,
    WmfMoveTo = 0x0214,
    WmfCreatePenIndirect = 0x02FA,
    WmfCreateFontIndirect = 0x02FB,
    WmfCreateBrushIndirect = 0x02FC,
    WmfPolygon = 0x0324,
    WmfPolyline = 0x0325,
    WmfScaleWindowExt = 0x0410,
    WmfScaleViewportExt = 0x0412,
    WmfExcludeClipRect = 0x0415,
    WmfIntersectClipRect = 0x0416,
    WmfEllipse = 0x0418,
    WmfRectangle = 0x041B,
    WmfSetPixel = 0x041F,
    WmfTextOut = 0x0521,
    WmfPolyPolygon = 0x0538,
    WmfRoundRect = 0x061C,
    WmfPatBlt = 0x061D,
    WmfArc = 0x0817,
    WmfPie = 0x081A,
    WmfChord = 0x0830,
    WmfBitBlt = 0x0922,
    WmfDibBitBlt = 0x0940,
    WmfExtTextOut = 0x0A32,
    WmfStretchBlt = 0x0B23,
    WmfDibStretchBlt = 0x0B41,
    WmfSetDibToDev = 0x0D33,
    WmfStretchDib = 0x0F43,
};

// Functions that create an object and so take a slot of the object table.
bool CreatesObject(uint16_t function) {
    switch (function) {
    case 0x00F7: // CREATEPALETTE
    case 0x01F9: // CREATEPATTERNBRUSH
    case WmfDibCreatePatternBrush:
    case WmfCreatePenIndirect:
    case WmfCreateFontIndirect:
    case WmfCreateBrushIndirect:
    case 0x02FD: // CREATEBITMAPINDIRECT
    case 0x06FE: // CREATEBITMAP
    case 0x06FF: // CREATEREGION
        return true;
    default:
        return false;
    }
}

// The object table: a new object takes the lowest free slot.
class ObjectTable {
  public:
    void Create(GdiObject object) {
        for (size_t i = 0; i < slots_.size(); ++i)
            if (!used_[i]) {
                slots_[i] = std::move(object);
                used_[i] = true;
                return;
            }
        if (slots_.size() >= 65535) return;
        slots_.push_back(std::move(object));
        used_.push_back(true);
    }
    const GdiObject* At(uint16_t index) const {
        return index < slots_.size() && used_[index] ? &slots_[index] : nullptr;
    }
    void Delete(uint16_t index) {
        if (index < slots_.size()) used_[index] = false;
    }

  private:
    std::vector<GdiObject> slots_;
    std::vector<bool> used_;
};

QPolygonF ReadPoints(ByteReader& r, size_t count) {
    QPolygonF points;
    points.reserve(static_cast<qsizetype>(count));
    for (size_t i = 0; i < count; ++i) {
        const double x = r.I16();
        points.append(QPointF(x, r.I16()));
    }
    return points;
}

// Text of a record: bytes in the font's code page, read as Latin-1.
QString ReadText(ByteReader& r, size_t length) {
    QByteArray bytes(static_cast<qsizetype>(length), '\0');
    r.Read(bytes.data(), length);
    if (length & 1) r.U8();
    const qsizetype nul = bytes.indexOf('\0');
    if (nul >= 0) bytes.truncate(nul);
    return QString::fromLatin1(bytes);
}

void PlayRecords(const QByteArray& bytes, size_t start, MetafilePlayer& player) {
    const ByteReader file(bytes);
    const char* limit = file.Start() + file.Size();
    ObjectTable objects;
    size_t pos = start;
    while (pos + 6 <= file.Size()) {
        ByteReader head = file.Slice(pos, file.Size() - pos);
        const uint64_t words = head.U32();
        const uint16_t function = head.U16();
        if (words < 3 || words * 2 > head.Size()) break;
        if (U_WMRRECSAFE_get(head.Start(), limit) == 0) break;
        if (function == WmfEof) break;
        const size_t length = static_cast<size_t>(words * 2);
        ByteReader r = file.Slice(pos + 6, length - 6);
        pos += length;

        if (CreatesObject(function)) {
            GdiObject object;
            if (function == WmfCreatePenIndirect) {
                object.Type = GdiObject::Pen;
                object.PenValue.Style = r.U16();
                object.PenValue.Width = r.I16();
                r.I16();
                object.PenValue.Color = r.U32() & 0xFFFFFF;
            } else if (function == WmfCreateBrushIndirect) {
                object.Type = GdiObject::Brush;
                object.BrushValue.Style = r.U16();
                object.BrushValue.Color = r.U32() & 0xFFFFFF;
                object.BrushValue.Hatch = r.U16();
            } else if (function == WmfCreateFontIndirect) {
                object.Type = GdiObject::Font;
                GdiFont& f = object.FontValue;
                f.Height = r.I16();
                r.I16();
                f.Escapement = r.I16();
                r.I16();
                f.Weight = r.I16();
                f.Italic = r.U8();
                f.Underline = r.U8();
                f.StrikeOut = r.U8();
                r.Skip(5);
                f.Face = ReadText(r, std::min<size_t>(32, r.Remaining()));
            } else if (function == WmfDibCreatePatternBrush) {
                object.Type = GdiObject::Brush;
                object.BrushValue.Style = 5;
                r.U16();
                const uint16_t usage = r.U16();
                object.BrushValue.Pattern = RecordDib(r.Rest(), nullptr, usage);
            } else {
                object.Type = GdiObject::Other;
            }
            objects.Create(std::move(object));
            continue;
        }

        switch (function) {
        case WmfSetBkColor:
            player.SetBkColor(r.U32() & 0xFFFFFF);
            break;
        case WmfSetBkMode:
            player.SetBkMode(r.U16());
            break;
        case WmfSetMapMode:
            player.SetMapMode(r.U16());
            break;
        case WmfSetRop2:
            player.SetRop2(r.U16());
            break;
        case WmfSetPolyFillMode:
            player.SetPolyFillMode(r.U16());
            break;
        case WmfSetTextColor:
            player.SetTextColor(r.U32() & 0xFFFFFF);
            break;
        case WmfSetTextAlign:
            player.SetTextAlign(r.U16());
            break;
        case WmfSetWindowOrg: {
            const double y = r.I16();
            player.SetWindowOrg(r.I16(), y);
            break;
        }
        case WmfSetWindowExt: {
            const double y = r.I16();
            player.SetWindowExt(r.I16(), y);
            break;
        }
        case WmfSetViewportOrg: {
            const double y = r.I16();
            player.SetViewportOrg(r.I16(), y);
            break;
        }
        case WmfSetViewportExt: {
            const double y = r.I16();
            player.SetViewportExt(r.I16(), y);
            break;
        }
        case WmfOffsetWindowOrg: {
            const double y = r.I16();
            player.OffsetWindowOrg(r.I16(), y);
            break;
        }
        case WmfOffsetViewportOrg: {
            const double y = r.I16();
            player.OffsetViewportOrg(r.I16(), y);
            break;
        }
        case WmfScaleWindowExt:
        case WmfScaleViewportExt: {
            const double yd = r.I16(), yn = r.I16(), xd = r.I16(), xn = r.I16();
            if (function == WmfScaleWindowExt)
                player.ScaleWindowExt(xn, xd, yn, yd);
            else
                player.ScaleViewportExt(xn, xd, yn, yd);
            break;
        }
        case WmfMoveTo:
        case WmfLineTo: {
            const double y = r.I16(), x = r.I16();
            if (function == WmfMoveTo)
                player.MoveTo(x, y);
            else
                player.LineTo(x, y);
            break;
        }
        case WmfExcludeClipRect:
        case WmfIntersectClipRect: {
            const double b = r.I16(), rr = r.I16(), t = r.I16(), l = r.I16();
            if (function == WmfExcludeClipRect)
                player.ExcludeClipRect(l, t, rr, b);
            else
                player.IntersectClipRect(l, t, rr, b);
            break;
        }
        case WmfSelectClipRegion:
            player.ResetClip();
            break;
        case WmfEllipse:
        case WmfRectangle: {
            const double b = r.I16(), rr = r.I16(), t = r.I16(), l = r.I16();
            if (function == WmfEllipse)
                player.Ellipse(l, t, rr, b);
            else
                player.Rectangle(l, t, rr, b);
            break;
        }
        case WmfRoundRect: {
            const double h = r.I16(), w = r.I16(), b = r.I16(), rr = r.I16(), t = r.I16(), l = r.I16();
            player.RoundRect(l, t, rr, b, w, h);
            break;
        }
        case WmfArc:
        case WmfPie:
        case WmfChord: {
            const double ye = r.I16(), xe = r.I16(), ys = r.I16(), xs = r.I16();
            const double b = r.I16(), rr = r.I16(), t = r.I16(), l = r.I16();
            player.ArcShape(function == WmfArc ? 0 : (function == WmfPie ? 1 : 2), l, t, rr, b, xs, ys, xe,
                            ye);
            break;
        }
        case WmfSetPixel: {
            const uint32_t colour = r.U32() & 0xFFFFFF;
            const double y = r.I16(), x = r.I16();
            player.SetPixel(x, y, colour);
            break;
        }
        case WmfPatBlt: {
            const uint32_t rop = r.U32();
            const double h = r.I16(), w = r.I16(), y = r.I16(), x = r.I16();
            player.PatBlt(x, y, w, h, rop);
            break;
        }
        case WmfPolygon:
        case WmfPolyline: {
            const size_t count = std::min<size_t>(r.U16(), r.Remaining() / 4);
            const QPolygonF points = ReadPoints(r, count);
            if (function == WmfPolygon)
                player.Polygon(points);
            else
                player.Polyline(points);
            break;
        }
        case WmfPolyPolygon: {
            const size_t polygons = r.U16();
            if (polygons * 2 > r.Remaining()) break;
            std::vector<size_t> counts(polygons);
            size_t total = 0;
            for (size_t& c : counts)
                total += (c = r.U16());
            if (total * 4 > r.Remaining()) break;
            std::vector<QPolygonF> list;
            for (size_t c : counts)
                list.push_back(ReadPoints(r, c));
            player.PolyPolygon(list);
            break;
        }
        case WmfTextOut: {
            const size_t length = std::min<size_t>(r.U16(), r.Remaining());
            const QString text = ReadText(r, length);
            const double y = r.I16(), x = r.I16();
            player.TextOut(x, y, text, 0, nullptr);
            break;
        }
        case WmfExtTextOut: {
            const double y = r.I16(), x = r.I16();
            const size_t length = r.U16();
            const uint16_t options = r.U16();
            QRectF box;
            bool hasBox = false;
            if (options & 6) {
                const double l = r.I16(), t = r.I16(), rr = r.I16(), b = r.I16();
                box = QRectF(QPointF(l, t), QPointF(rr, b));
                hasBox = true;
            }
            const QString text = ReadText(r, std::min(length, r.Remaining()));
            player.TextOut(x, y, text, options, hasBox ? &box : nullptr);
            break;
        }
        case WmfDibBitBlt:
        case WmfBitBlt: {
            const uint32_t rop = r.U32();
            const bool noBitmap = words == 12;
            const double ySrc = r.I16(), xSrc = r.I16();
            if (noBitmap) r.I16();
            const double h = r.I16(), w = r.I16(), yDest = r.I16(), xDest = r.I16();
            if (noBitmap)
                player.PatBlt(xDest, yDest, w, h, rop);
            else if (function == WmfDibBitBlt)
                player.StretchBitmap(RecordDib(r.Rest(), nullptr, 0), xDest, yDest, w, h, xSrc, ySrc, w, h,
                                     rop);
            break;
        }
        case WmfDibStretchBlt:
        case WmfStretchBlt: {
            const uint32_t rop = r.U32();
            const bool noBitmap = words == 14;
            const double sh = r.I16(), sw = r.I16(), ySrc = r.I16(), xSrc = r.I16();
            if (noBitmap) r.I16();
            const double dh = r.I16(), dw = r.I16(), yDest = r.I16(), xDest = r.I16();
            if (noBitmap)
                player.PatBlt(xDest, yDest, dw, dh, rop);
            else if (function == WmfDibStretchBlt)
                player.StretchBitmap(RecordDib(r.Rest(), nullptr, 0), xDest, yDest, dw, dh, xSrc, ySrc, sw,
                                     sh, rop);
            break;
        }
        case WmfStretchDib:
        case WmfSetDibToDev: {
            uint32_t rop = 0x00CC0020;
            double sh = 0, sw = 0, ySrc = 0, xSrc = 0, dh = 0, dw = 0;
            uint16_t usage = 0;
            if (function == WmfStretchDib) {
                rop = r.U32();
                usage = r.U16();
                sh = r.I16();
                sw = r.I16();
                ySrc = r.I16();
                xSrc = r.I16();
                dh = r.I16();
                dw = r.I16();
            } else {
                usage = r.U16();
                r.U16(); // scan count
                r.U16(); // start scan
                ySrc = r.I16();
                xSrc = r.I16();
                sh = dh = r.I16();
                sw = dw = r.I16();
            }
            const double yDest = r.I16(), xDest = r.I16();
            bool bottomUp = true;
            const QImage dib = RecordDib(r.Rest(), nullptr, usage, &bottomUp);
            // Device-independent transfers count the source from the bottom
            // row of a bottom-up bitmap.
            if (bottomUp && !dib.isNull()) ySrc = dib.height() - ySrc - sh;
            player.StretchBitmap(dib, xDest, yDest, dw, dh, xSrc, ySrc, sw, sh, rop);
            break;
        }
        case WmfSaveDC:
            player.SaveDC();
            break;
        case WmfRestoreDC:
            player.RestoreDC(r.I16());
            break;
        case WmfSelectObject:
            if (const GdiObject* o = objects.At(r.U16())) player.SelectObject(*o);
            break;
        case WmfDeleteObject:
            objects.Delete(r.U16());
            break;
        default:
            break; // escapes, palettes, regions, flood fills: nothing to show
        }
    }
}

bool WmfHead(const QByteArray& bytes, bool& placeable) {
    placeable = false;
    QByteArray head = bytes.left(PlaceableSize);
    if (head.size() < static_cast<qsizetype>(PlaceableSize)) head.append(PlaceableSize - head.size(), '\0');
    ByteReader r(head);
    uint16_t checksum = 0;
    const uint32_t key = r.U32();
    r.Seek(0);
    for (int i = 0; i < 10; ++i)
        checksum ^= r.U16();
    if (key == PlaceableKey && checksum == r.U16()) {
        placeable = true;
        return true;
    }
    ByteReader plain(head);
    const uint16_t type = plain.U16();
    plain.Seek(4);
    const uint16_t version = plain.U16();
    plain.Seek(16);
    const uint16_t parameters = plain.U16();
    return (type == 0 || type == 1) && version == 0x300 && parameters == 0;
}

bool LoadWmf(const QByteArray& bytes, CImage& image, LoadOptions&) {
    bool placeable = false;
    if (!WmfHead(bytes, placeable)) return false;
    auto fail = [] { return false; };
    ByteReader r(bytes);

    if (placeable) {
        r.Seek(6);
        const int32_t left = r.I16(), top = r.I16(), right = r.I16(), bottom = r.I16();
        const int32_t inch = r.U16();
        // The picture loader takes only what holds a metafile header behind
        // the placeable one.
        r.Seek(PlaceableSize);
        const uint16_t type = r.U16(), headerWords = r.U16(), version = r.U16();
        if (inch == 0 || (type != 1 && type != 2) || headerWords < 9 ||
            (version != 0x300 && version != 0x100))
            return fail();
        const int32_t width = HimetricToPixels(MulDiv(std::abs(right - left), 2540, inch));
        const int32_t height = HimetricToPixels(MulDiv(std::abs(bottom - top), 2540, inch));
        const size_t start = PlaceableSize + headerWords * 2u;
        auto play = [&](MetafilePlayer& player) {
            player.SetMapMode(8);
            player.SetWindowOrg(left, top);
            player.SetWindowExt(right - left, bottom - top);
            player.SetViewportOrg(0, 0);
            player.SetViewportExt(width, height);
            PlayRecords(bytes, start, player);
        };
        if (!RenderWithAlpha(image, width, height, play, QTransform(), ScreenDpi / 25.4)) return fail();
    } else {
        r.Seek(2);
        const size_t start = std::max<size_t>(r.U16() * 2u, StandardHeaderSize);
        // Height and width stand where the usual first records put the
        // window extent.
        r.Seek(32);
        const int32_t height = r.I16();
        const int32_t width = r.I16();
        if (width < 1 || height < 1 || static_cast<int64_t>(width) * height > MaxMetafilePixels)
            return fail();
        if (!NewBlock(image, width, height, 24, 0)) return fail();
        QImage canvas(width, height, QImage::Format_RGB32);
        canvas.fill(Qt::black);
        {
            MetafilePlayer player(canvas, false, QTransform(), ScreenDpi / 25.4);
            PlayRecords(bytes, start, player);
        }
        for (int32_t y = 0; y < height; ++y) {
            const auto* s = reinterpret_cast<const QRgb*>(canvas.constScanLine(y));
            uint8_t* d = image.Row(y);
            for (int32_t x = 0; x < width; ++x) {
                d[3 * x] = static_cast<uint8_t>(qBlue(s[x]));
                d[3 * x + 1] = static_cast<uint8_t>(qGreen(s[x]));
                d[3 * x + 2] = static_cast<uint8_t>(qRed(s[x]));
            }
        }
    }

    image.Resolution = static_cast<float>(ScreenDpi);
    image.SetPropertyBuffer(QByteArray());
    image.PropertyCount = 0;
    image.RawPixelFormat = image.PixelFormat;
    return true;
}

bool SaveWmf(const CImage& image, const SaveOptions&, QByteArray& out, QString& error) {
    // The record's sizes are signed 16-bit numbers.
    if (image.Width() > 32767 || image.Height() > 32767) {
        error = TooLargeMessage(QStringLiteral("WMF"), 32767);
        return false;
    }
    const QByteArray info = BuildDibInfo(image);
    const QByteArray bits = BuildDibBits(image);
    char* header = U_WMRHEADER_set(nullptr, 0);
    const U_POINT16 origin{0, 0};
    const U_POINT16 size{static_cast<int16_t>(image.Width()), static_cast<int16_t>(image.Height())};
    char* blit = U_WMRDIBBITBLT_set(origin, size, origin, U_SRCCOPY,
                                    reinterpret_cast<const U_BITMAPINFO*>(info.constData()),
                                    static_cast<uint32_t>(bits.size()), bits.constData());
    char* eof = U_WMREOF_set();
    bool ok = header && blit && eof;
    out.clear();
    if (ok) {
        const uint32_t blitSize = U_wmr_size(reinterpret_cast<const U_METARECORD*>(blit));
        const uint32_t eofSize = U_wmr_size(reinterpret_cast<const U_METARECORD*>(eof));
        out.append(header, static_cast<qsizetype>(StandardHeaderSize));
        out.append(blit, static_cast<qsizetype>(blitSize));
        out.append(eof, static_cast<qsizetype>(eofSize));
        // The header counts the file and its largest record in 16-bit words.
        ByteWriter patch;
        patch.Data() = out;
        patch.PutU32At(6, static_cast<uint32_t>(out.size() / 2));
        patch.PutU32At(12, std::max(blitSize, eofSize) / 2);
        out = patch.Data();
        out[10] = 0;
        out[11] = 0;
    }
    std::free(header);
    std::free(blit);
    std::free(eof);
    return ok;
}

} // namespace

const FileFamily& WmfFamily() {
    static const FileFamily family = [] {
        FileFamily f;
        f.Code = RawWmf;
        f.Name = "WmfParser";
        f.Signature = [](const QByteArray& bytes) {
            bool placeable = false;
            return WmfHead(bytes, placeable);
        };
        f.Load = LoadWmf;
        f.Save = SaveWmf;
        // One bitmap transfer is not the metafile the picture came from.
        f.SavesBack = false;
        return f;
    }();
    return family;
}

bool WmfParser::IsWmf(const QString& file, bool& placeable) {
    return WmfHead(ReadFileHead(file, PlaceableSize), placeable);
}

bool WmfParser::LoadPictureFromFile(const QString& file, CImage& image) {
    int32_t frame = 0;
    return LoadFamilyFile(WmfFamily(), file, image, frame);
}

bool WmfParser::SavePictureToFile(const QString& file, CImage& image) {
    return SaveFamilyFile(WmfFamily(), file, image, SaveOptions());
}

bool WmfParser::GetImageThumbAndInfo(const QString& file, QPainter* graphics, int32_t& width, int32_t& height,
                                     int32_t& bitDepth) {
    return FamilyThumbAndInfo(WmfFamily(), file, graphics, width, height, bitDepth);
}

} // namespace vm
