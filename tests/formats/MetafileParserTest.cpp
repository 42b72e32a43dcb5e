// WMF and EMF: samples written by libuemf's record writers and by pstoedit,
// decoded for comparison by libwmf (wmf2gd) and emf2svg.
#include "formats/EmfParser.h"
#include "formats/WmfParser.h"

#include "core/Numeric.h"
#include "formats/CodecTestSupport.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include <uemf.h>
#include <uwmf.h>

using namespace vm;
using namespace vmtest;

namespace {

// A WMF put together from libuemf's records. The header's counts (file size,
// largest record, objects) are filled in when the file is written.
class WmfBuilder {
  public:
    explicit WmfBuilder(float widthInches = 0, float heightInches = 0, unsigned inch = 100) {
        wmf_htable_create(32, 32, &handles_);
        char* header = nullptr;
        if (widthInches > 0) {
            U_PAIRF* size = U_PAIRF_set(widthInches, heightInches);
            header = U_WMRHEADER_set(size, inch);
            std::free(size);
            headerAt_ = 22;
        } else {
            header = U_WMRHEADER_set(nullptr, 0);
        }
        bytes_.append(header, static_cast<qsizetype>(headerAt_ + 18));
        std::free(header);
    }
    ~WmfBuilder() { wmf_htable_free(&handles_); }

    void Add(char* record) {
        const uint32_t size = U_wmr_size(reinterpret_cast<const U_METARECORD*>(record));
        largest_ = std::max(largest_, size / 2);
        bytes_.append(record, static_cast<qsizetype>(size));
        std::free(record);
    }
    uint32_t Brush(uint8_t r, uint8_t g, uint8_t b) {
        uint32_t index = 0;
        Add(wcreatebrushindirect_set(&index, handles_, U_WLOGBRUSH_set(U_BS_SOLID, U_RGB(r, g, b), 0)));
        return index;
    }
    uint32_t NullPen() {
        uint32_t index = 0;
        Add(wcreatepenindirect_set(&index, handles_, U_PEN_set(U_PS_NULL, 1, U_RGB(0, 0, 0))));
        return index;
    }
    void Select(uint32_t index) { Add(wselectobject_set(index, handles_)); }
    void Delete(uint32_t index) { Add(wdeleteobject_set(&index, handles_)); }

    QByteArray Finish() {
        Add(U_WMREOF_set());
        QByteArray out = bytes_;
        ByteWriter patch;
        patch.Data() = out;
        patch.PutU32At(static_cast<size_t>(headerAt_) + 6,
                       static_cast<uint32_t>((out.size() - headerAt_) / 2));
        patch.PutU32At(static_cast<size_t>(headerAt_) + 12, largest_);
        out = patch.Data();
        const uint16_t objects = static_cast<uint16_t>(handles_->peak + 1);
        out[headerAt_ + 10] = static_cast<char>(objects & 0xFF);
        out[headerAt_ + 11] = static_cast<char>(objects >> 8);
        return out;
    }

