// A document without any window: commands run on it become history steps that
// undo and redo, and a command that runs out of memory part way leaves
// pixels, format, palette, selection and both history lists exactly as they
// were.
#include "document/Document.h"
#include "adjust/PointOps.h"
#include "core/Catalogue.h"
#include "core/ProcessingFrame.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>

using namespace vm;

namespace {

QByteArray Bytes(const CImage& image) {
    return QByteArray(reinterpret_cast<const char*>(image.Pointer()),
                      static_cast<qsizetype>(image.BlockSize()));
}

QByteArray MaskBytes(const CSelection& s) {
    return QByteArray(reinterpret_cast<const char*>(s.Pointer()), static_cast<qsizetype>(s.BufferSize()));
}

// Everything a failed command must leave as it was.
struct Snapshot {
    QByteArray Pixels;
    int32_t Width, Height;
    uint32_t Format;
    QByteArray Palette;
    QString FileName;
    int32_t RawImageFormat;
    CSelection* SelectionObject;
    QByteArray Mask;
    bool WholeSelection;
    int32_t ImagePos, SelectionPos, Pos, Count;
    std::vector<const void*> Records;
    std::vector<int32_t> Kinds;
    bool Changed;

    explicit Snapshot(const Document& d) {
        const CImage& i = *d.Image();
        const History& h = d.GetHistory();
        Pixels = Bytes(i);
        Width = i.Width();
        Height = i.Height();
        Format = i.PixelFormat;
        Palette = QByteArray(reinterpret_cast<const char*>(&i.Palette()), sizeof(PaletteData));
        FileName = i.FileName;
        RawImageFormat = i.RawImageFormat;
        SelectionObject = d.Selection();
        Mask = MaskBytes(*d.Selection());
        WholeSelection = d.Selection()->UseDefaultSetting();
        ImagePos = h.HistoryImagePos;
        SelectionPos = h.HistorySelectionPos;
        Pos = h.HistoryPos;
        Count = h.HistoryCount;
        for (const auto& r : h.HistoryImages)
            Records.push_back(r.get());
        for (const auto& r : h.HistorySelections)
            Records.push_back(r.get());
        for (int32_t k = 1; k <= h.HistoryCount; ++k)
            Kinds.push_back(h.HistoryKind(k));
        Changed = d.ImageChanged;
    }
    void ExpectSame(const Snapshot& o) const {
        EXPECT_EQ(Pixels, o.Pixels);
        EXPECT_EQ(Width, o.Width);
        EXPECT_EQ(Height, o.Height);
        EXPECT_EQ(Format, o.Format);
        EXPECT_EQ(Palette, o.Palette);
        EXPECT_EQ(FileName, o.FileName);
        EXPECT_EQ(RawImageFormat, o.RawImageFormat);
        EXPECT_EQ(SelectionObject, o.SelectionObject);
        EXPECT_EQ(Mask, o.Mask);
        EXPECT_EQ(WholeSelection, o.WholeSelection);
        EXPECT_EQ(ImagePos, o.ImagePos);
        EXPECT_EQ(SelectionPos, o.SelectionPos);
        EXPECT_EQ(Pos, o.Pos);
        EXPECT_EQ(Count, o.Count);
        EXPECT_EQ(Records, o.Records);
        EXPECT_EQ(Kinds, o.Kinds);
        EXPECT_EQ(Changed, o.Changed);
    }
};

struct Recorder : IDocumentListener {
    int Started = 0, Ended = 0, Finished = 0, RolledBack = 0;
    void OperationStarted() override { ++Started; }
    void OperationEnded() override { ++Ended; }
    void CommandFinished(const QString&, int, const QString&, int64_t) override { ++Finished; }
    void CommandRolledBack() override { ++RolledBack; }
};

// Changes every other row of the selected part, then runs out of memory: the
// frame closes as the exception passes.
bool FailInsideFrame(CImage& image) {
    auto frame = ProcessingFrame::Begin(image, QStringLiteral("失败"));
    if (!frame) return false;
    for (const DealRect& r : frame.Rects())
        for (int32_t y = r.Top; y <= r.Bottom; y += 2)
            std::memset(image.Row(y) + 3 * r.Left, 0x5A, static_cast<size_t>(3 * (r.Right - r.Left + 1)));
    throw std::bad_alloc();
}

// A new size and mode, finished as a step of its own: the selection is
// remade and the step written before the failure comes.
bool HalveToGrey(CImage& image) {
    image.RaiseProgressStart(image.RestrainProgress, QStringLiteral("缩小"), ProgressPixels);
    auto old = image.CloneImage();
    image.CreateNewImage(old->Width() / 2, old->Height() / 2, 8);
    for (int y = 0; y < image.Height(); ++y)
        for (int x = 0; x < image.Width(); ++x)
            image.Row(y)[x] = old->Row(2 * y)[6 * x + 1];
    image.RaiseProgressEnd(image.RestrainProgress, QStringLiteral("缩小"), ProgressSize);
    return true;
}

std::unique_ptr<Document> MakeDocument(int w = 24, int h = 16, unsigned seed = 5) {
    auto d = std::make_unique<Document>();
    d->Attach(vmtest::RandomImage(w, h, 24, seed));
    d->GetHistory().MaxStepOverride = 3;
    return d;
}

} // namespace

