// The history's lists, positions and kinds, driven in the order a canvas
// feeds them: the base at the start of the first command, a push at each end.
#include "document/History.h"
#include "adjust/PointOps.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace vm;

namespace {

QByteArray Bytes(const CImage& image) {
    return QByteArray(reinterpret_cast<const char*>(image.Pointer()),
                      static_cast<qsizetype>(image.BlockSize()));
}

// One document: an image, its selection and a history, with the image's
// events passed on as the canvas passes them.
struct Session : IImageListener {
    std::unique_ptr<CImage> image = vmtest::RandomImage(7, 5, 24, 11);
    CSelection selection;
    History history;

    Session() {
        selection.CreateNewSelection(image->Width(), image->Height());
        selection.SetUseDefaultSetting(true);
        image->SetSelection(&selection);
        image->AddListener(this);
        history.MaxStepOverride = 20;
    }
    void ProgressStart(bool restrain, const QString&, int) override {
        if (!restrain) history.RecordImageBase(*image);
    }
    void ProgressEnd(bool restrain, const QString&, int kind, const QString&) override {
        if (!restrain && history.NeedWriteToHistory) history.PushImageStep(*image, selection, kind);
    }
    // A selection change, as the selection's two events deliver it.
    void Select(int l, int t, int r, int b) {
        history.RecordSelectionBase(selection);
        selection.RestrainEvent = true;
        selection.AddRectangle(l, t, r, b);
        selection.RestrainEvent = false;
        image->UpdateSelectionDealRect();
        history.PushSelectionStep(selection);
    }
    // A size step as the canvas completes it: the new selection comes after
    // the step is written, and its record follows.
    void Resize(int w, int h) {
        image->RaiseProgressStart(false, QStringLiteral("缩放"), ProgressPixels);
        image->CreateNewImage(w, h, 24);
        image->RaiseProgressEnd(false, QStringLiteral("缩放"), ProgressSize);
        selection.CreateNewSelection(w, h);
        selection.SetUseDefaultSetting(true);
        image->SetSelection(&selection);
        history.PushSizeSelectionRecord();
    }
};

} // namespace

TEST(History, OneCommandKeepsThePictureBeforeAndAfterIt) {
    Session d;
    EXPECT_FALSE(d.history.GetUndoState());
    EXPECT_FALSE(d.history.GetRedoState());
    const QByteArray before = Bytes(*d.image);
    ASSERT_TRUE(Invert(*d.image));
    const QByteArray after = Bytes(*d.image);
    EXPECT_EQ(d.history.HistoryImages.size(), 2u);
    EXPECT_EQ(d.history.HistoryPos, 1);
    EXPECT_EQ(d.history.HistoryCount, 1);
    EXPECT_EQ(d.history.HistoryKind(1), HistoryStepPixels);

    // Undo of a pixel step copies over the block the document already has.
    const uint8_t* block = d.image->Pointer();
    EXPECT_EQ(d.history.Undo(d.image, d.selection), HistoryStepPixels);
    EXPECT_EQ(d.image->Pointer(), block);
    EXPECT_EQ(Bytes(*d.image), before);
    EXPECT_FALSE(d.history.GetUndoState());
    EXPECT_TRUE(d.history.GetRedoState());
    EXPECT_EQ(d.history.Redo(d.image, d.selection), HistoryStepPixels);
    EXPECT_EQ(Bytes(*d.image), after);
    EXPECT_EQ(d.history.Redo(d.image, d.selection), 0);
}

// A command made of others raises one outer pair of events: see the
// processing frame's test.
TEST(History, PreviewsAndMissingBases) {
    // Preview runs, with writing off, leave no step.
    Session preview;
    preview.history.NeedWriteToHistory = false;
    ASSERT_TRUE(Invert(*preview.image));
    EXPECT_EQ(preview.history.HistoryPos, 0);
    EXPECT_TRUE(preview.history.HistoryImages.empty());
    // A pixel step whose base was never taken undoes nothing.
    preview.history.NeedWriteToHistory = true;
    preview.history.PushImageStep(*preview.image, preview.selection, ProgressPixels);
    ASSERT_EQ(preview.history.HistoryImagePos, 1);
    EXPECT_EQ(preview.history.Undo(preview.image, preview.selection), 0);
    EXPECT_EQ(preview.history.HistoryPos, 1);
}