  private:
    WMFHANDLES* handles_ = nullptr;
    QByteArray bytes_;
    int headerAt_ = 0;
    uint32_t largest_ = 9;
};

// A two by one inch placeable picture at 100 units an inch: a red rectangle,
// a blue ellipse, and a deleted, reselected brush in between.
QByteArray PlaceableShapes() {
    WmfBuilder w(2.0f, 1.0f, 100);
    w.Add(U_WMRSETMAPMODE_set(U_MM_ANISOTROPIC));
    w.Add(U_WMRSETWINDOWORG_set(U_POINT16{0, 0}));
    w.Add(U_WMRSETWINDOWEXT_set(U_POINT16{200, 100}));
    const uint32_t pen = w.NullPen();
    w.Select(pen);
    const uint32_t red = w.Brush(255, 0, 0);
    w.Select(red);
    w.Add(U_WMRRECTANGLE_set(U_RECT16{10, 10, 90, 70}));
    w.Delete(red);
    // The freed slot is taken again by the next object.
    const uint32_t blue = w.Brush(0, 0, 255);
    w.Select(blue);
    w.Add(U_WMRELLIPSE_set(U_RECT16{120, 20, 180, 80}));
    return w.Finish();
}

struct Rgba {
    int R, G, B, A;
    bool operator==(const Rgba&) const = default;
};
Rgba PixelOf(const CImage& image, int x, int y) {
    const QColor c = ToRgba(image).pixelColor(x, y);
    return {c.red(), c.green(), c.blue(), c.alpha()};
}

// The 22-byte placeable header: key, handle, box, units an inch, reserved,
// and the XOR of the first ten words.
QByteArray PlaceableHeader(uint32_t key, int16_t right, int16_t bottom, uint16_t inch, bool goodChecksum) {
    ByteWriter w;
    w.U32(key);
    for (int word : {0, 0, 0, int{right}, int{bottom}, int{inch}, 0, 0})
        w.U16(static_cast<uint16_t>(word));
    ByteReader r(w.Data());
    uint16_t x = 0;
    for (int i = 0; i < 10; ++i)
        x ^= r.U16();
    w.U16(goodChecksum ? x : static_cast<uint16_t>(x ^ 1));
    return w.Data();
}

} // namespace

TEST(WmfParserSignature, PlaceableAndPlainKinds) {
    WmfParser parser;
    bool placeable = false;
    const QString shapes = TempFile("wmf-shapes.wmf");
    ASSERT_TRUE(WriteBytes(shapes, PlaceableShapes()));
    EXPECT_TRUE(parser.IsWmf(shapes, placeable));
    EXPECT_TRUE(placeable);

    auto image = RandomImage(8, 6, 24, 1);
    const QString plain = TempFile("wmf-plain.wmf");
    ASSERT_TRUE(parser.SavePictureToFile(plain, *image));
    EXPECT_TRUE(parser.IsWmf(plain, placeable));
    EXPECT_FALSE(placeable);
    const QByteArray plainBytes = ReadBytes(plain);

    struct Case {
        const char* Name;
        QByteArray Bytes;
        bool Accepted;
    };
    const QByteArray shapesBytes = PlaceableShapes();
    for (const Case& c :
         {Case{"type 0", Patched(plainBytes, 0, QByteArray(1, '\0')), true},
          Case{"type 2", Patched(plainBytes, 0, "\x02"), false},
          Case{"version 0x100", Patched(plainBytes, 5, "\x01"), false},
          Case{"parameters", Patched(plainBytes, 16, "\x01"), false},
          Case{"placeable checksum", Patched(shapesBytes, 20, QByteArray(1, shapesBytes[20] ^ 1)), false},
          Case{"short", QByteArray("\x01\0", 2), false}}) {
        SCOPED_TRACE(c.Name);
        const QString path = TempFile("wmf-signature.wmf");
        ASSERT_TRUE(WriteBytes(path, c.Bytes));
        EXPECT_EQ(parser.IsWmf(path, placeable), c.Accepted);
        EXPECT_FALSE(placeable);
    }
    EXPECT_FALSE(parser.IsWmf(TempFile("no-such-file.wmf"), placeable));
}

