// The rows of the 像素化 (pixelize) filters. Their parameters are declared ahead of the
// operations, so that the dialogs, the repeat command, the menus and
// `vellumark-cli list` know them; the family's Run comes with its kernels.
#include "filters/CatalogueRows.h"

namespace vm {

using namespace rows;

void AddPixelizeRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("像素化");
    const ChoiceSpec gridType = Options("GridType", "网格", {"矩形", "三角形", "六边形", "八边形"}, 2);
    {
        Operation op = Row("Fragment", "Fragment", "碎片", family);
        op.Sliders = {S("Fragments", "碎片数", 2, 50, 4), S("Distance", "距离", 0, 100, 8)};
        op.Dial = Dial(0);
        r.push_back(op);
    }
    {
        Operation op = Row("Mosaic", "Mosaic", "马赛克", family);
        op.Sliders = {S("CellWidth", "半径", Pixels, 2, 200, 4), S("GapX", "间隙", Pixels, 0, 100, 0)};
        op.Checks = {Check("FillMode", "用前景色填充间隙", false)};
        r.push_back(op);
    }
    {
        Operation op = Row("Cubism", "Cubism", "立体主义", family);
        op.Sliders = {S("TileSize", "方块大小", Pixels, 1, 100, 5),
                      S("TileSaturation", "方块饱和度", 0, 100, 50)};
        r.push_back(op);
    }
    {
        Operation op = Row("Crystallize", "Crystallize", "晶格化", family);
        op.Sliders = {S("CellSize", "晶格大小", Pixels, 5, 200, 32),
                      S("EdgeThickNess", "边缘", Percent, 1, 100, 10),
                      S("RandomNess", "变形", Percent, 0, 100, 0)};
        op.Dial = Dial(0);
        op.Checks = {Check("FadeEdge", "平滑边缘", true)};
        op.Choices = {gridType};
        r.push_back(op);
    }
    {
        Operation op = Row("Pointillize", "Pointillize", "点状化", family);
        op.Sliders = {S("CellSize", "晶格大小", Pixels, 5, 200, 32),
                      S("EdgeThickNess", "边缘", Percent, 1, 50, 10),
                      S("RandomNess", "模糊度", Percent, 0, 50, 10)};
        op.Dial = Dial(0);
        op.Checks = {Check("FadeEdge", "平滑边缘", false)};
        op.Choices = {gridType};
        r.push_back(op);
    }
    {
        Operation op = Row("ColorHalftone", "ColorHalftone", "彩色半调", family);
        op.Formats = ColourFormats();
        op.Sliders = {S("CyanScreenAngle", "Cyan网角", 0, 360, 108),
                      S("MagentaScreenAngle", "Magenta网角", 0, 360, 162),
                      S("YellowScreenAngle", "Yellow网角", 0, 360, 90)};
        op.Texts = {IntText(QStringLiteral("DotRadius"), QStringLiteral("半径："), QStringLiteral("8"))};
        r.push_back(op);
    }
}

} // namespace vm