TEST(Document, RunsACatalogueOperationAndUndoesItWithoutAWindow) {
    auto d = MakeDocument(40, 30);
    const Operation* blur = FindOperation(QStringLiteral("GuassBlur"));
    ASSERT_NE(blur, nullptr);
    const QByteArray before = Bytes(*d->Image());
    Params p;
    p.Set(QStringLiteral("Radius"), 3);
    ASSERT_TRUE(d->Run([&](CImage& image) { return blur->Run(image, blur->WithDefaults(p)); }));
    const QByteArray after = Bytes(*d->Image());
    ASSERT_NE(after, before);
    EXPECT_TRUE(d->ImageChanged);
    EXPECT_EQ(d->GetHistory().HistoryPos, 1);
    EXPECT_EQ(d->Undo(), HistoryStepPixels);
    EXPECT_EQ(Bytes(*d->Image()), before);
    EXPECT_EQ(d->Redo(), HistoryStepPixels);
    EXPECT_EQ(Bytes(*d->Image()), after);
    EXPECT_EQ(d->Redo(), 0);

    // A command that refuses writes no step and leaves no base record.
    auto fresh = MakeDocument();
    EXPECT_FALSE(fresh->Run([](CImage&) { return false; }));
    EXPECT_TRUE(fresh->GetHistory().HistoryImages.empty());
    EXPECT_FALSE(fresh->GetUndoState());
}

TEST(Document, ANewSizeStartsWithEverythingSelectedAndUndoBringsBackTheOldSelection) {
    auto d = MakeDocument();
    ASSERT_TRUE(d->Selection()->AddRectangle(2, 2, 10, 8));
    const QByteArray mask = MaskBytes(*d->Selection());
    ASSERT_TRUE(d->Run(HalveToGrey));
    EXPECT_EQ(d->Selection()->Width(), 12);
    EXPECT_TRUE(d->Selection()->UseDefaultSetting());
    EXPECT_EQ(d->Image()->Selection(), d->Selection());
    EXPECT_EQ(d->Undo(), HistoryStepSize);
    EXPECT_EQ(d->Image()->Width(), 24);
    EXPECT_EQ(d->Image()->PixelFormat, PixelFormat24bppRGB);
    EXPECT_EQ(MaskBytes(*d->Selection()), mask);
    // Operations still reach the history through the image put back.
    ASSERT_TRUE(Invert(*d->Image()));
    EXPECT_EQ(d->GetHistory().HistoryPos, 2);
    EXPECT_FALSE(d->GetRedoState());
}

// A partial selection, two pixel steps with one undone (a redo tail) and the
// step limit reached: a failure must neither cut the tail nor forget a step.
TEST(Document, AnAllocationFailureLeavesEverythingAsItWas) {
    auto d = MakeDocument();
    ASSERT_TRUE(d->Selection()->AddRectangle(3, 2, 15, 11));
    ASSERT_TRUE(Invert(*d->Image()));
    ASSERT_TRUE(Desaturate(*d->Image()));
    ASSERT_TRUE(Posterize(*d->Image(), 3));
    ASSERT_EQ(d->Undo(), HistoryStepPixels);
    d->Image()->FileName = QStringLiteral("/tmp/a.bmp");
    d->Image()->RawImageFormat = 1;
    d->GetHistory().MaxStepOverride = 2;
    Recorder recorder;
    d->SetListener(&recorder);
    const Snapshot before(*d);

    // Run: inside the frame, and after a step of a new size and mode was
    // written (the tail cut, the oldest step rotated away, the selection
    // replaced).
    EXPECT_THROW(d->Run(FailInsideFrame), std::bad_alloc);
    Snapshot(*d).ExpectSame(before);
    EXPECT_THROW(d->Run([](CImage& image) {
        HalveToGrey(image);
        throw std::bad_alloc();
    }),
                 std::bad_alloc);
    Snapshot(*d).ExpectSame(before);
    EXPECT_EQ(d->Image()->Selection(), d->Selection());
    EXPECT_FALSE(d->Image()->RestrainProgress);

    // An operation called on the image directly, as a menu command does.
    EXPECT_THROW(FailInsideFrame(*d->Image()), std::bad_alloc);
    Snapshot(*d).ExpectSame(before);

    // A failing command whose frame never closes: Run takes it back.
    EXPECT_THROW(d->Run([](CImage& image) {
        image.RaiseProgressStart(false, QStringLiteral("未完"), ProgressPixels);
        image.Row(0)[0] ^= 0xFF;
        throw std::bad_alloc();
    }),
                 std::bad_alloc);
    Snapshot(*d).ExpectSame(before);
    EXPECT_EQ(recorder.RolledBack, 4);
    EXPECT_EQ(recorder.Finished, 1);
    d->SetListener(nullptr);

    // The document works on as before: redo brings the undone step back.
    const QByteArray afterDesaturate = before.Pixels;
    ASSERT_EQ(d->Redo(), HistoryStepPixels);
    ASSERT_EQ(d->Undo(), HistoryStepPixels);
    EXPECT_EQ(Bytes(*d->Image()), afterDesaturate);
    ASSERT_TRUE(Invert(*d->Image()));
    EXPECT_FALSE(d->GetRedoState());
    EXPECT_EQ(d->Undo(), HistoryStepPixels);
    EXPECT_EQ(Bytes(*d->Image()), afterDesaturate);
}

TEST(Document, TheFirstCommandFailingLeavesAnEmptyHistory) {
    auto d = MakeDocument();
    const Snapshot before(*d);
    EXPECT_THROW(FailInsideFrame(*d->Image()), std::bad_alloc);
    Snapshot(*d).ExpectSame(before);
    EXPECT_TRUE(d->GetHistory().HistoryImages.empty());
    // With the history off (a dialog's preview) Run still puts the pixels back.
    d->SetNeedWriteToHistory(false);
    EXPECT_THROW(d->Run(FailInsideFrame), std::bad_alloc);
    Snapshot(*d).ExpectSame(before);
}
