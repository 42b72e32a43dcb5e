// The rows of the 扭曲 (distort) filters. Their parameters are declared ahead of the
// operations, so that the dialogs, the repeat command, the menus and
// `vellumark-cli list` know them; the family's Run comes with its kernels.
#include "filters/CatalogueRows.h"

namespace vm {

using namespace rows;

void AddDistortRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("扭曲");
    {
        Operation op = Row("Wave", "Wave", "水波", family);
        op.Sliders = {S("Amplitude", "幅度", 1, 100, 10), S("WaveLength", "波长", Pixels, 1, 50, 10)};
        op.Dial = Dial(0);
        op.Checks = {Check("Reflective", "反射", false)};
        op.HasCentre = true;
        // The repeat reads a key nobody writes: it always runs at phase 0.
        op.RepeatReads = {Repeat("Angle", "", "Phase", 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("Ripple", "Ripple", "涟漪", family);
        op.Sliders = {S("Amplitude", "幅度", 1, 200, 5), S("Period", "周期", 1, 200, 20)};
        op.Dial = Dial(0, "PhaseShift", "相移");
        op.Choices = {Options("Orientation", "方向", {"水平", "垂直"}, 0),
                      Options("WaveForm", "波形", {"锯齿", "正弦"}, 0),
                      Options("Edge", "边缘", {"折回", "重复边缘"}, 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("LookThroughGlass", "LookThroughGlass", "玻璃", family);
        op.DialogTitle = QStringLiteral("玻璃透视");
        op.Sliders = {S("SampleX", "水平取样", Pixels, 1, 200, 10),
                      S("SampleY", "垂直取样", Pixels, 1, 200, 10)};
        r.push_back(op);
    }
    {
        Operation op = Row("Polar", "Polar", "极坐标", family);
        op.Sliders = {Reset(S("CirDepth", "圆形深度", 1, 200, 10), 100)};
        op.Dial = Reset(Dial(0), 0);
        op.Checks = {Check("Inverse", "反向映射", false), Check("Polrec", "平面到极坐标", true),
                     Check("Backwards", "顶端开始映射", true)};
        op.HasCentre = true;
        op.RepeatReads = {Repeat("CirDepth", "", "", 100)};
        r.push_back(op);
    }
    {
        Operation op = Row("Pinch", "Pinch", "挤压", family);
        op.Sliders = {S("Amount", "数量", -200, 200, 45)};
        op.HasCentre = true;
        r.push_back(op);
    }
    {
        Operation op = Row("LensDistortion", "LensDistortion", "镜头形变", family);
        op.Sliders = {S("Square", "主要", -100, 100, 40), S("Quad", "边缘", -100, 100, 30),
                      S("ScaleFactor", "缩放", -100, 100, 4)};
        op.HasCentre = true;
        r.push_back(op);
    }
    {
        Operation op = Row("Twist", "Twist", "旋转扭曲", family);
        op.DialogTitle = QStringLiteral("扭曲");
        op.Sliders = {S("Amount", "数量", -200, 200, 30), S("Size", "尺寸", 1, 200, 100)};
        op.HasCentre = true;
        r.push_back(op);
    }
    {
        Operation op = Row("Tile", "Tile", "玻璃瓦片", family);
        op.DialogTitle = QStringLiteral("瓦片");
        op.Sliders = {S("SquareSize", "瓷砖大小", 1, 800, 40), S("Curvature", "曲率", -100, 100, 8)};
        op.Dial = Dial(30);
        op.RepeatReads = {Repeat("Angle", "Wave", "", 30)};
        r.push_back(op);
    }
    {
        Operation op = Row("PolarInversion", "PolarInversion", "极面倒转", family);
        op.Sliders = {S("Amount", "数量", -200, 200, 100), S("Quality", "质量", 1, 5, 2)};
        op.Choices = {EdgeOption()};
        op.HasCentre = true;
        r.push_back(op);
    }
    {
        Operation op = Row("Shift", "Shift", "滑移", family);
        op.Sliders = {S("Amount", "数量", Pixels, 1, 999, 5)};
        op.Choices = {Options("Direction", "方向", {"水平", "垂直"}, 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("DisPlace", "Displace", "置换", family);
        op.Section = QStringLiteral("Displace");
        op.NoPreview = true;
        op.Sliders = {S("Horization", "水平比例", Percent, -999, 999, 10),
                      S("Vertical", "垂直比例", Percent, -999, 999, 10)};
        op.Checks = {Check("Stretch", "伸展以适合", false), Check("Repeat", "拼贴", false)};
        op.Texts = {{QStringLiteral("FileName"), QStringLiteral("置换图"), QString(), {}, QString()}};
        r.push_back(op);
    }
    {
        Operation op = Row("Kaleidoscope", "Kaleidoscope", "万花筒", family);
        op.Sliders = {S("Sides", "边数", 2, 200, 5), S("Radius", "半径", 0, 200, 0)};
        op.Dial = Dial(45);
        op.Choices = {EdgeOption()};
        op.HasCentre = true;
        r.push_back(op);
    }
}

} // namespace vm
