#pragma once
// The tool set: which tools exist, what their cursors, pictures and status
// hints are called, how a tool's settings become the selection style word,
// and the arithmetic of a stroke (the marquee box, the combine mode a stroke
// takes from the keys held). No widgets here: the canvas and the tool box
// share it and the tests check it directly.
#include <QImage>
#include <QPoint>
#include <QString>
#include <Qt>

#include <cstdint>
#include <vector>

namespace vm {

struct AppSettings;

// Index of a tool in the tool box; the value of WorkingMode.
enum ToolIndex : int32_t {
    ToolRectangle = 0,
    ToolEllipse = 1,
    ToolPolygon = 2,
    ToolLasso = 3,
    ToolRowAndCol = 4,
    ToolMagicWand = 5,
    ToolPickColor = 6,
    ToolGradient = 7,
    ToolPaintBucket = 8,
    ToolMoveImage = 11,
    ToolZoom = 12,
};

// What a drag with a selection tool means.
enum SelectionStyleWord : int32_t {
    StyleNone = 0,
    StyleRectFree = 1,
    StyleRectFixedSize = 2,
    StyleRectFixedRatio = 3,
    StyleSingleRow = 4,
    StyleSingleColumn = 5,
    StyleRowAndColumn = 6,
    StyleEllipseFree = 7,
    StyleEllipseFixedSize = 8,
    StyleEllipseFixedRatio = 9,
    StylePolygon = 11,
    StyleLasso = 12,
    StyleMagicWand = 13,
};

struct ToolInfo {
    int32_t Index;
    QString Name;  // the name of its picture and of its own cursor
    QString Title; // what the tool box calls it
    QString Hint;  // the status line while it is chosen
    QChar Key;     // the letter that chooses it on the canvas, or a null char
};

// The current tool (WorkingMode), one for the whole program: every canvas
// works with it. Setting it also sets the selection style word that the
// tool's settings give.
int32_t WorkingMode();
void SetWorkingMode(int32_t Tool);
// What a drag with the current selection tool draws; the option bar changes
// it without changing the tool.
int32_t SelectionStyle();
void SetSelectionStyle(int32_t Style);
// The picture the paint bucket fills with when its source is a pattern; null
// while none was chosen.
const QImage& BucketPattern();
void SetBucketPattern(const QImage& Pattern);

// The tools in the order of the tool box's buttons.
const std::vector<ToolInfo>& ToolTable();
// Null for an index that is not a tool.
const ToolInfo* FindTool(int32_t Index);

// The tools that share a slot of the tool box: the two marquees, and
// polygon with lasso. Each other tool is a slot of its own.
int32_t ToolSlotOf(int32_t Index);

// The style word a tool works with under the present settings: "RectStyle"
// and "EllicptStyle" are 0 free, 1 fixed ratio, 2 fixed size; "RowColShape"
// is 1 row, 2 column, 3 both.
int32_t SelectionStyleOf(int32_t Tool, const AppSettings& Settings);

// The selection tools' settings, by tool. Tools without a key of their own
// (the rectangle's anti-aliasing, the row tool's feather) answer what the
// mask's rasteriser needs for them.
int32_t ToolCombineMode(int32_t Tool, const AppSettings& Settings);
void SetToolCombineMode(int32_t Tool, int32_t Mode, AppSettings& Settings);
int32_t ToolFeatherRadius(int32_t Tool, const AppSettings& Settings);
bool ToolAntiAlias(int32_t Tool, const AppSettings& Settings);
bool IsSelectionTool(int32_t Tool);

// The combine mode of a stroke: the tool's mode, unless keys say otherwise.
// Shift adds, Alt subtracts, both intersect.
int32_t StrokeCombineMode(int32_t ToolMode, Qt::KeyboardModifiers Keys);

// The box of a rectangle or ellipse drag between two grid points: Left, Top
// inclusive, Right, Bottom exclusive (Right - Left is the width). A free box
// spans the two points, made square when Square is set; a fixed size box
// hangs from the pointer by its top left corner; a fixed ratio box grows from
// the start towards the pointer with the sides in the ratio asked.
struct MarqueeBox {
    int32_t Left = 0, Top = 0, Right = 0, Bottom = 0;
    bool IsEmpty() const { return Right <= Left || Bottom <= Top; }
    bool operator==(const MarqueeBox&) const = default;
};
MarqueeBox MarqueeFromDrag(QPoint Start, QPoint End, int32_t StyleWord, int32_t Width, int32_t Height,
                           bool Square);

// The width and height settings a marquee style reads: the fixed size ones
// for styles 2 and 8, the ratio ones for 3 and 9; 0 and 0 otherwise.
void MarqueeSizeSettings(int32_t StyleWord, const AppSettings& Settings, int32_t& Width, int32_t& Height);

// The end of a straight stroke held to multiples of 45 degrees.
QPoint ConstrainTo45(QPoint Start, QPoint End);

// The cursor of a selection tool in a combine mode ("NewRectSelection",
// "SubFormLassoSelection", ...).
QString CombineCursorName(int32_t Tool, int32_t CombineMode);

} // namespace vm
