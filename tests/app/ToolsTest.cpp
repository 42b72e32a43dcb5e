// The tools as a user drives them with the mouse: the mask each selection
// stroke leaves, moving a selection, the picker's averaging, the paint bucket
// and the zoom and view tools; then the tool box and option bar of the main
// window and the settings they keep.
#include "document/Tools.h"
#include "app/AppTestSupport.h"
#include "app/FrmMain.h"
#include "app/OptionBar.h"
#include "app/ToolBox.h"
#include "canvas/Canvas.h"
#include "core/AppSettings.h"
#include "core/BlendModes.h"
#include "core/MessageBox.h"
#include "core/Numeric.h"
#include "core/SettingsStore.h"
#include "support/TestSupport.h"

#include <QComboBox>
#include <QLabel>
#include <QMouseEvent>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using namespace vm;
using vmtest::Bytes;
using vmtest::MaskBytes;

namespace {

// The pixels a mask is to hold fully; all others are to be off.
using Region = std::function<bool(int, int)>;

Region Rect(int left, int top, int right, int bottom) {
    return [=](int x, int y) { return x >= left && x < right && y >= top && y < bottom; };
}
Region operator|(Region a, Region b) {
    return [=](int x, int y) { return a(x, y) || b(x, y); };
}
Region operator-(Region a, Region b) {
    return [=](int x, int y) { return a(x, y) && !b(x, y); };
}

class ToolsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        saved_ = Globals();
        Globals() = AppSettings();
        // Exact masks: no feathering, hard edges.
        AppSettings& s = Globals();
        s.RectFeatherRadius = s.EllicptFeatherRadius = s.PolyFeatherRadius = s.LassoFeatherRadius =
            s.MagicWandFeatherRadius = 0;
        s.EllicptAntiAlias = s.PolyAntiAlias = s.LassoAntiAlias = s.MagicWandAntiAlias = false;
        Canvas::SetBucketPattern(QImage()); // a main window of another test may have loaded one
        canvas_ = vmtest::MakeCanvas(500, 500);
    }
    void TearDown() override {
        canvas_.reset();
        Globals() = saved_;
        Canvas::SetWorkingMode(ToolRectangle);
        Canvas::SetBucketPattern(QImage());
    }

    void Load(const QImage& picture) { ASSERT_TRUE(canvas_->LoadPictureFormStdPicture(picture)); }
    // Pictures of depths that the toolkit's pictures do not carry come by file.
    void Load(CImage& image) {
        const QString file = vmtest::TempDir() + QStringLiteral("/tool%1.bmp").arg(++files_);
        ASSERT_TRUE(image.SavePictureToFile(file, RawBmp, SaveOptions()));
        ASSERT_TRUE(canvas_->LoadPictureFromFile(file));
        ASSERT_EQ(canvas_->Image()->PixelFormat, image.PixelFormat);
    }
    void LoadSolid(int w = 100, int h = 100) { Load(vmtest::Solid(w, h, QColor(100, 150, 200))); }
    void Use(int32_t tool) { Canvas::SetWorkingMode(tool); }
    CSelection& Sel() { return *canvas_->Selection(); }
    int Steps() const { return canvas_->GetHistory().HistoryPos; }

    ::testing::AssertionResult MaskIs(const Region& in) {
        long long wrong = 0;
        QString first;
        for (int y = 0; y < Sel().Height(); ++y)
            for (int x = 0; x < Sel().Width(); ++x) {
                const int want = in(x, y) ? 255 : 0, got = Sel().Row(y)[x];
                if (want != got && wrong++ == 0)
                    first = QStringLiteral("(%1, %2) is %3, not %4").arg(x).arg(y).arg(got).arg(want);
            }
        if (wrong == 0) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << wrong << " pixels differ; " << first.toStdString();
    }

    // Where an image position shows in the view.
    QPointF At(QPointF image) const {
        return QPointF(canvas_->ShowLeft() + image.x() * canvas_->ZoomFactor() - canvas_->HoriScrollValue(),
                       canvas_->ShowTop() + image.y() * canvas_->ZoomFactor() - canvas_->VertScrollValue());
    }
    void SendAtView(QEvent::Type type, QPointF v, Qt::MouseButton button, Qt::MouseButtons held,
                    Qt::KeyboardModifiers keys = Qt::NoModifier) {
        QMouseEvent e(type, v, v, button, held, keys);
        canvas_->ViewMouse(&e);
    }
    void Press(QPointF p, Qt::KeyboardModifiers keys = Qt::NoModifier) {
        SendAtView(QEvent::MouseButtonPress, At(p), Qt::LeftButton, Qt::LeftButton, keys);
    }
    void MoveTo(QPointF p, Qt::KeyboardModifiers keys = Qt::NoModifier,
                Qt::MouseButtons held = Qt::LeftButton) {
        SendAtView(QEvent::MouseMove, At(p), Qt::NoButton, held, keys);
    }
    void Release(QPointF p, Qt::KeyboardModifiers keys = Qt::NoModifier) {
        SendAtView(QEvent::MouseButtonRelease, At(p), Qt::LeftButton, Qt::NoButton, keys);
    }
    void Click(QPointF p, Qt::KeyboardModifiers keys = Qt::NoModifier) {
        Press(p, keys);
        Release(p, keys);
    }
    void Drag(QPointF from, QPointF to, Qt::KeyboardModifiers keys = Qt::NoModifier) {
        Press(from, keys);
        MoveTo((from + to) / 2, keys);
        MoveTo(to, keys);
        Release(to, keys);
    }

    AppSettings saved_;
    std::unique_ptr<Canvas> canvas_;
    MessageRecorder recorder_;
    int files_ = 0;
};

} // namespace

