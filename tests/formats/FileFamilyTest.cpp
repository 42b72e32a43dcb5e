// The registry and the dispatcher: declarations, the options a save resolves,
// the atomic write, and what a writer refuses.
#include "formats/BmpParser.h"
#include "formats/DibCodec.h"
#include "formats/GifParser.h"
#include "formats/ParserRegistry.h"

#include "core/MessageBox.h"
#include "core/SettingsStore.h"
#include "formats/CodecTestSupport.h"

#include <gtest/gtest.h>

using namespace vm;
using namespace vmtest;

TEST(FileFamilies, DeclarationsAreWhole) {
    QList<int32_t> codes;
    for (const FileFamily* f : Parsers()) {
        SCOPED_TRACE(f->Name);
        EXPECT_FALSE(codes.contains(f->Code));
        codes << f->Code;
        EXPECT_TRUE(f->Signature && f->Load);
        EXPECT_EQ(ParserFor(f->Code), f);
        QStringList keys;
        for (const SaveOptionSpec& o : f->Options) {
            SCOPED_TRACE(o.Key.toStdString());
            EXPECT_TRUE(f->Save) << "options of a family without a writer";
            EXPECT_FALSE(keys.contains(o.Key));
            keys << o.Key;
            EXPECT_FALSE(o.Label.isEmpty());
            EXPECT_TRUE(o.Accepts(o.Default));
            if (!o.EnabledWhenKey.isEmpty()) EXPECT_TRUE(f->Option(o.EnabledWhenKey));
        }
    }
    // The metafiles are written as one bitmap: never back into their family.
    EXPECT_FALSE(ParserFor(RawWmf)->SavesBack);
    EXPECT_TRUE(ParserFor(RawBmp)->SavesBack);
    EXPECT_EQ(ParserFor(RawPsd), nullptr);
}

TEST(FileFamilies, SavesResolveFromTheFileTheSettingsAndTheDeclarations) {
    ConfigHome home;
    const FileFamily& bmp = *ParserFor(RawBmp);
    const FileFamily& tif = *ParserFor(RawTiff);
    auto image = RandomImage(6, 4, 8, 3);

    // Nothing known: the declared defaults, the 16-bit layout only where it
    // applies.
    SaveOptions o = ResolveSaveOptions(bmp, *image, SaveOptions(), true);
    EXPECT_EQ(o.Int("FileSystem", -1), 0);
    EXPECT_EQ(o.Int("Rle", -1), 0);
    EXPECT_EQ(ParserFor(RawJpeg)->Option("Quality")->ValueIn(SaveOptions()), 85);

    // A picture from an OS/2 bitmap goes back as one; from elsewhere it takes
    // the kept choice, and a kept value the declaration does not allow is
    // ignored.
    image->RawImageFormat = RawBmp;
    image->BmpFileSystem = 1;
    image->RleCompress = true;
    o = ResolveSaveOptions(bmp, *image, SaveOptions(), true);
    EXPECT_EQ(o.Int("FileSystem"), 1);
    EXPECT_EQ(o.Int("Rle"), 1);
    image->RawImageFormat = RawPng;
    SaveSettingInt(SettingsRoot, SaveSettingSection(), "BmpFlipRow", 1);
    SaveSettingInt(SettingsRoot, SaveSettingSection(), "BmpFileSystem", 9);
    o = ResolveSaveOptions(bmp, *image, SaveOptions(), true);
    EXPECT_EQ(o.Int("FileSystem"), 0);
    EXPECT_EQ(o.Int("FlipRow"), 1);
    EXPECT_EQ(ResolveSaveOptions(bmp, *image, SaveOptions(), false).Int("FlipRow"), 0);

    // A kept fax coding does not fit a colour picture.
    SaveSettingInt(SettingsRoot, SaveSettingSection(), "TiffCompression", 4);
    EXPECT_EQ(ResolveSaveOptions(tif, *image, SaveOptions(), true).Int("Compression"), 0);
    auto mono = RandomImage(6, 4, 1, 3);
    EXPECT_EQ(ResolveSaveOptions(tif, *mono, SaveOptions(), true).Int("Compression"), 4);
    // What the caller gives is passed on for the writer to judge.
    SaveOptions given;
    given.Set("Compression", 77);
    EXPECT_EQ(ResolveSaveOptions(tif, *image, given, true).Int("Compression"), 77);
}

