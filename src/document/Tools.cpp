#include "document/Tools.h"

#include "core/AppSettings.h"
#include "selection/Selection.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace vm {

namespace {

const QString SelectionKeys = QStringLiteral("要用附加选项，使用Shift、Alt和Ctrl键。");

// Direction of a drag along one axis; a drag that has not moved grows
// towards the right and down.
int32_t Sign(int32_t d) {
    return d < 0 ? -1 : 1;
}

MarqueeBox Span(QPoint a, int32_t w, int32_t h) {
    // w and h carry the direction: the box runs from a by that much.
    MarqueeBox box;
    box.Left = std::min(a.x(), a.x() + w);
    box.Right = std::max(a.x(), a.x() + w);
    box.Top = std::min(a.y(), a.y() + h);
    box.Bottom = std::max(a.y(), a.y() + h);
    return box;
}

struct ToolState {
    int32_t Mode = ToolRectangle;
    int32_t Style = StyleRectFree;
    QImage Pattern;
};

ToolState& State() {
    static ToolState state;
    return state;
}

} // namespace

int32_t WorkingMode() {
    return State().Mode;
}

void SetWorkingMode(int32_t tool) {
    State().Mode = tool;
    State().Style = SelectionStyleOf(tool, Globals());
}

int32_t SelectionStyle() {
    return State().Style;
}

void SetSelectionStyle(int32_t style) {
    State().Style = style;
}

const QImage& BucketPattern() {
    return State().Pattern;
}

void SetBucketPattern(const QImage& pattern) {
    State().Pattern = pattern;
}

const std::vector<ToolInfo>& ToolTable() {
    static const std::vector<ToolInfo> table = {
        {ToolRectangle, QStringLiteral("NormalRectangle"), QStringLiteral("矩形选框工具"),
         QStringLiteral("绘制矩形选区或移动选区外框。") + SelectionKeys, QLatin1Char('M')},
        {ToolEllipse, QStringLiteral("Ellicpse"), QStringLiteral("椭圆选框工具"),
         QStringLiteral("绘制椭圆选区或移动选区外框。") + SelectionKeys, QLatin1Char('Q')},
        {ToolPolygon, QStringLiteral("Poly"), QStringLiteral("多边形套索工具"),
         QStringLiteral("点按以设置选区断点。") + SelectionKeys, QLatin1Char('A')},
        {ToolLasso, QStringLiteral("Lasso"), QStringLiteral("套索工具"),
         QStringLiteral("绘制任意选区或移动选区外框。") + SelectionKeys, QLatin1Char('L')},
        {ToolRowAndCol, QStringLiteral("SingleRowAndCol"), QStringLiteral("单行单列选框工具"),
         QStringLiteral("绘制单行、单列选区或移动选区外框。") + SelectionKeys, QChar()},
        {ToolMagicWand, QStringLiteral("MagicWand"), QStringLiteral("魔棒工具"),
         QStringLiteral("点按以选取在具有相似颜色的邻近区域像素或移动选区外框。") + SelectionKeys,
         QLatin1Char('W')},
        {ToolPickColor, QStringLiteral("PickColor"), QStringLiteral("吸管工具"),
         QStringLiteral("点按图像以选取新的前景色。") + SelectionKeys, QLatin1Char('V')},
        {ToolGradient, QStringLiteral("Gradient"), QStringLiteral("渐变工具"), QString(), QLatin1Char('H')},
        {ToolPaintBucket, QStringLiteral("PaintBucket"), QStringLiteral("油漆桶工具"), QString(), QChar()},
        {ToolMoveImage, QStringLiteral("MoveImage"), QStringLiteral("抓手工具"),
         QStringLiteral("点按并拖动以沿想要的方向滚动图像。要用附加选项，使用Alt和Ctrl键。"), QChar()},
        {ToolZoom, QStringLiteral("Zoom"), QStringLiteral("缩放工具"),
         QStringLiteral("点按或拖移所要扩大的区域，在选项栏中更改缩放状态。"), QChar()},
    };
    return table;
}