// The placeable kind opens at 96 dots per inch of its box as RGBA 32: what the
// records paint is opaque, the rest is transparent and keeps the 255 fill.
TEST(WmfParserPlaceable, PaintedPixelsOpaqueTheRestTransparent) {
    const QString file = TempFile("wmf-shapes.wmf");
    ASSERT_TRUE(WriteBytes(file, PlaceableShapes()));
    auto image = LoadWith<WmfParser>(file);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->Width(), 192);
    EXPECT_EQ(image->Height(), 96);
    EXPECT_EQ(image->PixelFormat, PixelFormat32bppARGB);
    EXPECT_EQ(image->RawPixelFormat, PixelFormat32bppARGB);
    EXPECT_EQ(image->RawImageFormat, RawWmf);
    // Logical (x, y) lands on (x * 0.96, y * 0.96).
    EXPECT_EQ(PixelOf(*image, 48, 38), (Rgba{255, 0, 0, 255}));
    EXPECT_EQ(PixelOf(*image, 144, 48), (Rgba{0, 0, 255, 255}));
    EXPECT_EQ(PixelOf(*image, 100, 5), (Rgba{255, 255, 255, 0}));
    EXPECT_EQ(PixelOf(*image, 120, 24), (Rgba{255, 255, 255, 0})); // outside the ellipse, inside its box
    // No pixel is half way.
    const QImage rgba = ToRgba(*image);
    long long opaque = 0;
    for (int y = 0; y < rgba.height(); ++y)
        for (int x = 0; x < rgba.width(); ++x) {
            const int a = rgba.pixelColor(x, y).alpha();
            ASSERT_TRUE(a == 0 || a == 255);
            opaque += a == 255;
        }
    // The rectangle covers 77 x 58 pixels and the ellipse about pi/4 of 58 x 58.
    EXPECT_NEAR(static_cast<double>(opaque), 77 * 58 + 3.14159 / 4 * 58 * 58, 200);
}

// The writer stores the picture as one bitmap transfer in a plain metafile:
// this parser reads it back exactly, and libwmf renders the same picture.
TEST(WmfParserWriter, OneBitmapTransferReadHereAndByLibwmf) {
    for (int bits : {1, 4, 8, 24, 32}) {
        SCOPED_TRACE(bits);
        auto image = RandomImage(37, 23, bits, 21);
        if (bits == 32) image->SetAlphaChannelToMaxValue();
        image->RawImageFormat = 0;
        const QString file = TempFile(QString("wmf-written-%1.wmf").arg(bits));
        ASSERT_TRUE(WmfParser().SavePictureToFile(file, *image));
        EXPECT_EQ(image->RawImageFormat, RawWmf);
        const QByteArray bytes = ReadBytes(file);
        ASSERT_TRUE(bytes.startsWith(QByteArray("\x01\0\x09\0\0\x03", 6)));
        // The transfer's height and width stand at offsets 32 and 34.
        ByteReader r(bytes);
        r.Seek(32);
        EXPECT_EQ(r.U16(), 23);
        EXPECT_EQ(r.U16(), 37);

        auto back = LoadWith<WmfParser>(file);
        ASSERT_TRUE(back);
        EXPECT_EQ(back->PixelFormat, PixelFormat24bppRGB);
        EXPECT_EQ(CountDifferences(ToRgba(*back), ToRgba(*image)), 0);
    }
    // libwmf resamples what it draws (a level or two of blur), so it is given
    // a smooth picture: the shipped sample.
    const QString smooth = SdlSample("sample.png");
    ASSERT_TRUE(QFileInfo::exists(smooth)) << "libsdl2-image-tests is not installed";
    CImage picture;
    ASSERT_TRUE(picture.LoadPictureFromFile(smooth));
    const QString file = TempFile("wmf-rose.wmf");
    ASSERT_TRUE(WmfParser().SavePictureToFile(file, picture));
    const QString rendered = TempFile("wmf-by-libwmf.png");
    QByteArray err;
    ASSERT_EQ(vmtest::Run("wmf2gd", {"-t", "png", "-o", rendered, file}, nullptr, &err), 0)
        << "libwmf-bin's wmf2gd: " << err.toStdString();
    EXPECT_EQ(CountDifferences(DecodeWithMagick(rendered), ToRgba(picture), 8, false), 0);

    auto wide = RandomImage(32768, 1, 1, 1);
    EXPECT_FALSE(WmfParser().SavePictureToFile(TempFile("wmf-too-wide.wmf"), *wide));
    EXPECT_FALSE(QFileInfo::exists(TempFile("wmf-too-wide.wmf")));
}