TEST(FileFamilies, ARefusedOrFailedSaveLeavesTheFileAsItWas) {
    MessageRecorder recorder;
    const QString target = TempFile("kept.gif");
    ASSERT_TRUE(WriteBytes(target, "the old file"));
    // Wider than a GIF can state: refused with a reason, nothing written.
    CImage wide;
    ASSERT_TRUE(wide.CreateNewImage(70000, 1, 8));
    EXPECT_FALSE(wide.SavePictureToFile(target, RawGif, SaveOptions()));
    EXPECT_EQ(ReadBytes(target), QByteArray("the old file"));
    ASSERT_EQ(recorder.Requests.size(), 1);
    EXPECT_TRUE(recorder.LastText().contains("65535"));
    EXPECT_EQ(wide.RawImageFormat, RawNone);
    const FileOutcome outcome = WritePicture(*ParserFor(RawGif), target, wide, SaveOptions());
    EXPECT_EQ(outcome.Result, FileResult::Refused);
    // The OS/2 header holds 16-bit sizes; the Windows one takes the picture.
    CImage tall;
    ASSERT_TRUE(tall.CreateNewImage(1, 40000, 1));
    SaveOptions os2;
    os2.Set("FileSystem", 1);
    EXPECT_EQ(WritePicture(*ParserFor(RawBmp), TempFile("tall.bmp"), tall, os2).Result, FileResult::Refused);
    EXPECT_TRUE(WritePicture(*ParserFor(RawBmp), TempFile("tall.bmp"), tall, SaveOptions()).Ok());
    EXPECT_EQ(tall.RawImageFormat, RawBmp);
    // No writer, and a folder that does not exist.
    EXPECT_EQ(WritePicture(*ParserFor(RawPng), TempFile("none/x.png"), tall, SaveOptions()).Result,
              FileResult::WriteFailed);
}

TEST(FileFamilies, OpeningReportsWhatHappened) {
    CImage image;
    int32_t frame = 0;
    EXPECT_EQ(OpenPicture(TempFile("absent.bmp"), image, frame).Result, FileResult::Missing);
    ASSERT_TRUE(WriteBytes(TempFile("junk.bin"), "no picture here"));
    EXPECT_EQ(OpenPicture(TempFile("junk.bin"), image, frame).Result, FileResult::Unrecognised);
    auto picture = RandomImage(5, 3, 24, 4);
    ASSERT_TRUE(picture->SavePictureToFile(TempFile("named.png"), RawPng, SaveOptions()));
    // The extension plays no part; the dispatcher names the family and file.
    ASSERT_TRUE(QFile::rename(TempFile("named.png"), TempFile("named.bmp")) ||
                QFile::exists(TempFile("named.bmp")));
    ASSERT_TRUE(OpenPicture(TempFile("named.bmp"), image, frame).Ok());
    EXPECT_EQ(image.RawImageFormat, RawPng);
    EXPECT_EQ(image.FileName, TempFile("named.bmp"));
    EXPECT_EQ(FamilyFrameCount(*ParserFor(RawPng), TempFile("named.bmp")), 1);
    EXPECT_EQ(FamilyFrameCount(*ParserFor(RawGif), TempFile("named.bmp")), 0);
}

TEST(ByteReaderSlices, StayInsideTheirBytesAndReadZerosBeyond) {
    const QByteArray bytes = QByteArray::fromHex("0102030405060708");
    const ByteReader all(bytes);
    ByteReader mid = all.Slice(2, 4);
    EXPECT_EQ(mid.Size(), 4u);
    EXPECT_EQ(mid.U32(), 0x06050403u);
    EXPECT_EQ(mid.U16(), 0); // past the slice, though the bytes go on
    EXPECT_EQ(all.Slice(6, 100).Size(), 2u);
    EXPECT_EQ(all.Slice(100, 4).Size(), 0u);
    EXPECT_EQ(all.Slice(100, 4).U32(), 0u);
    EXPECT_EQ(all.At(7), 8);
    EXPECT_EQ(all.At(8), 0);
    ByteReader r(bytes);
    r.Skip(6);
    EXPECT_EQ(r.Rest().Size(), 2u);
    uint8_t out[4] = {9, 9, 9, 9};
    EXPECT_EQ(r.ReadAvailable(out, 4), 2u);
    EXPECT_EQ(QByteArray(reinterpret_cast<char*>(out), 4).toHex(), "07080909");
}

// The metafiles' bitmaps and BMP files read their pixels through one codec:
// a DIB packed as a metafile stores it decodes as the same bitmap file does.
TEST(DibCodecTest, PackedBitmapsDecodeAsTheirBitmapFiles) {
    for (int bits : {1, 4, 8, 24}) {
        SCOPED_TRACE(bits);
        auto picture = RandomImage(9, 5, bits, 21);
        const QByteArray packed = BuildDibInfo(*picture) + BuildDibBits(*picture);
        CImage dib;
        bool bottomUp = false;
        ASSERT_TRUE(DecodeDib(ByteReader(packed), nullptr, false, dib, &bottomUp));
        EXPECT_TRUE(bottomUp);
        EXPECT_EQ(CountDifferences(ToRgba(dib), ToRgba(*picture)), 0);
        // Bits one byte short of what the header declares are not drawn.
        EXPECT_FALSE(
            DecodeDib(ByteReader(packed.left(packed.size() - picture->Stride() - 1)), nullptr, false, dib));
    }
}
