#include "formats/JpgParser.h"

#include "core/AppSettings.h"
#include "formats/CodecTestSupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

#include <map>

using namespace vm;
using namespace vmtest;

namespace {

// Two decoders may differ by a level or two per channel in their inverse DCT
// and upsampling.
constexpr int IdctTolerance = 3;

const auto Load = &LoadWith<JpgParser>;

QString Picture(const QString& name, const QStringList& extra = {}) {
    return Magick(QStringList{"-size", "96x64", "gradient:orange-navy", "-swirl", "120", "-depth", "8"} +
                  extra + QStringList{TempFile(name)});
}

// exiftool's reading of a file: group:tag -> value, numbers as numbers.
QJsonObject ExifTool(const QString& file) {
    QByteArray out, err;
    if (vmtest::Run("exiftool", {"-j", "-G1", "-n", file}, &out, &err) != 0) {
        ADD_FAILURE() << "exiftool failed: " << err.toStdString();
        return {};
    }
    const QJsonArray all = QJsonDocument::fromJson(out).array();
    return all.isEmpty() ? QJsonObject() : all[0].toObject();
}

// A JPEG of Width x Height with Exif items and a thumbnail, written by
// ImageMagick and exiftool.
QString JpegWithExif(const QString& name, int width, int height, bool thumbnail = true) {
    const QString picture = Magick({"-size", QString("%1x%2").arg(width).arg(height), "gradient:red-blue",
                                    "-quality", "90", TempFile(name)});
    if (picture.isEmpty()) return {};
    QStringList args = {"-q",
                        "-overwrite_original",
                        "-Make=Canon",
                        "-Model=EOS 5D",
                        "-Artist=Ann Author",
                        "-Software=Other Program 1.0",
                        "-DateTimeOriginal=2020:01:02 03:04:05",
                        "-ExposureTime=1/125",
                        "-ISO=400",
                        "-GPSLatitude=48.5",
                        "-GPSLatitudeRef=N"};
    if (thumbnail) {
        const QString thumb = Magick({picture, "-resize", "64x64", TempFile("thumb-" + name)});
        if (thumb.isEmpty()) return {};
        args << "-ThumbnailImage<=" + thumb;
    }
    QByteArray err;
    if (vmtest::Run("exiftool", args << picture, nullptr, &err) != 0) {
        ADD_FAILURE() << "exiftool could not write: " << err.toStdString();
        return {};
    }
    return picture;
}

struct IgnoreExif {
    bool saved = Globals().IgnoreExif;
    explicit IgnoreExif(bool on) { Globals().IgnoreExif = on; }
    ~IgnoreExif() { Globals().IgnoreExif = saved; }
};

} // namespace

// Colour, grey, CMYK and progressive files from other programs show what
// ImageMagick shows (CMYK: ImageMagick's own conversion to RGB); grey opens as
// the 8-bit grey format; the density comes in either unit.
TEST(JpgParserDecoding, FilesFromOtherPrograms) {
    const QString shipped = SdlSample("sample.jpg");
    ASSERT_TRUE(QFileInfo::exists(shipped)) << "libsdl2-image-tests is not installed";
    const QString cmyk = Picture("jpg-cmyk.jpg", {"-colorspace", "CMYK"});
    ASSERT_EQ(Identify("%[colorspace]", cmyk), "CMYK");
    struct Case {
        QString File;
        uint32_t Format;
        QString Reference = {}; // when it is not the file itself
        float Resolution = 0;   // 0: not checked
    };
    const QStringList perInch{"-units", "PixelsPerInch", "-density", "300"};
    const QStringList perCm{"-units", "PixelsPerCentimeter", "-density", "100"};
    const std::vector<Case> cases = {
        {shipped, PixelFormat24bppRGB},
        {Picture("jpg-colour.jpg", perInch), PixelFormat24bppRGB, {}, 300.0f},
        {Picture("jpg-progressive.jpg", QStringList{"-interlace", "JPEG"} + perCm),
         PixelFormat24bppRGB,
         {},
         254.0f},
        {Picture("jpg-grey.jpg", {"-colorspace", "Gray"}), PixelFormat8bppGray},
        {Picture("jpg-444.jpg", {"-sampling-factor", "1x1"}), PixelFormat24bppRGB},
        {cmyk, PixelFormat24bppRGB, Magick({cmyk, "-colorspace", "sRGB", TempFile("jpg-cmyk-as-rgb.png")})},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.File.toStdString());
        ASSERT_FALSE(c.File.isEmpty());
        auto image = Load(c.File);
        ASSERT_TRUE(image);
        EXPECT_EQ(image->PixelFormat, c.Format);
        EXPECT_EQ(image->RawImageFormat, RawJpeg);
        if (c.File != cmyk) EXPECT_EQ(image->RawPixelFormat, c.Format);
        if (c.Resolution > 0) EXPECT_NEAR(image->Resolution, c.Resolution, 1e-3);
        EXPECT_EQ(DifferencesFromMagick(c.Reference.isEmpty() ? c.File : c.Reference, *image, IdctTolerance),
                  0);
    }
}

