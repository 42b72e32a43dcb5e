// The rows of the 艺术 (art) filters. Their parameters are declared ahead of the
// operations, so that the dialogs, the repeat command, the menus and
// `vellumark-cli list` know them; the family's Run comes with its kernels.
#include "filters/CatalogueRows.h"

namespace vm {

using namespace rows;

void AddArtRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("艺术");
    {
        Operation op = Row("OilPainting", "OilPainting", "油画", family);
        op.Sliders = {S("BrushSize", "刷子", 1, 20, 3), S("Smoothness", "平滑度", 0, 255, 100)};
        r.push_back(op);
    }
    {
        Operation op = Row("SoftGlow", "SoftGlow", "柔光", family);
        op.Sliders = {S("Radius", "半径", Pixels, 0, 100, 10), S("Brightness", "亮度", -100, 100, 0),
                      S("Contrast", "对比度", -100, 100, 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("SoftenPortrait", "SoftenPortrait", "柔和处理", family);
        op.Formats = ColourFormats();
        op.Sliders = {S("Radius", "柔化", Pixels, 0, 100, 5), S("Lighting", "亮度", -20, 20, 0),
                      S("Warmth", "温暖", 0, 20, 10)};
        op.RepeatReads = {Repeat("Radius", "", "Softness", std::nullopt)};
        r.push_back(op);
    }
    {
        Operation op = Row("Illusion", "Illusion", "幻影", family);
        op.Sliders = {S("Radius", "数量", Pixels, 2, 100, 10)};
        op.RepeatReads = {Repeat("Radius", "", "Division", std::nullopt)};
        r.push_back(op);
    }
    {
        Operation op = Row("SmearIt", "SmearIt", "涂污", family);
        op.Sliders = {S("Amount", "数量", 2, 2000, 100), Reset(S("Distance", "距离", 1, 200, 32), 50)};
        op.Choices = {Options("SmearType", "类型", {"十字交叉", "圆形", "矩形", "直线"}, 0)};
        op.Dial = Dial(0);
        for (int type : {1, 2}) {
            op.ChoiceRanges.push_back({QStringLiteral("SmearType"), type, QStringLiteral("Amount"), 2, 100});
            op.ChoiceRanges.push_back({QStringLiteral("SmearType"), type, QStringLiteral("Distance"), 1, 50});
        }
        op.RepeatReads = {Repeat("Distance", "", " Distance", std::nullopt)};
        r.push_back(op);
    }
    {
        Operation op = Row("InkSketch", "InkSketch", "素描", family);
        op.Sliders = {S("InkOutline", "轮廓", 0, 100, 10), S("Coloring", "色彩", 0, 100, 10)};
        op.RepeatReads = {Repeat("Coloring", "", " Coloring", std::nullopt)};
        r.push_back(op);
    }
    {
        Operation op = Row("PencilSketch", "PencilSketch", "铅笔勾画", family);
        op.Sliders = {S("PencilTipSize", "铅笔尖尺寸", 1, 20, 2), S("Range", "范围", -20, 20, 0)};
        op.RepeatReads = {Repeat("Range", "", " PencilSketch", std::nullopt)};
        r.push_back(op);
    }
}

} // namespace vm
