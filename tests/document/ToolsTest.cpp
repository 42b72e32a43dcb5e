// The tool set's arithmetic and its program-wide state, without a window:
// the marquee boxes, the style words the settings give, the combine mode the
// keys choose and the cursors' names.
#include "document/Tools.h"
#include "core/AppSettings.h"
#include "selection/Selection.h"

#include <gtest/gtest.h>

using namespace vm;

TEST(ToolStrokes, MarqueeBoxesStyleWordsAndCombineKeys) {
    // Backwards drags, Shift squaring towards the pointer, a line that is no
    // box, a fixed size below one pixel and a fixed ratio dragged backwards.
    EXPECT_EQ(MarqueeFromDrag({40, 50}, {10, 20}, StyleEllipseFree, 0, 0, false),
              (MarqueeBox{10, 20, 40, 50}));
    EXPECT_EQ(MarqueeFromDrag({50, 50}, {40, 80}, StyleRectFree, 0, 0, true), (MarqueeBox{20, 50, 50, 80}));
    EXPECT_TRUE(MarqueeFromDrag({5, 5}, {5, 30}, StyleRectFree, 0, 0, false).IsEmpty());
    EXPECT_EQ(MarqueeFromDrag({7, 7}, {7, 7}, StyleEllipseFixedSize, 0, -3, false), (MarqueeBox{7, 7, 8, 8}));
    EXPECT_EQ(MarqueeFromDrag({80, 80}, {70, 75}, StyleEllipseFixedRatio, 2, 1, false),
              (MarqueeBox{70, 75, 80, 80}));

    AppSettings s;
    s.EllicptStyle = 1;
    EXPECT_EQ(SelectionStyleOf(ToolEllipse, s), StyleEllipseFixedRatio);
    s.EllicptStyle = 2;
    EXPECT_EQ(SelectionStyleOf(ToolEllipse, s), StyleEllipseFixedSize);
    s.RowColShape = 99; // a damaged value stays within the three shapes
    EXPECT_EQ(SelectionStyleOf(ToolRowAndCol, s), StyleRowAndColumn);
    EXPECT_EQ(SelectionStyleOf(ToolZoom, s), StyleNone);

    // Without keys the tool's own mode holds; both keys intersect whatever it is.
    EXPECT_EQ(StrokeCombineMode(SelectionModeSubtract, Qt::NoModifier), SelectionModeSubtract);
    EXPECT_EQ(StrokeCombineMode(SelectionModeAdd, Qt::ShiftModifier | Qt::AltModifier),
              SelectionModeIntersect);
    s.LassoCombineMode = 7;
    EXPECT_EQ(ToolCombineMode(ToolLasso, s), SelectionModeNew);
    EXPECT_EQ(CombineCursorName(ToolLasso, SelectionModeSubtract), QStringLiteral("SubFormLassoSelection"));
    EXPECT_EQ(CombineCursorName(ToolMagicWand, SelectionModeSubtract),
              QStringLiteral("SubFromMagicSelection"));
    EXPECT_EQ(CombineCursorName(ToolEllipse, SelectionModeIntersect), QStringLiteral("AndRectSelection"));
}

TEST(ToolState, ChoosingAToolTakesItsStyleFromTheSettings) {
    const AppSettings saved = Globals();
    Globals().RectStyle = 2;
    Globals().RowColShape = 2;
    SetWorkingMode(ToolRectangle);
    EXPECT_EQ(WorkingMode(), ToolRectangle);
    EXPECT_EQ(SelectionStyle(), StyleRectFixedSize);
    // The option bar changes the style without changing the tool.
    SetSelectionStyle(StyleRectFixedRatio);
    EXPECT_EQ(WorkingMode(), ToolRectangle);
    EXPECT_EQ(SelectionStyle(), StyleRectFixedRatio);
    SetWorkingMode(ToolRowAndCol);
    EXPECT_EQ(SelectionStyle(), StyleSingleColumn);
    SetWorkingMode(ToolZoom);
    EXPECT_EQ(SelectionStyle(), StyleNone);
    Globals() = saved;
    SetWorkingMode(ToolRectangle);
}