// ------------------------------------------------------------------ selection strokes

TEST_F(ToolsTest, RectangleStrokesCombineByTheirKeysOneHistoryStepEach) {
    LoadSolid();
    Use(ToolRectangle);
    Drag({40, 50}, {10, 20});
    EXPECT_TRUE(MaskIs(Rect(10, 20, 40, 50)));
    EXPECT_EQ(Steps(), 1);
    ASSERT_TRUE(canvas_->Undo());
    EXPECT_TRUE(Sel().UseDefaultSetting());

    // Shift squares a new shape; with a selection there it adds, unsquared.
    Drag({10, 10}, {30, 50}, Qt::ShiftModifier);
    EXPECT_TRUE(MaskIs(Rect(10, 10, 50, 50)));
    Drag({60, 60}, {70, 90}, Qt::ShiftModifier);
    EXPECT_TRUE(MaskIs(Rect(10, 10, 50, 50) | Rect(60, 60, 70, 90)));
    // Alt subtracts, Shift with Alt intersects; the tool's own mode stays.
    Drag({30, 30}, {60, 60}, Qt::AltModifier);
    EXPECT_TRUE(MaskIs((Rect(10, 10, 50, 50) | Rect(60, 60, 70, 90)) - Rect(30, 30, 60, 60)));
    Drag({0, 0}, {40, 20}, Qt::ShiftModifier | Qt::AltModifier);
    EXPECT_TRUE(MaskIs(Rect(10, 10, 40, 20)));
    EXPECT_EQ(Globals().RectCombineMode, 0);
    EXPECT_EQ(Steps(), 4);

    // A box wholly beside the picture is a click: the selection goes, with
    // no warning about an empty one.
    Drag({-40, 10}, {-5, 30});
    EXPECT_TRUE(Sel().UseDefaultSetting());
    EXPECT_TRUE(recorder_.Requests.isEmpty());

    // The tool's feather is used: the box's edge is soft afterwards.
    Globals().RectFeatherRadius = 4;
    Drag({10, 20}, {40, 50});
    EXPECT_EQ(Sel().Row(35)[25], 255);
    EXPECT_GT(Sel().Row(35)[9], 0);
    EXPECT_LT(Sel().Row(35)[10], 255);
    Globals().RectFeatherRadius = 0;

    // The style follows the settings when the tool is chosen: a fixed size
    // hangs from the click, a fixed ratio follows the axis asking for more.
    Globals().RectStyle = 2;
    Globals().FixedRectWidth = 16;
    Globals().FixedRectHeight = 8;
    Use(ToolRectangle);
    Click({70, 70});
    EXPECT_TRUE(MaskIs(Rect(70, 70, 86, 78)));
    Globals().RectStyle = 1;
    Globals().FixedRatioRectWidth = 2;
    Globals().FixedRatioRectHeight = 1;
    Use(ToolRectangle);
    Drag({10, 10}, {30, 40});
    EXPECT_TRUE(MaskIs(Rect(10, 10, 70, 40)));
}