// The end marker must be the file's last two bytes; what fails inside the
// stream fails cleanly and leaves no pixels.
TEST(JpgParserSignature, TrailingBytesTruncationAndDamage) {
    const QString good = Picture("jpg-good.jpg");
    ASSERT_FALSE(good.isEmpty());
    const QByteArray bytes = ReadBytes(good);
    JpgParser parser;
    ASSERT_TRUE(parser.IsJpg(good));

    const QString trailing = TempFile("jpg-trailing.jpg");
    ASSERT_TRUE(WriteBytes(trailing, bytes + QByteArray("\0\0", 2)));
    EXPECT_FALSE(parser.IsJpg(trailing));
    EXPECT_TRUE(Refuses<JpgParser>(trailing));
    EXPECT_TRUE(Refuses<void>(trailing)) << "no parser of the chain takes it either";

    const QString truncated = TempFile("jpg-truncated.jpg");
    ASSERT_TRUE(WriteBytes(truncated, bytes.left(bytes.size() / 2)));
    EXPECT_FALSE(parser.IsJpg(truncated));

    // Markers only, no frame: the signature passes, the decoder does not.
    const QString tablesOnly = TempFile("jpg-tables.jpg");
    ASSERT_TRUE(WriteBytes(tablesOnly, QByteArray("\xFF\xD8\xFF\xD9", 4)));
    EXPECT_TRUE(parser.IsJpg(tablesOnly));
    EXPECT_TRUE(Refuses<JpgParser>(tablesOnly));

    // A header cut short inside the frame header, closed with an end marker.
    const qsizetype sof = bytes.indexOf("\xFF\xC0");
    ASSERT_GT(sof, 0);
    const QString cutHeader = TempFile("jpg-cut-header.jpg");
    ASSERT_TRUE(WriteBytes(cutHeader, bytes.left(sof + 6) + QByteArray("\xFF\xD9", 2)));
    EXPECT_TRUE(Refuses<JpgParser>(cutHeader));
    EXPECT_FALSE(parser.IsJpg(TempFile("no-such-file.jpg")));
}

// A progressive file keeps every coefficient while it decodes: a few hundred
// bytes declaring a picture whose block would still fit must not make the
// library ask for gigabytes more. It is refused at once.
TEST(JpgParserSignature, ProgressiveGiantIsRefusedBeforeAllocating) {
    const QString small = Magick(
        {"-size", "16x16", "gradient:", "-colorspace", "Gray", "-interlace", "JPEG", TempFile("prog.jpg")});
    ASSERT_FALSE(small.isEmpty());
    QByteArray bytes = ReadBytes(small);
    const qsizetype sof = bytes.indexOf("\xFF\xC2");
    ASSERT_GT(sof, 0);
    // 65000 x 30000 grey: a block under the cap, twice that in coefficients.
    bytes[sof + 5] = static_cast<char>(30000 >> 8);
    bytes[sof + 6] = static_cast<char>(30000 & 0xFF);
    bytes[sof + 7] = static_cast<char>(65000 >> 8);
    bytes[sof + 8] = static_cast<char>(65000 & 0xFF);
    const QString giant = TempFile("prog-giant.jpg");
    ASSERT_TRUE(WriteBytes(giant, bytes));
    JpgParser parser;
    EXPECT_TRUE(parser.IsJpg(giant));
    EXPECT_TRUE(Refuses<JpgParser>(giant));
}

// Quality outside 0..100 is clamped: 140 writes what 100 writes.
TEST(JpgParserWriter, QualityIsClamped) {
    auto image = RandomImage(64, 48, 24, 11);
    std::map<int, QByteArray> written;
    for (int quality : {140, 100, 90, 0, -5}) {
        const QString file = TempFile(QString("jpg-q%1.jpg").arg(quality));
        ASSERT_TRUE(JpgParser().SavePictureToFile(file, *image, quality));
        written[quality] = ReadBytes(file);
    }
    EXPECT_EQ(written[140], written[100]);
    EXPECT_NE(written[90], written[100]);
    EXPECT_EQ(written[-5], written[0]);
    EXPECT_EQ(Identify("%Q", TempFile("jpg-q140.jpg")), "100");
    EXPECT_EQ(Identify("%Q", TempFile("jpg-q90.jpg")), "90");
}