const ToolInfo* FindTool(int32_t index) {
    for (const ToolInfo& t : ToolTable())
        if (t.Index == index) return &t;
    return nullptr;
}

int32_t ToolSlotOf(int32_t index) {
    switch (index) {
    case ToolEllipse:
        return ToolRectangle;
    case ToolLasso:
        return ToolPolygon;
    default:
        return index;
    }
}

int32_t SelectionStyleOf(int32_t tool, const AppSettings& s) {
    // The stored style lists free, fixed ratio, fixed size; the style word
    // counts fixed size first.
    auto marquee = [](int32_t stored, int32_t free) {
        switch (stored) {
        case 1:
            return free + 2;
        case 2:
            return free + 1;
        default:
            return free;
        }
    };
    switch (tool) {
    case ToolRectangle:
        return marquee(s.RectStyle, StyleRectFree);
    case ToolEllipse:
        return marquee(s.EllicptStyle, StyleEllipseFree);
    case ToolPolygon:
        return StylePolygon;
    case ToolLasso:
        return StyleLasso;
    case ToolRowAndCol:
        return StyleSingleRow + std::clamp(s.RowColShape, 1, 3) - 1;
    case ToolMagicWand:
        return StyleMagicWand;
    default:
        return StyleNone;
    }
}

bool IsSelectionTool(int32_t tool) {
    return tool >= ToolRectangle && tool <= ToolMagicWand;
}

namespace {

// Where each selection tool keeps its combine mode, feather and smoothing.
// Rectangles and rows lie on whole pixels: they have no smoothing to keep.
struct ToolFields {
    int32_t Tool;
    int32_t AppSettings::*CombineMode;
    int32_t AppSettings::*FeatherRadius; // null: no feather
    bool AppSettings::*AntiAlias;        // null: never smoothed
};

const ToolFields* FieldsOf(int32_t tool) {
    static const ToolFields table[] = {
        {ToolRectangle, &AppSettings::RectCombineMode, &AppSettings::RectFeatherRadius, nullptr},
        {ToolEllipse, &AppSettings::EllicptCombineMode, &AppSettings::EllicptFeatherRadius,
         &AppSettings::EllicptAntiAlias},
        {ToolPolygon, &AppSettings::PolyCombineMode, &AppSettings::PolyFeatherRadius,
         &AppSettings::PolyAntiAlias},
        {ToolLasso, &AppSettings::LassoCombineMode, &AppSettings::LassoFeatherRadius,
         &AppSettings::LassoAntiAlias},
        {ToolRowAndCol, &AppSettings::RowAndColCombineMode, nullptr, nullptr},
        {ToolMagicWand, &AppSettings::MagicWandCombineMode, &AppSettings::MagicWandFeatherRadius,
         &AppSettings::MagicWandAntiAlias},
    };
    for (const ToolFields& f : table)
        if (f.Tool == tool) return &f;
    return nullptr;
}

} // namespace

int32_t ToolCombineMode(int32_t tool, const AppSettings& s) {
    const ToolFields* f = FieldsOf(tool);
    const int32_t mode = f ? s.*(f->CombineMode) : SelectionModeNew;
    // A stored value out of range means the plain new selection.
    return mode >= SelectionModeNew && mode <= SelectionModeIntersect ? mode : SelectionModeNew;
}

void SetToolCombineMode(int32_t tool, int32_t mode, AppSettings& s) {
    if (const ToolFields* f = FieldsOf(tool)) s.*(f->CombineMode) = mode;
}

int32_t ToolFeatherRadius(int32_t tool, const AppSettings& s) {
    const ToolFields* f = FieldsOf(tool);
    return f && f->FeatherRadius ? std::max(s.*(f->FeatherRadius), 0) : 0;
}

bool ToolAntiAlias(int32_t tool, const AppSettings& s) {
    const ToolFields* f = FieldsOf(tool);
    return f && f->AntiAlias && s.*(f->AntiAlias);
}