// Broken sizes stop the playing, broken headers fail; nothing crashes.
TEST(WmfParserMalformed, HeadersAndRecords) {
    const QByteArray shapes = PlaceableShapes();
    for (qsizetype cut = 40; cut < shapes.size(); cut += 5) {
        // The picture is what the records that are there paint.
        auto image = LoadBytesWith<WmfParser>(shapes.left(cut));
        ASSERT_TRUE(image) << cut;
        EXPECT_EQ(image->Width(), 192);
    }
    // A record that claims more than the file holds, or nothing at all.
    for (uint32_t words : {0u, 2u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        auto image = LoadBytesWith<WmfParser>(Patched(shapes, 40, Le32(words)));
        ASSERT_TRUE(image);
        EXPECT_EQ(PixelOf(*image, 48, 38).A, 0); // nothing was played
    }
    // Placeable headers that cannot be drawn: no units, an empty box, no
    // metafile header behind them; a plain header whose size words give
    // nothing to draw on.
    const QByteArray standard = shapes.mid(22);
    for (const QByteArray& bad : {PlaceableHeader(0x9AC6CDD7, 200, 100, 0, true) + standard,
                                  PlaceableHeader(0x9AC6CDD7, 0, 100, 100, true) + standard,
                                  PlaceableHeader(0x9AC6CDD7, 200, 100, 100, true) + QByteArray(18, '\x55'),
                                  Patched(standard, 32, QByteArray(2, '\0'))})
        EXPECT_TRUE(Refuses<WmfParser>(bad));
}

TEST(EmfParserSignature, PlainAndPlaceableLikeKinds) {
    EmfParser parser;
    auto image = RandomImage(8, 6, 24, 1);
    const QString plain = TempFile("emf-plain.emf");
    ASSERT_TRUE(parser.SavePictureToFile(plain, *image));
    EXPECT_TRUE(parser.IsEmf(plain));

    // First value 1 and the placeable XOR check: taken for an EMF, which the
    // loader then refuses, and no parser of the chain opens it.
    const QString placeableLike = TempFile("emf-placeable-like.emf");
    ASSERT_TRUE(WriteBytes(placeableLike, PlaceableHeader(1, 200, 100, 100, true) + QByteArray(40, '\0')));
    EXPECT_TRUE(parser.IsEmf(placeableLike));
    EXPECT_TRUE(Refuses<EmfParser>(placeableLike));
    EXPECT_TRUE(Refuses<void>(placeableLike));

    ASSERT_TRUE(WriteBytes(placeableLike, PlaceableHeader(1, 200, 100, 100, false)));
    EXPECT_FALSE(parser.IsEmf(placeableLike));
    ASSERT_TRUE(WriteBytes(TempFile("emf-no-signature.emf"), Patched(ReadBytes(plain), 41, "X")));
    EXPECT_FALSE(parser.IsEmf(TempFile("emf-no-signature.emf")));
    EXPECT_FALSE(parser.IsEmf(TempFile("no-such-file.emf")));
}

// An EMF written by pstoedit: the frame decides the picture's size, the
// filled shapes are opaque, the rest transparent.
TEST(EmfParserDecoding, FileFromPstoedit) {
    const QString eps = TempFile("emf-source.eps");
    ASSERT_TRUE(WriteBytes(eps, "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 200 100\n"
                                "1 0 0 setrgbcolor 10 10 80 60 rectfill\n"
                                "0 0 1 setrgbcolor newpath 150 50 30 0 360 arc fill\n"
                                "showpage\n"));
    const QString file = TempFile("emf-pstoedit.emf");
    QByteArray err;
    ASSERT_EQ(vmtest::Run("pstoedit", {"-q", "-f", "emf:-OO", eps, file}, nullptr, &err), 0)
        << "pstoedit: " << err.toStdString();
    auto image = LoadWith<EmfParser>(file);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->PixelFormat, PixelFormat32bppARGB);
    EXPECT_EQ(image->RawImageFormat, RawEmf);

    const QByteArray fileBytes = ReadBytes(file);
    ByteReader r(fileBytes);
    r.Seek(24);
    const int32_t frameLeft = r.I32(), frameTop = r.I32(), frameRight = r.I32(), frameBottom = r.I32();
    r.Seek(72);
    const double deviceX = r.I32(), deviceY = r.I32(), mmX = r.I32(), mmY = r.I32();
    EXPECT_EQ(image->Width(), MulDiv(frameRight - frameLeft, 96, 2540));
    EXPECT_EQ(image->Height(), MulDiv(frameBottom - frameTop, 96, 2540));
    // pstoedit draws in device units with y turned down: point (x, y) of the
    // page lies at (x, -y) on the reference device.
    auto at = [&](double x, double y) {
        const double px = (x - frameLeft * deviceX / (mmX * 100)) * image->Width() /
                          ((frameRight - frameLeft) * deviceX / (mmX * 100));
        const double py = (-y - frameTop * deviceY / (mmY * 100)) * image->Height() /
                          ((frameBottom - frameTop) * deviceY / (mmY * 100));
        return PixelOf(*image, static_cast<int>(px), static_cast<int>(py));
    };
    EXPECT_EQ(at(50, 40), (Rgba{255, 0, 0, 255}));
    EXPECT_EQ(at(150, 50), (Rgba{0, 0, 255, 255}));
    EXPECT_EQ(at(100, 50).A, 0);
    EXPECT_EQ(at(175, 75).A, 0);
}