// What is written decodes in ImageMagick to what the block held, within a
// JPEG's loss; grey stays one channel, alpha and palettes become colour.
TEST(JpgParserWriter, WrittenFilesDecodeElsewhere) {
    const QString source = Picture("jpg-source.png");
    ASSERT_FALSE(source.isEmpty());
    CImage colour;
    ASSERT_TRUE(colour.LoadPictureFromFile(source));
    colour.Resolution = 200;
    colour.RawImageFormat = 0;
    const QString out = TempFile("jpg-written.jpg");
    ASSERT_TRUE(JpgParser().SavePictureToFile(out, colour, 100));
    EXPECT_EQ(colour.RawImageFormat, RawJpeg);
    EXPECT_EQ(DifferencesFromMagick(out, colour, 6), 0);
    EXPECT_EQ(Identify("%x", out), "200");
    EXPECT_EQ(Identify("%[channels]", out), "srgb");

    CImage grey;
    ASSERT_TRUE(grey.CreateNewImage(40, 30, 8));
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x)
            grey.Row(y)[x] = static_cast<uint8_t>(x * 6);
    const QString greyOut = TempFile("jpg-grey-written.jpg");
    ASSERT_TRUE(JpgParser().SavePictureToFile(greyOut, grey, 95));
    EXPECT_EQ(Identify("%[channels]", greyOut), "gray");
    auto back = Load(greyOut);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->PixelFormat, PixelFormat8bppGray);
    EXPECT_EQ(CountDifferences(ToRgba(*back), ToRgba(grey), 4), 0);

    auto indexed = RandomImage(40, 30, 4, 2);
    ASSERT_TRUE(JpgParser().SavePictureToFile(TempFile("jpg-from-4bit.jpg"), *indexed, 100));
    EXPECT_EQ(Identify("%[channels]", TempFile("jpg-from-4bit.jpg")), "srgb");
}

// The property items are read from the Exif block in the file's order, with
// the thumbnail's bytes as item 20507.
TEST(JpgParserExif, ItemsAreRead) {
    const QString file = JpegWithExif("jpg-exif-read.jpg", 320, 200);
    ASSERT_FALSE(file.isEmpty());
    auto image = Load(file);
    ASSERT_TRUE(image);
    const std::vector<PropertyItem> items = ParsePropertyBuffer(image->PropertyBuffer());
    ASSERT_EQ(static_cast<int>(items.size()), image->PropertyCount);
    std::map<std::pair<uint16_t, uint32_t>, const PropertyItem*> byKey;
    for (const PropertyItem& item : items)
        byKey[{item.Directory, item.Id}] = &item;
    auto typeAndValue = [&](uint16_t directory, uint32_t id) {
        const PropertyItem* item = byKey[{directory, id}];
        return item ? std::pair(int{item->Type}, item->Value) : std::pair(-1, QByteArray());
    };
    EXPECT_EQ(typeAndValue(0, 271), std::pair(2, QByteArray("Canon", 6)));
    // exiftool writes big-endian Exif; the items hold little-endian numbers.
    EXPECT_EQ(typeAndValue(2, 0x8827), std::pair(3, QByteArray("\x90\x01", 2)));
    EXPECT_EQ(typeAndValue(2, 0x829A), std::pair(5, QByteArray("\x01\0\0\0\x7D\0\0\0", 8)));
    ASSERT_TRUE((byKey[{3, 2}])); // GPSLatitude

    const PropertyItem* thumb = byKey[{1, PropertyTagThumbnailData}];
    ASSERT_TRUE(thumb);
    EXPECT_TRUE(thumb->Value.startsWith("\xFF\xD8"));
    EXPECT_EQ(thumb, &items.back());
    // The main image's directory comes first.
    EXPECT_EQ(items.front().Directory, 0);
}