int32_t StrokeCombineMode(int32_t toolMode, Qt::KeyboardModifiers keys) {
    const bool shift = keys & Qt::ShiftModifier;
    const bool alt = keys & Qt::AltModifier;
    if (shift && alt) return SelectionModeIntersect;
    if (shift) return SelectionModeAdd;
    if (alt) return SelectionModeSubtract;
    return toolMode;
}

MarqueeBox MarqueeFromDrag(QPoint start, QPoint end, int32_t style, int32_t width, int32_t height,
                           bool square) {
    const int32_t dx = end.x() - start.x();
    const int32_t dy = end.y() - start.y();
    switch (style) {
    case StyleRectFixedSize:
    case StyleEllipseFixedSize: {
        MarqueeBox box;
        box.Left = end.x();
        box.Top = end.y();
        box.Right = end.x() + std::max(width, 1);
        box.Bottom = end.y() + std::max(height, 1);
        return box;
    }
    case StyleRectFixedRatio:
    case StyleEllipseFixedRatio: {
        const double rw = std::max(width, 1), rh = std::max(height, 1);
        // The side that asks for the larger box wins; the other follows.
        const double scale = std::max(std::abs(dx) / rw, std::abs(dy) / rh);
        const auto w = static_cast<int32_t>(std::lrint(scale * rw));
        const auto h = static_cast<int32_t>(std::lrint(scale * rh));
        return Span(start, Sign(dx) * w, Sign(dy) * h);
    }
    default:
        if (square) {
            const int32_t side = std::max(std::abs(dx), std::abs(dy));
            return Span(start, Sign(dx) * side, Sign(dy) * side);
        }
        return Span(start, dx, dy);
    }
}

void MarqueeSizeSettings(int32_t style, const AppSettings& s, int32_t& width, int32_t& height) {
    switch (style) {
    case StyleRectFixedSize:
        width = s.FixedRectWidth;
        height = s.FixedRectHeight;
        break;
    case StyleRectFixedRatio:
        width = s.FixedRatioRectWidth;
        height = s.FixedRatioRectHeight;
        break;
    case StyleEllipseFixedSize:
        width = s.FixedEllicptWidth;
        height = s.FixedEllicptHeight;
        break;
    case StyleEllipseFixedRatio:
        width = s.FixedRatioEllicptWidth;
        height = s.FixedRatioEllicptHeight;
        break;
    default:
        width = height = 0;
        break;
    }
}

QPoint ConstrainTo45(QPoint start, QPoint end) {
    const int32_t dx = end.x() - start.x();
    const int32_t dy = end.y() - start.y();
    if (dx == 0 && dy == 0) return end;
    const double pi = std::acos(-1.0);
    const double step = pi / 4;
    const double angle = std::round(std::atan2(dy, dx) / step) * step;
    const double length = std::hypot(dx, dy);
    return QPoint(start.x() + static_cast<int>(std::lrint(length * std::cos(angle))),
                  start.y() + static_cast<int>(std::lrint(length * std::sin(angle))));
}

QString CombineCursorName(int32_t tool, int32_t mode) {
    QString shape;
    switch (tool) {
    case ToolPolygon:
        shape = QStringLiteral("Poly");
        break;
    case ToolLasso:
        shape = QStringLiteral("Lasso");
        break;
    case ToolMagicWand:
        shape = QStringLiteral("Magic");
        break;
    default:
        shape = QStringLiteral("Rect");
        break;
    }
    switch (mode) {
    case SelectionModeAdd:
        return QStringLiteral("AddTo") + shape + QStringLiteral("Selection");
    case SelectionModeSubtract:
        // The lasso's cursor has always been spelt this way.
        return (tool == ToolLasso ? QStringLiteral("SubForm") : QStringLiteral("SubFrom")) + shape +
               QStringLiteral("Selection");
    case SelectionModeIntersect:
        return QStringLiteral("And") + shape + QStringLiteral("Selection");
    default:
        return QStringLiteral("New") + shape + QStringLiteral("Selection");
    }
}

} // namespace vm
