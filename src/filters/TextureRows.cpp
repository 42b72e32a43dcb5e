// The rows of the 纹理 (texture) filters. Their parameters are declared ahead of the
// operations, so that the dialogs, the repeat command, the menus and
// `vellumark-cli list` know them; the family's Run comes with its kernels.
#include "filters/CatalogueRows.h"

namespace vm {

using namespace rows;

void AddTextureRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("纹理");
    {
        Operation op = Row("FillGrid", "FillGrid", "网格", family);
        op.Sliders = {S("GridSize", "网格大小", Pixels, 1, 256, 20), S("Depth", "深度", 1, 200, 100)};
        op.Choices = {Options("GridType", "类型", {"3D网格", "平面网格"}, 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("Weave", "Weave", "编织", family);
        op.Sliders = {S("Dist", "宽度", Pixels, 1, 100, 32), S("Gap", "间隙", Pixels, 1, 100, 16)};
        op.Checks = {Check("ShadeCrossings", "阴影交替", true), Check("RoundThreads", "光滑圆角", true)};
        r.push_back(op);
    }
    {
        Operation op = Row("BrushedMetal", "BrushedMetal", "磨光金属", family);
        op.Sliders = {S("Radius", "半径", Pixels, 1, 200, 40), S("Amount", "数量", Percent, 0, 400, 30),
                      S("Shine", "光亮", Percent, 0, 200, 100)};
        op.Checks = {Check("Homochromy", "单色", false)};
        r.push_back(op);
    }
    {
        Operation op = Row("Wood", "Wood", "木质断面", family);
        op.Sliders = {Reset(S("ScaleXY", "缩放", Percent, 1, 200, 100), 50),
                      Reset(S("Stretch", "水平拉伸", 1, 15, 3), 1), Reset(S("Rings", "环", 1, 100, 50), 10)};
        op.Dial = Dial(90);
        r.push_back(op);
    }
    {
        Operation op = Row("Texture", "Texture", "柏林纹理", family);
        op.Sliders = {S("ScaleXY", "缩放", Percent, 1, 200, 50), S("Stretch", "水平拉伸", 1, 15, 1),
                      Reset(S("Octaves", "倍频", 1, 10, 2), 10)};
        op.Dial = Dial(45);
        r.push_back(op);
    }
    {
        Operation op = Row("Marble", "Marble", "凸痕", family);
        op.Sliders = {S("ScaleXY", "比例", 1, 200, 50), S("Turbulence", "粗糙", 1, 20, 10)};
        op.Choices = {EdgeOption()};
        r.push_back(op);
    }
    {
        Operation op = Row("Caustics", "Caustics", "流云飞袖", family);
        op.Sliders = {S("ScaleXY", "缩放", 1, 200, 32), S("Amount", "数量", 0, 100, 50),
                      S("Dispersion", "离散度", 0, 100, 0)};
        // On colour pictures it renders over the whole picture only.
        op.WholePictureOn = ColourFormats();
        r.push_back(op);
    }
    {
        Operation op = Row("Checkerboard", "Checkerboard", "棋盘", family);
        op.Sliders = {Reset(S("ScaleX", "水平", Pixels, 1, 200, 40), 50),
                      Reset(S("ScaleY", "垂直", Pixels, 1, 200, 40), 50),
                      S("Fuzziness", "模糊边缘", Percent, 0, 50, 0)};
        op.Dial = Dial(0);
        op.RepeatReads = {Repeat("ScaleX", "", "", 50), Repeat("ScaleY", "", "", 50)};
        r.push_back(op);
    }
}

} // namespace vm