// After a save every item is still there, the thumbnail is rendered anew at
// the best fit into 240 x 180, and the software item names the editor.
TEST(JpgParserExif, ItemsSurviveASaveWithNewThumbnailAndSoftware) {
    struct Case {
        int Width, Height, ThumbWidth, ThumbHeight;
    };
    // 640 x 480 fills the box; 300 x 500 is bound by the height (the rule
    // takes the height when the width's ratio is the larger).
    for (const Case& c : {Case{640, 480, 240, 180}, Case{300, 500, 108, 180}, Case{200, 100, 200, 100}}) {
        SCOPED_TRACE(c.Width);
        const QString file = JpegWithExif(QString("jpg-exif-%1.jpg").arg(c.Width), c.Width, c.Height);
        ASSERT_FALSE(file.isEmpty());
        const QJsonObject before = ExifTool(file);
        CImage image;
        ASSERT_TRUE(image.LoadPictureFromFile(file));
        ASSERT_GE(image.PropertyCount, 4);
        const QString out = TempFile(QString("jpg-exif-saved-%1.jpg").arg(c.Width));
        ASSERT_TRUE(image.SavePictureToFile(out, RawJpeg, SaveOptions()));

        const QJsonObject after = ExifTool(out);
        EXPECT_EQ(after["IFD0:Software"].toString(), "Osier Vellumark 2.0");
        for (const char* tag :
             {"IFD0:Make", "IFD0:Model", "IFD0:Artist", "ExifIFD:DateTimeOriginal", "ExifIFD:ExposureTime",
              "ExifIFD:ISO", "GPS:GPSLatitude", "GPS:GPSLatitudeRef", "IFD1:Compression"})
            EXPECT_EQ(after[tag], before[tag]) << tag;

        QByteArray thumb;
        ASSERT_EQ(vmtest::Run("exiftool", {"-b", "-ThumbnailImage", out}, &thumb), 0);
        const QString thumbFile = TempFile("jpg-exif-thumb.jpg");
        ASSERT_TRUE(WriteBytes(thumbFile, thumb));
        EXPECT_EQ(Identify("%wx%h", thumbFile), QString("%1x%2").arg(c.ThumbWidth).arg(c.ThumbHeight));
        EXPECT_EQ(Identify("%Q", thumbFile), "80");
    }
}

// Fewer than four items, or IgnoreExif: the file gets no Exif block at all.
TEST(JpgParserExif, NoItemsWrittenBelowFourOrWhenIgnored) {
    const QString file = JpegWithExif("jpg-exif-ignored.jpg", 120, 90);
    ASSERT_FALSE(file.isEmpty());
    CImage image;
    ASSERT_TRUE(image.LoadPictureFromFile(file));
    {
        IgnoreExif on(true);
        const QString out = TempFile("jpg-exif-ignored-out.jpg");
        ASSERT_TRUE(JpgParser().SavePictureToFile(out, image, 90));
        EXPECT_FALSE(ExifTool(out).contains("IFD0:Make"));
    }

    const QString few = Magick({"-size", "50x40", "xc:teal", TempFile("jpg-exif-few.jpg")});
    ASSERT_FALSE(few.isEmpty());
    ASSERT_EQ(vmtest::Run("exiftool", {"-q", "-overwrite_original", "-all=", "-Make=Canon", "-Model=X", few}),
              0);
    // exiftool adds the directory's mandatory items; a second pass drops them.
    ASSERT_EQ(vmtest::Run("exiftool", {"-q", "-overwrite_original", "-XResolution=", "-YResolution=",
                                       "-ResolutionUnit=", "-YCbCrPositioning=", few}),
              0);
    CImage two;
    ASSERT_TRUE(two.LoadPictureFromFile(few));
    ASSERT_EQ(two.PropertyCount, 2);
    const QString out = TempFile("jpg-exif-few-out.jpg");
    ASSERT_TRUE(JpgParser().SavePictureToFile(out, two, 90));
    EXPECT_FALSE(ExifTool(out).contains("IFD0:Make"));
}

TEST(JpgParserExif, BestFitInfo) {
    auto size = [](int w, int h, int maxW, int maxH) {
        CImage image;
        image.CreateNewImage(w, h, 24);
        int32_t outW = 0, outH = 0;
        JpgParser().GetBestFitInfo(image, maxW, maxH, outW, outH);
        return std::make_pair(outW, outH);
    };
    EXPECT_EQ(size(240, 180, 240, 180), std::make_pair(240, 180)); // fits exactly
    EXPECT_EQ(size(100, 300, 240, 180), std::make_pair(60, 180));
    EXPECT_EQ(size(1000, 100, 240, 180), std::make_pair(240, 24));
    EXPECT_EQ(size(241, 250, 240, 180), std::make_pair(174, 180)); // 173.52
    // Halves round to even: 241 x 0.5 = 120.5 gives 120.
    EXPECT_EQ(size(241, 360, 240, 180), std::make_pair(120, 180));
}