TEST_F(ToolsTest, EllipseDragFollowsTheBoxAndItsSmoothing) {
    LoadSolid();
    Use(ToolEllipse);
    Drag({10, 10}, {50, 30});
    CSelection expected;
    expected.CreateNewSelection(100, 100);
    expected.SetAntiAlias(false);
    expected.AddEllipse(10, 10, 50, 30);
    EXPECT_EQ(MaskBytes(Sel()), MaskBytes(expected));
    EXPECT_EQ(Sel().Row(20)[30], 255);

    Globals().EllicptAntiAlias = true;
    Drag({10, 10}, {50, 30});
    const QByteArray mask = MaskBytes(Sel());
    EXPECT_TRUE(std::any_of(mask.begin(), mask.end(), [](char v) { return v != 0 && v != char(255); }));
}

TEST_F(ToolsTest, TheRubberBandShowsOnlyWhileDragging) {
    LoadSolid();
    Use(ToolRectangle);
    const QImage before = canvas_->Buffer().copy();
    Press({10, 20});
    MoveTo({40, 50});
    const QImage during = canvas_->Buffer().copy();
    // Every changed pixel lies on the box's outline.
    const QRectF box(At({10, 20}), At({40, 50}));
    auto near = [](double a, double b) { return std::abs(a - b) <= 1; };
    int changed = 0;
    for (int y = 0; y < during.height(); ++y)
        for (int x = 0; x < during.width(); ++x) {
            if (during.pixel(x, y) == before.pixel(x, y)) continue;
            ++changed;
            const bool onEdge = (near(x, box.left()) || near(x, box.right()) || near(y, box.top()) ||
                                 near(y, box.bottom())) &&
                                box.adjusted(-1, -1, 1, 1).contains(x, y);
            ASSERT_TRUE(onEdge) << x << "," << y;
        }
    EXPECT_GT(changed, 100);
    EXPECT_TRUE(Sel().UseDefaultSetting());
    Release({40, 50});
    EXPECT_FALSE(Sel().UseDefaultSetting());
}

TEST_F(ToolsTest, PolygonByClicksClosedByDoubleClickOrOnTheStartAndLassoByItsPath) {
    LoadSolid();
    Use(ToolPolygon);
    Click({10, 10});
    Click({60, 10});
    Click({60, 40});
    EXPECT_TRUE(canvas_->IsPolygonOpen());
    EXPECT_TRUE(Sel().UseDefaultSetting());
    Click({10, 40});
    SendAtView(QEvent::MouseButtonDblClick, At({10, 40}), Qt::LeftButton, Qt::LeftButton);
    Release({10, 40});
    EXPECT_FALSE(canvas_->IsPolygonOpen());
    EXPECT_TRUE(MaskIs(Rect(10, 10, 60, 40)));

    // A triangle closed by a click on its first corner.
    for (QPointF p : {QPointF(20, 20), QPointF(80, 20), QPointF(80, 80), QPointF(20.5, 20.5)})
        Click(p);
    EXPECT_FALSE(canvas_->IsPolygonOpen());
    EXPECT_EQ(Sel().Row(30)[70], 255);
    EXPECT_EQ(Sel().Row(70)[30], 0);
    EXPECT_EQ(Sel().Row(15)[15], 0); // the first polygon is gone: mode new

    // Escape drops a polygon being set and leaves the selection alone.
    const QByteArray kept = MaskBytes(Sel());
    Click({5, 5});
    Click({50, 5});
    QTest::keyClick(canvas_.get(), Qt::Key_Escape);
    EXPECT_FALSE(canvas_->IsPolygonOpen());
    EXPECT_EQ(MaskBytes(Sel()), kept);

    // The lasso encloses its path; one that encloses nothing, in the new
    // mode, lets go of the selection.
    Use(ToolLasso);
    Press({10, 10});
    MoveTo({60, 10});
    MoveTo({60, 40});
    MoveTo({10, 40});
    Release({10, 40});
    EXPECT_TRUE(MaskIs(Rect(10, 10, 60, 40)));
    Drag({80, 80}, {81, 80});
    EXPECT_TRUE(Sel().UseDefaultSetting());
}

