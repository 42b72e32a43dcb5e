// The *.Sel byte-run file byte for byte, its reading of damaged files, and
// masks kept as BMP and GIF pictures.
#include "MaskReference.h"

#include "core/Image.h"
#include "formats/BmpParser.h"
#include "formats/ParserCommon.h"
#include "support/TestSupport.h"

#include <QFile>
#include <gtest/gtest.h>

using namespace vm;
using namespace vmtest;

namespace {

QByteArray Header(int32_t w, int32_t h) {
    ByteWriter out;
    out.U32(987654321u);
    out.I32(w);
    out.I32(h);
    return out.Data();
}

QByteArray Bytes(std::initializer_list<int> values) {
    QByteArray b;
    for (int v : values)
        b.append(static_cast<char>(v));
    return b;
}

QString WriteTemp(const QString& name, const QByteArray& bytes) {
    const QString path = TempDir() + "/" + name;
    QFile f(path);
    f.open(QIODevice::WriteOnly);
    f.write(bytes);
    return path;
}

} // namespace

TEST(SelectionFile, RunCodeBytes) {
    CSelection s;
    // 64 equal bytes of 200: a full run of 63 (255, 200), then a run of one,
    // which still takes a pair since 200 is above 191.
    Put(s, 64, 1, Pixels(64, 200));
    EXPECT_EQ(s.EncodeSelectionFile(), Header(64, 1) + Bytes({255, 200, 193, 200}));
    EXPECT_EQ(QByteArray::fromHex("b168de3a").left(4), s.EncodeSelectionFile().left(4));

    // Lone values: 191 stays a byte, 192 needs a pair. Width 5 rows carry their
    // three padding bytes too.
    Put(s, 5, 2, {5, 191, 192, 7, 7, /**/ 0, 0, 0, 0, 0});
    EXPECT_EQ(s.EncodeSelectionFile(), Header(5, 2) + Bytes({5, 191, 193, 192, 194, 7, 195, 0, 200, 0}));
}

TEST(SelectionFile, RoundTripKeepsSizeAndPixels) {
    CSelection s, back;
    const Pixels p = RandomMask(37, 11, 4, true);
    Put(s, 37, 11, p);
    const QString path = TempDir() + "/round.Sel";
    ASSERT_TRUE(s.SaveSelctionToFile(path));
    ASSERT_TRUE(back.LoadSelctionFromFile(path));
    EXPECT_EQ(back.Width(), 37);
    EXPECT_EQ(back.Height(), 11);
    EXPECT_EQ(Snapshot(back), p);
    EXPECT_FALSE(back.UseDefaultSetting());
    EXPECT_EQ(back.Region(), s.Region());
}

TEST(SelectionFile, RunPastTheStrideIsCutAtTheWidth) {
    // Width 5, stride 8. A run of 10 at the row's start is cut to 5; the next
    // three literals fill the padding and the row ends; the rest goes on row 1,
    // and what the file lacks stays zero.
    CSelection s;
    ASSERT_TRUE(s.DecodeSelectionFile(Header(5, 3) + Bytes({202, 9, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10})));
    EXPECT_EQ(Snapshot(s), Pixels({9, 9, 9, 9, 9, 4, 5, 6, 7, 8, 0, 0, 0, 0, 0}));
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(s.Row(0)) + 5, 3), Bytes({1, 2, 3}));
    // A cut inside the padding gives nothing and the row resumes at the width.
    ASSERT_TRUE(
        s.DecodeSelectionFile(Header(5, 2) + Bytes({197, 1, 6, 195, 7, 8, 9, 10, 11, 12, 13, 14, 15})));
    EXPECT_EQ(Snapshot(s), Pixels({1, 1, 1, 1, 1, 11, 12, 13, 14, 15}));
}

TEST(SelectionFile, DamagedFilesNeitherCrashNorOverrun) {
    CSelection s;
    EXPECT_TRUE(s.DecodeSelectionFile(Header(3, 2)));
    EXPECT_EQ(Snapshot(s), Pixels(6, 0));
    EXPECT_TRUE(s.DecodeSelectionFile(Header(3, 1) + Bytes({4, 250})));
    EXPECT_EQ(Snapshot(s), Pixels({4, 0, 0}));
    EXPECT_FALSE(s.DecodeSelectionFile(Header(0, 5)));
    EXPECT_FALSE(s.DecodeSelectionFile(Header(-4, 5)));
    EXPECT_FALSE(s.DecodeSelectionFile(Header(0x7fffffff, 0x7fffffff)));
    EXPECT_FALSE(s.DecodeSelectionFile(Header(3, 2).left(11)));
    EXPECT_FALSE(s.LoadSelctionFromFile(WriteTemp("short.Sel", Header(3, 2).left(7))));
    EXPECT_FALSE(s.LoadSelctionFromFile(TempDir() + "/missing.Sel"));

    // Every truncation and a flipped byte at every position of a real file.
    CSelection source;
    Put(source, 9, 5, RandomMask(9, 5, 8, true));
    const QByteArray good = source.EncodeSelectionFile();
    for (int n = 0; n <= good.size(); ++n) {
        CSelection t;
        t.DecodeSelectionFile(good.left(n));
        QByteArray bad = good;
        if (n < bad.size()) bad[n] = static_cast<char>(bad[n] ^ 0xA5);
        t.DecodeSelectionFile(bad);
        EXPECT_LE(t.BufferSize(), size_t{1} << 31);
    }
}

TEST(SelectionFile, PicturesServeAsMasks) {
    const Pixels p = RandomMask(23, 7, 9, true);
    CSelection s;
    Put(s, 23, 7, p);
    for (bool bmp : {true, false}) {
        const QString path = TempDir() + (bmp ? "/mask.bmp" : "/mask.gif");
        ASSERT_TRUE(s.SaveSelctionToFile(path, false, bmp));
        CSelection back;
        ASSERT_TRUE(back.LoadSelctionFromFile(path)) << bmp;
        EXPECT_EQ(Snapshot(back), p) << bmp;
    }
    // A colour picture goes through the grey of the first grey method.
    CImage colour;
    colour.CreateNewImage(3, 1, 24);
    const uint8_t px[] = {255, 255, 255, 0, 0, 0, 0, 0, 255};
    std::memcpy(colour.Row(0), px, sizeof px);
    const QString path = TempDir() + "/colour.bmp";
    ASSERT_TRUE(BmpParser().SavePictureToFile(path, colour, 0, false, false, 0));
    CSelection fromColour;
    ASSERT_TRUE(fromColour.LoadSelctionFromFile(path));
    EXPECT_EQ(Snapshot(fromColour), Pixels({255, 0, 126}));
    // Neither a selection file nor a picture.
    CSelection none;
    EXPECT_FALSE(none.LoadSelctionFromFile(WriteTemp("text.Sel", "not a selection at all")));
}

TEST(SelectionFile, ASmallerFileIsStretchedOntoTheCanvas) {
    CSelection file, canvas;
    Put(file, 2, 2, {255, 0, 0, 128});
    canvas.CreateNewSelection(4, 4);
    ASSERT_TRUE(canvas.LoadSeletionFromSelection(file, SelectionModeNew));
    EXPECT_EQ(Snapshot(canvas), Pixels({255, 255, 0, 0, 255, 255, 0, 0, 0, 0, 128, 128, 0, 0, 128, 128}));
    EXPECT_FALSE(canvas.UseDefaultSetting());
}