// The writer's frame is the picture's size on a 96 dots per inch display; the
// file holds the picture as one transfer that emf2svg finds, and it comes back
// here exactly, opaque.
TEST(EmfParserWriter, OneBitmapTransferReadHereAndByEmf2svg) {
    for (int bits : {1, 8, 24, 32}) {
        SCOPED_TRACE(bits);
        // A tall picture too: its size survives the frame.
        auto image = RandomImage(41, bits == 24 ? 17344 : 27, bits, 5);
        image->RawImageFormat = 0;
        const QString file = TempFile(QString("emf-written-%1.emf").arg(bits));
        ASSERT_TRUE(EmfParser().SavePictureToFile(file, *image));
        EXPECT_EQ(image->RawImageFormat, RawEmf);
        const QByteArray fileBytes = ReadBytes(file);
        ByteReader r(fileBytes);
        r.Seek(24);
        EXPECT_EQ(r.I32(), 0);
        EXPECT_EQ(r.I32(), 0);
        // 96 dots per inch: 2540 / 96 hundredths of a millimetre a pixel.
        EXPECT_EQ(r.I32(), RoundHalfEven(41 * 2540 / 96.0));
        EXPECT_EQ(r.I32(), RoundHalfEven(image->Height() * 2540 / 96.0));

        auto back = LoadWith<EmfParser>(file);
        ASSERT_TRUE(back);
        EXPECT_EQ(back->Width(), 41);
        EXPECT_EQ(back->Height(), image->Height());
        QImage expected = ToRgba(*image);
        for (int y = 0; y < expected.height(); ++y)
            for (int x = 0; x < expected.width(); ++x)
                expected.scanLine(y)[4 * x + 3] = 255;
        EXPECT_EQ(CountDifferences(ToRgba(*back), expected), 0);

        if (image->Height() > 1000) continue; // beyond what emf2svg converts
        const QString svg = TempFile("emf-by-emf2svg.svg");
        QByteArray err;
        ASSERT_EQ(vmtest::Run("emf2svg-conv", {"-i", file, "-o", svg}, nullptr, &err), 0)
            << "emf2svg-conv: " << err.toStdString();
        const QRegularExpression embedded("data:image/png;base64,([A-Za-z0-9+/=]+)");
        const auto match = embedded.match(QString::fromUtf8(ReadBytes(svg)));
        ASSERT_TRUE(match.hasMatch());
        const QString png = TempFile("emf-embedded.png");
        ASSERT_TRUE(WriteBytes(png, QByteArray::fromBase64(match.captured(1).toLatin1())));
        EXPECT_EQ(CountDifferences(DecodeWithMagick(png), expected, 0, false), 0);
    }
}