TEST_F(ToolsTest, SingleRowColumnAndBoth) {
    LoadSolid(100, 60);
    Use(ToolRowAndCol); // the row is the first shape
    Click({30, 40});
    EXPECT_TRUE(MaskIs([](int, int y) { return y == 40; }));
    Globals().RowColShape = 2;
    Use(ToolRowAndCol);
    Click({30, 40});
    EXPECT_TRUE(MaskIs([](int x, int) { return x == 30; }));
    Globals().RowColShape = 3;
    Use(ToolRowAndCol);
    Click({7, 9}, Qt::ShiftModifier); // added to the column
    EXPECT_TRUE(MaskIs([](int x, int y) { return x == 30 || x == 7 || y == 9; }));
    // Outside the picture nothing happens.
    const QByteArray kept = MaskBytes(Sel());
    Click({-5, 70});
    EXPECT_EQ(MaskBytes(Sel()), kept);
}

TEST_F(ToolsTest, MagicWandPicksTheSimilarRegionAlsoInsideTheSelection) {
    // Two red squares on blue, apart.
    QImage q = vmtest::Solid(100, 100, QColor(0, 0, 255));
    for (int y = 10; y < 30; ++y)
        for (int x = 10; x < 30; ++x) {
            q.setPixelColor(x, y, QColor(250, 10, 10));
            q.setPixelColor(x + 50, y + 50, QColor(240, 20, 0));
        }
    Load(q);
    Use(ToolMagicWand);
    Click({15, 15});
    EXPECT_TRUE(MaskIs(Rect(10, 10, 30, 30)));
    Globals().MagicWandContious = false;
    Click({15, 15});
    EXPECT_TRUE(MaskIs(Rect(10, 10, 30, 30) | Rect(60, 60, 80, 80)));
    Globals().MagicWandTorlance = 5; // the second square is 20 away
    // Clicked inside a selection the wand selects, it does not move it.
    Use(ToolRectangle);
    Drag({5, 5}, {40, 40});
    Use(ToolMagicWand);
    Click({15, 15});
    EXPECT_TRUE(MaskIs(Rect(10, 10, 30, 30)));
}

TEST_F(ToolsTest, DraggingInsideTheSelectionMovesIt) {
    LoadSolid();
    Use(ToolRectangle);
    Drag({10, 10}, {30, 30});
    MoveTo({20, 20}, Qt::NoModifier, Qt::NoButton);
    EXPECT_EQ(canvas_->ToolCursorName(Qt::NoModifier), QStringLiteral("MoveSelection"));
    Press({20, 20});
    MoveTo({30, 22});
    EXPECT_EQ(Sel().Left, 10);
    EXPECT_EQ(Sel().Top, 2);
    EXPECT_EQ(canvas_->ToolCursorName(Qt::NoModifier), QStringLiteral("MoveSelectionDown"));
    MoveTo({35, 25});
    Release({35, 25});
    EXPECT_EQ(Sel().Left, 0);
    EXPECT_EQ(Sel().Top, 0);
    EXPECT_TRUE(MaskIs(Rect(25, 15, 45, 35)));
    EXPECT_EQ(Steps(), 2);
    ASSERT_TRUE(canvas_->Undo());
    EXPECT_TRUE(MaskIs(Rect(10, 10, 30, 30)));

    // Pressed inside with Alt, the drag subtracts instead of moving.
    Drag({20, 20}, {40, 40}, Qt::AltModifier);
    EXPECT_TRUE(MaskIs(Rect(10, 10, 30, 30) - Rect(20, 20, 40, 40)));
    // A click inside without moving lets go of the selection.
    Click({12, 12});
    EXPECT_TRUE(Sel().UseDefaultSetting());
}

// ------------------------------------------------------------------ colour tools