TEST(History, ANewCommandAfterUndoCutsTheRedoTail) {
    Session d;
    Invert(*d.image);
    Desaturate(*d.image);
    Threshold(*d.image, 100);
    ASSERT_EQ(d.history.HistoryImages.size(), 4u);
    d.history.Undo(d.image, d.selection);
    d.history.Undo(d.image, d.selection);
    const QByteArray afterInvert = Bytes(*d.image);
    EXPECT_TRUE(d.history.GetRedoState());
    Posterize(*d.image, 3);
    EXPECT_FALSE(d.history.GetRedoState());
    EXPECT_EQ(d.history.HistoryCount, 2);
    EXPECT_EQ(d.history.HistoryImages.size(), 3u);
    d.history.Undo(d.image, d.selection);
    EXPECT_EQ(Bytes(*d.image), afterInvert);
}

TEST(History, SelectionStepsAreUndoneBeforeThePixels) {
    Session d;
    Invert(*d.image);
    d.Select(1, 1, 4, 3);
    Desaturate(*d.image);
    ASSERT_EQ(d.history.HistoryPos, 3);
    EXPECT_EQ(d.history.HistoryKind(2), HistoryStepSelection);
    // The base was taken while everything was selected: a record without a mask.
    ASSERT_EQ(d.history.HistorySelections.size(), 2u);
    EXPECT_TRUE(d.history.HistorySelections[0]->UseDefaultSetting());
    EXPECT_EQ(d.history.HistorySelections[0]->Pointer(), nullptr);

    EXPECT_EQ(d.history.Undo(d.image, d.selection), HistoryStepPixels);
    const QByteArray afterInvert = Bytes(*d.image);
    EXPECT_FALSE(d.selection.UseDefaultSetting());
    EXPECT_EQ(d.history.Undo(d.image, d.selection), HistoryStepSelection);
    EXPECT_TRUE(d.selection.UseDefaultSetting());
    EXPECT_EQ(Bytes(*d.image), afterInvert) << "the selection step touched the pixels";
    EXPECT_EQ(d.image->SelectionDealRects().size(), 1u);
    // Redo puts the rectangle back, with the image's rectangles following.
    EXPECT_EQ(d.history.Redo(d.image, d.selection), HistoryStepSelection);
    EXPECT_FALSE(d.selection.UseDefaultSetting());
    EXPECT_EQ(d.selection.Row(2)[2], 255);
    EXPECT_EQ(d.selection.Row(0)[0], 0);
    EXPECT_EQ(d.image->SelectionDealRects().front(), (DealRect{1, 1, 3, 2}));
}

TEST(History, AtTheLimitTheOldestPictureGoes) {
    Session d;
    std::vector<QByteArray> states{Bytes(*d.image)};
    for (int i = 0; i < 21; ++i) {
        Invert(*d.image);
        states.push_back(Bytes(*d.image));
    }
    EXPECT_EQ(d.history.HistoryPos, 20);
    EXPECT_EQ(d.history.HistoryCount, 20);
    EXPECT_EQ(d.history.HistoryImages.size(), 21u);
    EXPECT_EQ(d.history.HistoryImagePos, 21);
    int undone = 0;
    while (d.history.Undo(d.image, d.selection))
        ++undone;
    EXPECT_EQ(undone, 20);
    // The oldest reachable picture is the one after the first command.
    EXPECT_EQ(Bytes(*d.image), states[1]);
    EXPECT_NE(Bytes(*d.image), states[0]);
}

TEST(History, ForgettingASelectionStepDropsItsOldestRecord) {
    Session d;
    d.history.MaxStepOverride = 2;
    d.Select(0, 0, 2, 2);
    d.Select(1, 1, 5, 4);
    ASSERT_EQ(d.history.HistorySelections.size(), 3u);
    Invert(*d.image);
    EXPECT_EQ(d.history.HistoryPos, 2);
    EXPECT_EQ(d.history.HistorySelections.size(), 2u);
    EXPECT_EQ(d.history.HistorySelectionPos, 2);
    EXPECT_EQ(d.history.HistoryKind(1), HistoryStepSelection);
    EXPECT_EQ(d.history.HistoryKind(2), HistoryStepPixels);
    // The remaining selection step goes back to the first rectangle.
    d.history.Undo(d.image, d.selection);
    d.history.Undo(d.image, d.selection);
    EXPECT_EQ(d.selection.Row(1)[1], 255);
    EXPECT_EQ(d.selection.Row(3)[3], 0);
    EXPECT_FALSE(d.history.GetUndoState());
}