// A picture drawn with a world transform and a path, through libuemf's
// records: the transform reaches the path.
TEST(EmfParserDecoding, WorldTransformAndPath) {
    EMFHANDLES* handles = nullptr;
    emf_htable_create(16, 16, &handles);
    QByteArray bytes;
    auto add = [&](char* record) {
        uint32_t size = 0;
        std::memcpy(&size, record + 4, 4);
        bytes.append(record, size);
        std::free(record);
    };
    // 100 x 50 reference pixels on a 96 dots per inch device.
    const U_RECTL bounds{0, 0, 99, 49};
    const U_RECTL frame{0, 0, 2646, 1323};
    add(U_EMRHEADER_set(bounds, frame, nullptr, 0, nullptr, U_SIZEL{1920, 1080}, U_SIZEL{508, 286}, 0));
    uint32_t brush = 0;
    add(createbrushindirect_set(&brush, handles, logbrush_set(U_BS_SOLID, U_RGB(0, 160, 0), 0)));
    add(selectobject_set(brush, handles));
    add(selectobject_set(U_NULL_PEN, handles));
    // Everything drawn after this is moved 50 pixels right.
    add(U_EMRSETWORLDTRANSFORM_set(xform_set(1, 0, 0, 1, 50, 0)));
    add(U_EMRBEGINPATH_set());
    add(U_EMRMOVETOEX_set(U_POINTL{5, 5}));
    add(U_EMRLINETO_set(U_POINTL{45, 5}));
    add(U_EMRLINETO_set(U_POINTL{45, 45}));
    add(U_EMRLINETO_set(U_POINTL{5, 45}));
    add(U_EMRCLOSEFIGURE_set());
    add(U_EMRENDPATH_set());
    add(U_EMRFILLPATH_set(bounds));
    EMFTRACK track{};
    add(U_EMREOF_set(0, nullptr, &track));
    emf_htable_free(&handles);
    uint32_t total = static_cast<uint32_t>(bytes.size());
    std::memcpy(bytes.data() + 48, &total, 4);

    auto image = LoadBytesWith<EmfParser>(bytes);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->Width(), 100);
    EXPECT_EQ(image->Height(), 50);
    EXPECT_EQ(PixelOf(*image, 75, 25), (Rgba{0, 160, 0, 255}));
    EXPECT_EQ(PixelOf(*image, 25, 25).A, 0);
    EXPECT_EQ(PixelOf(*image, 97, 25).A, 0);
}

TEST(EmfParserMalformed, HeadersAndRecords) {
    auto picture = RandomImage(16, 12, 24, 3);
    const QString good = TempFile("emf-good.emf");
    ASSERT_TRUE(EmfParser().SavePictureToFile(good, *picture));
    const QByteArray bytes = ReadBytes(good);
    ByteReader sizes(bytes);
    sizes.Seek(4);
    const qsizetype headerSize = sizes.U32();
    sizes.Seek(static_cast<size_t>(headerSize) + 4);
    const qsizetype transferEnd = headerSize + sizes.U32();
    for (qsizetype cut = 0; cut < bytes.size(); cut += 37) {
        // Without the whole header there is no picture; without the whole
        // transfer the picture is empty.
        auto image = LoadBytesWith<EmfParser>(bytes.left(cut));
        ASSERT_EQ(image != nullptr, cut >= headerSize) << cut;
        if (image) {
            EXPECT_EQ(PixelOf(*image, 8, 6).A, cut < transferEnd ? 0 : 255) << cut;
        }
    }
    // The transfer record's offsets pointing outside it: libuemf's check
    // rejects the record and nothing is drawn.
    ASSERT_EQ(bytes.mid(headerSize, 4), Le32(76)); // EMR_BITBLT
    auto image = LoadBytesWith<EmfParser>(Patched(bytes, headerSize + 84, Le32(0x7FFFFFF0)));
    ASSERT_TRUE(image);
    EXPECT_EQ(PixelOf(*image, 8, 6).A, 0);
    // No reference size in millimetres: nothing to map the frame with.
    EXPECT_TRUE(Refuses<EmfParser>(Patched(bytes, 80, QByteArray(8, '\0'))));
}