TEST_F(ToolsTest, PickerAveragesWhatLiesInsideThePicture) {
    QImage q = vmtest::Solid(100, 100, QColor(200, 200, 200));
    q.setPixelColor(0, 0, QColor(10, 20, 30));
    q.setPixelColor(1, 0, QColor(20, 40, 60));
    q.setPixelColor(0, 1, QColor(30, 60, 90));
    q.setPixelColor(1, 1, QColor(41, 81, 121));
    Load(q);
    Use(ToolPickColor);
    int32_t picked = -1, back = -1;
    QObject::connect(canvas_.get(), &Canvas::ForeColorPicked, [&](int32_t c) { picked = c; });
    QObject::connect(canvas_.get(), &Canvas::BackColorPicked, [&](int32_t c) { back = c; });

    Globals().SampleSize = 1; // 3 x 3 at the corner: four pixels
    Click({0.5, 0.5});
    EXPECT_EQ(picked, MakeColorRef(25, 50, 75));
    EXPECT_EQ(Globals().SystemForeColor, picked);
    Globals().SampleSize = 2; // 5 x 5 at the corner: nine pixels
    Click({0.5, 0.5});
    EXPECT_EQ(picked, MakeColorRef((101 + 5 * 200) / 9, (201 + 5 * 200) / 9, (301 + 5 * 200) / 9));
    Globals().SampleSize = 0;
    Click({1.5, 1.5}, Qt::AltModifier);
    EXPECT_EQ(back, MakeColorRef(41, 81, 121));
    EXPECT_EQ(Globals().SystemBackColor, back);
    EXPECT_EQ(Globals().SystemForeColor, picked);
    EXPECT_FALSE(canvas_->GetUndoState());

    // A bitmap's pixels are read through its palette.
    auto bitmap = vmtest::RandomImage(16, 8, 1, 11);
    Load(*bitmap);
    const QImage shown = vmtest::ToRgba(*bitmap);
    Globals().SampleSize = 1;
    for (QPoint p : {QPoint(3, 3), QPoint(15, 0), QPoint(9, 7)}) {
        Click(QPointF(p) + QPointF(0.5, 0.5));
        int r = 0, g = 0, b = 0, n = 0;
        for (int y = p.y() - 1; y <= p.y() + 1; ++y)
            for (int x = p.x() - 1; x <= p.x() + 1; ++x)
                if (shown.rect().contains(x, y)) {
                    const QColor c = shown.pixelColor(x, y);
                    r += c.red(), g += c.green(), b += c.blue(), ++n;
                }
        EXPECT_EQ(Globals().SystemForeColor, MakeColorRef(r / n, g / n, b / n)) << p.x() << "," << p.y();
    }
}

TEST_F(ToolsTest, BucketRefusesABitmapAndChangesNothing) {
    Load(*vmtest::RandomImage(40, 40, 1, 4));
    Use(ToolRectangle);
    Drag({5, 5}, {20, 20});
    const QByteArray pixels = Bytes(*canvas_->Image());
    const QByteArray mask = MaskBytes(Sel());
    const int steps = Steps();
    Use(ToolPaintBucket);
    EXPECT_EQ(canvas_->ToolCursorName(Qt::NoModifier), QStringLiteral("PAINTBUCKET"));
    Click({10, 10});
    ASSERT_EQ(recorder_.Requests.size(), 1);
    EXPECT_EQ(recorder_.LastText(),
              QStringLiteral("不能使用油漆桶工具,因为他不用于位图图像(将图像转换为灰度模式再编辑)."));
    EXPECT_EQ(Bytes(*canvas_->Image()), pixels);
    EXPECT_EQ(MaskBytes(Sel()), mask);
    EXPECT_EQ(Steps(), steps);
}

TEST_F(ToolsTest, BucketFillsWithinTheSelectionAndKeepsIt) {
    LoadSolid(60, 60);
    Use(ToolRectangle);
    Drag({10, 10}, {30, 30});
    const QByteArray mask = MaskBytes(Sel());
    Globals().SystemForeColor = MakeColorRef(255, 0, 0);
    Use(ToolPaintBucket);
    auto colourAt = [&](int x, int y) {
        int32_t r = 0, g = 0, b = 0, a = 0;
        canvas_->Image()->GetPixelColor(x, y, r, g, b, a);
        return QColor(r, g, b);
    };
    // Outside the selection a click does nothing.
    Click({45, 45});
    EXPECT_FALSE(canvas_->ImageChanged);
    Click({20, 20});
    EXPECT_TRUE(canvas_->ImageChanged);
    EXPECT_EQ(colourAt(20, 20), QColor(255, 0, 0));
    EXPECT_EQ(colourAt(40, 20), QColor(100, 150, 200));
    EXPECT_EQ(MaskBytes(Sel()), mask);
    EXPECT_FALSE(Sel().UseDefaultSetting());
    EXPECT_EQ(canvas_->Image()->Selection(), &Sel());
    ASSERT_TRUE(canvas_->Undo());
    EXPECT_EQ(colourAt(20, 20), QColor(100, 150, 200));

    // A pattern source without a pattern asks for one and fills nothing.
    Globals().PaintBucketFillContent = 1;
    const QByteArray pixels = Bytes(*canvas_->Image());
    Click({20, 20});
    EXPECT_EQ(recorder_.Requests.size(), 1);
    EXPECT_EQ(Bytes(*canvas_->Image()), pixels);
}