TEST(History, SizeAndModeStepsLeaveTheirRecordsWhenForgotten) {
    Session d;
    d.history.MaxStepOverride = 2;
    // A size step, then a mode step, then pixels: each raised as its kind.
    d.Resize(4, 3);
    ASSERT_EQ(d.history.HistoryImages.size(), 2u);
    ASSERT_EQ(d.history.HistorySelections.size(), 2u);

    d.image->RaiseProgressStart(false, QStringLiteral("灰度模式"), 0);
    d.image->RaiseProgressEnd(false, QStringLiteral("灰度模式"), ProgressMode);
    Invert(*d.image);
    // The size step was forgotten, its two records were not.
    EXPECT_EQ(d.history.HistoryPos, 2);
    EXPECT_EQ(d.history.HistoryKind(1), HistoryStepMode);
    EXPECT_EQ(d.history.HistoryImages.size(), 4u);
    EXPECT_EQ(d.history.HistorySelections.size(), 2u);
    EXPECT_EQ(d.history.HistoryImagePos, 4);
    Invert(*d.image);
    // Now the mode step goes; its record stays too.
    EXPECT_EQ(d.history.HistoryKind(1), HistoryStepPixels);
    EXPECT_EQ(d.history.HistoryImages.size(), 5u);
}

TEST(History, SizeStepUndoBringsBackSizeAndSelection) {
    Session d;
    d.Select(1, 0, 6, 4);
    const QByteArray before = Bytes(*d.image);
    d.Resize(3, 2);
    EXPECT_EQ(d.history.HistoryKind(2), HistoryStepSize);

    CImage* resized = d.image.get();
    EXPECT_EQ(d.history.Undo(d.image, d.selection), HistoryStepSize);
    EXPECT_NE(d.image.get(), resized);
    EXPECT_EQ(d.image->Width(), 7);
    EXPECT_EQ(d.image->Height(), 5);
    EXPECT_EQ(Bytes(*d.image), before);
    EXPECT_EQ(d.selection.Width(), 7);
    EXPECT_FALSE(d.selection.UseDefaultSetting());
    EXPECT_EQ(d.selection.Row(2)[2], 255);
    EXPECT_EQ(d.selection.Row(2)[0], 0);
    EXPECT_EQ(d.image->Selection(), &d.selection);
    EXPECT_EQ(d.image->SelectionDealRects().front(), (DealRect{1, 0, 5, 3}));

    EXPECT_EQ(d.history.Redo(d.image, d.selection), HistoryStepSize);
    EXPECT_EQ(d.image->Width(), 3);
    EXPECT_EQ(d.selection.Width(), 3);
    EXPECT_TRUE(d.selection.UseDefaultSetting());
}

TEST(History, PurgeKeepsOnlyThePresent) {
    Session d;
    Invert(*d.image);
    d.Select(0, 0, 3, 3);
    const QByteArray present = Bytes(*d.image);
    d.history.PurgeHistory();
    EXPECT_TRUE(d.history.HistoryImages.empty());
    EXPECT_TRUE(d.history.HistorySelections.empty());
    EXPECT_FALSE(d.history.GetUndoState());
    EXPECT_FALSE(d.history.GetRedoState());
    EXPECT_EQ(Bytes(*d.image), present);
    EXPECT_FALSE(d.selection.UseDefaultSetting());
    // The next command starts a history of its own.
    Invert(*d.image);
    EXPECT_EQ(d.history.HistoryImages.size(), 2u);
    d.history.Undo(d.image, d.selection);
    EXPECT_EQ(Bytes(*d.image), present);
}

TEST(History, APixelRecordOfAnotherShapeReplacesTheImage) {
    Session d;
    Invert(*d.image);
    const QByteArray base = Bytes(*d.history.HistoryImages[0]);
    // Something outside the history changed the block's size under it.
    d.image->CreateNewImage(30, 20, 32);
    d.image->SetSelection(&d.selection);
    EXPECT_EQ(d.history.Undo(d.image, d.selection), HistoryStepPixels);
    EXPECT_EQ(d.image->Width(), 7);
    EXPECT_EQ(Bytes(*d.image), base);
}