TEST_F(ToolsTest, GradientDragIsRefusedOnIndexedPictures) {
    LoadSolid();
    Use(ToolGradient);
    Click({10, 10}); // no drag, no fill
    EXPECT_TRUE(recorder_.Requests.isEmpty());
    QImage q(16, 16, QImage::Format_Indexed8);
    q.setColorTable({qRgb(0, 0, 0), qRgb(9, 9, 9)});
    q.fill(1);
    Load(q);
    Drag({1, 1}, {10, 10});
    ASSERT_EQ(recorder_.Requests.size(), 1);
    EXPECT_EQ(recorder_.LastText(),
              QStringLiteral("不能使用渐变工具,因为他不用于索引颜色图像(将图像转换为RGB颜色模式再编辑)."));
}

// ------------------------------------------------------------------ view tools

TEST_F(ToolsTest, ZoomClicksStepAltTurnsThemRoundAndABoxFillsTheView) {
    LoadSolid();
    Use(ToolZoom);
    Click({50, 50});
    EXPECT_EQ(canvas_->ZoomFactor(), 2.0);
    Click({50, 50}, Qt::AltModifier);
    EXPECT_EQ(canvas_->ZoomFactor(), 1.0);
    Globals().ZoomMode = 1;
    Click({50, 50});
    EXPECT_EQ(canvas_->ZoomFactor(), 0.67);
    Globals().ZoomMode = 0;
    ASSERT_TRUE(canvas_->SetZoomFactor(2, 1));

    // 50 x 25 pixels into a view of about 480 x 480, around the box's centre.
    Drag({20, 20}, {70, 45});
    EXPECT_GT(canvas_->ZoomFactor(), 9.0);
    EXPECT_LE(canvas_->ZoomFactor(), 10.0);
    EXPECT_LE(50 * canvas_->ZoomFactor(), canvas_->BufferWidth() + 0.01);
    const QPoint centre =
        canvas_->ViewToImagePoint(QPoint(canvas_->BufferWidth() / 2, canvas_->BufferHeight() / 2));
    EXPECT_NEAR(centre.x(), 45, 1);
    EXPECT_NEAR(centre.y(), 32, 1);
    // A box in zoom-out mode is a click.
    Globals().ZoomMode = 1;
    const double before = canvas_->ZoomFactor();
    Drag({40, 30}, {50, 35});
    EXPECT_LT(canvas_->ZoomFactor(), before);
    // At the top of the table the cursor says no more.
    Globals().ZoomMode = 0;
    ASSERT_TRUE(canvas_->SetZoomFactor(2, 20));
    EXPECT_EQ(canvas_->ToolCursorName(Qt::NoModifier), QStringLiteral("ZoomDisable"));
}

TEST_F(ToolsTest, MoveViewScrollsByThePointersPath) {
    LoadSolid();
    ASSERT_TRUE(canvas_->SetZoomFactor(2, 8));
    canvas_->SetHoriVertPos(100, 100);
    Use(ToolMoveImage);
    const QPointF from(250, 250), to(210, 225);
    SendAtView(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
    SendAtView(QEvent::MouseMove, (from + to) / 2, Qt::NoButton, Qt::LeftButton);
    SendAtView(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton);
    SendAtView(QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
    EXPECT_DOUBLE_EQ(canvas_->HoriScrollValue(), 140);
    EXPECT_DOUBLE_EQ(canvas_->VertScrollValue(), 125);
    // The middle button does the same with any tool.
    Use(ToolRectangle);
    SendAtView(QEvent::MouseButtonPress, to, Qt::MiddleButton, Qt::MiddleButton);
    SendAtView(QEvent::MouseMove, from, Qt::NoButton, Qt::MiddleButton);
    SendAtView(QEvent::MouseButtonRelease, from, Qt::MiddleButton, Qt::NoButton);
    EXPECT_DOUBLE_EQ(canvas_->HoriScrollValue(), 100);
    EXPECT_DOUBLE_EQ(canvas_->VertScrollValue(), 100);
    EXPECT_TRUE(Sel().UseDefaultSetting());
}

// ------------------------------------------------------------------ tool box and option bar

namespace {

class ToolWindowTest : public ::testing::Test {
  protected:
    void SetUp() override {
        saved_ = Globals();
        Globals() = AppSettings();
    }
    void TearDown() override {
        Globals() = saved_;
        Canvas::SetWorkingMode(ToolRectangle);
        // No later window is to find a pattern file of this one.
        SaveSetting(SettingsRoot, QStringLiteral("ToolbarSetting"), QStringLiteral("PaintBucketPatternFile"),
                    QString());
        Canvas::SetBucketPattern(QImage());
    }
    // A control of a tool's page in the option bar.
    template <typename T> static T* Option(const FrmMain& w, int32_t tool, const char* name) {
        T* control = w.ToolOptions()->Page(tool)->findChild<T*>(QString::fromLatin1(name));
        EXPECT_NE(control, nullptr) << name;
        return control;
    }
    AppSettings saved_;
    MessageRecorder recorder_;
};

} // namespace

TEST_F(ToolWindowTest, TheLastToolComesBackWithItsSlotOptionsAndHint) {
    Globals().LastSelectedTool = ToolLasso;
    FrmMain w;
    EXPECT_EQ(Canvas::WorkingMode(), ToolLasso);
    EXPECT_EQ(Canvas::SelectionStyle(), StyleLasso);
    EXPECT_EQ(w.Tools()->SlotTool(ToolPolygon), ToolLasso);
    EXPECT_EQ(w.Tools()->SlotTool(ToolRectangle), ToolRectangle);
    EXPECT_EQ(w.ToolOptions()->Tool(), ToolLasso);
    auto* hint = w.findChild<QLabel*>(QStringLiteral("ToolHint"));
    ASSERT_NE(hint, nullptr);
    EXPECT_EQ(hint->text(),
              QStringLiteral("绘制任意选区或移动选区外框。要用附加选项，使用Shift、Alt和Ctrl键。"));

    w.Tools()->ToolButton_Click(ToolEllipse);
    EXPECT_EQ(Globals().LastSelectedTool, ToolEllipse);
    EXPECT_EQ(Canvas::SelectionStyle(), StyleEllipseFree);
    EXPECT_EQ(w.Tools()->SlotTool(ToolRectangle), ToolEllipse);
    EXPECT_TRUE(w.Tools()->SlotButton(ToolRectangle)->isChecked());
    EXPECT_EQ(w.ToolOptions()->Tool(), ToolEllipse);
    // Indices that are no tool change nothing.
    for (int bad : {-1, 9, 10, 13})
        w.Tools()->ToolButton_Click(bad);
    EXPECT_EQ(Canvas::WorkingMode(), ToolEllipse);

    // Letters on the canvas choose tools; with Ctrl they are no tool's.
    vmtest::Paste(w, vmtest::Solid(24, 16, Qt::white));
    QTest::keyClick(w.ActiveCanvas(), Qt::Key_W);
    EXPECT_EQ(Canvas::WorkingMode(), ToolMagicWand);
    QTest::keyClick(w.ActiveCanvas(), Qt::Key_Q);
    EXPECT_EQ(Canvas::WorkingMode(), ToolEllipse);
    EXPECT_EQ(w.Tools()->SlotTool(ToolRectangle), ToolEllipse);
    QTest::keyClick(w.ActiveCanvas(), Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(Canvas::WorkingMode(), ToolEllipse);

    // A stored index that is no tool starts with the first one.
    Globals().LastSelectedTool = 10;
    FrmMain other;
    EXPECT_EQ(Canvas::WorkingMode(), ToolRectangle);
}

TEST_F(ToolWindowTest, BlendListsFollowTheDocumentsFormat) {
    FrmMain w;
    auto* blend = Option<QComboBox>(w, ToolPaintBucket, "PaintBucketBlendMode");
    ASSERT_NE(blend, nullptr);
    vmtest::Paste(w, vmtest::Solid(8, 8, Qt::white));
    EXPECT_EQ(blend->count(), BlendModeCount);
    Globals().PaintBucketBlendMode = BlendHue;
    // A grey picture: the whole-colour modes leave the list, the setting stays
    // a mode number.
    const QString file = vmtest::TempDir() + QStringLiteral("/blend-grey.png");
    ASSERT_TRUE(vmtest::Grey(8, 8)->SavePictureToFile(file, RawPng, SaveOptions()));
    ASSERT_TRUE(w.OpenDocument(file));
    EXPECT_EQ(blend->count(), static_cast<int>(GreyBlendModes().size()));
    EXPECT_EQ(blend->findText(BlendModeNames().at(BlendHue)), -1);
    EXPECT_EQ(Globals().PaintBucketBlendMode, BlendHue);
    blend->setCurrentIndex(blend->findText(BlendModeNames().at(BlendTexture)));
    EXPECT_EQ(Globals().PaintBucketBlendMode, BlendTexture);
}

TEST_F(ToolWindowTest, OptionsWriteTheSettingsAtOnceAndSurviveARestart) {
    FrmMain w;
    // The option bar works with a document open.
    vmtest::Paste(w, vmtest::Solid(8, 8, Qt::white));
    ASSERT_TRUE(w.ToolOptions()->isEnabled());
    w.Tools()->ToolButton_Click(ToolRectangle);
    auto* style = Option<QComboBox>(w, ToolRectangle, "RectStyle");
    auto* width = Option<QSpinBox>(w, ToolRectangle, "RectWidth");
    ASSERT_TRUE(style && width);
    style->setCurrentIndex(2);
    EXPECT_EQ(Globals().RectStyle, 2);
    EXPECT_EQ(Canvas::SelectionStyle(), StyleRectFixedSize);
    EXPECT_TRUE(width->isEnabled());
    EXPECT_EQ(width->value(), 64);
    width->setValue(120);
    EXPECT_EQ(Globals().FixedRectWidth, 120);
    // The combine buttons write the tool's own mode.
    w.Tools()->ToolButton_Click(ToolMagicWand);
    auto* subtract = Option<QToolButton>(w, ToolMagicWand, "MagicWandCombineMode2");
    auto* tolerance = Option<QSpinBox>(w, ToolMagicWand, "MagicWandTorlance");
    ASSERT_TRUE(subtract && tolerance);
    subtract->click();
    EXPECT_EQ(Globals().MagicWandCombineMode, 2);
    tolerance->setValue(77);
    EXPECT_EQ(Globals().MagicWandTorlance, 77);

    SaveSettings(Globals());
    AppSettings next;
    LoadSettings(next);
    // The next window shows the stored values.
    Globals() = next;
    FrmMain again;
    EXPECT_EQ(again.ToolOptions()->Tool(), ToolMagicWand);
    EXPECT_EQ(Option<QSpinBox>(again, ToolMagicWand, "MagicWandTorlance")->value(), 77);
    EXPECT_TRUE(Option<QToolButton>(again, ToolMagicWand, "MagicWandCombineMode2")->isChecked());
}

TEST_F(ToolWindowTest, ThePatternFileIsLoadedAndRemembered) {
    const QString dir = vmtest::TempDir();
    const QString file = dir + QStringLiteral("/tile.bmp");
    ASSERT_TRUE(vmtest::RandomImage(6, 4, 24, 5)->SavePictureToFile(file, RawBmp, SaveOptions()));
    Canvas::SetBucketPattern(QImage());
    {
        FrmMain w;
        w.ToolOptions()->AskPatternFile = [file] { return file; };
        Option<QComboBox>(w, ToolPaintBucket, "PaintBucketFillContent")->setCurrentIndex(1);
        EXPECT_EQ(Globals().PaintBucketFillContent, 1);
        EXPECT_EQ(Canvas::BucketPattern().size(), QSize(6, 4));
        // Something that is no picture is refused and the pattern stays.
        EXPECT_FALSE(w.ToolOptions()->LoadPattern(dir + QStringLiteral("/none.bmp")));
        EXPECT_EQ(recorder_.Requests.size(), 1);
        EXPECT_EQ(Canvas::BucketPattern().size(), QSize(6, 4));
    }
    Canvas::SetBucketPattern(QImage());
    FrmMain next;
    EXPECT_EQ(Canvas::BucketPattern().size(), QSize(6, 4));
    Canvas::SetBucketPattern(QImage());

    // Without a file to choose, the source goes back to the colour.
    Globals().PaintBucketFillContent = 0;
    next.ToolOptions()->AskPatternFile = [] { return QString(); };
    next.ToolOptions()->ShowTool(ToolPaintBucket);
    auto* source = Option<QComboBox>(next, ToolPaintBucket, "PaintBucketFillContent");
    source->setCurrentIndex(1);
    EXPECT_EQ(Globals().PaintBucketFillContent, 0);
    EXPECT_EQ(source->currentIndex(), 0);
}
