// The rows of the 风格化 (stylize) filters. Their parameters are declared ahead of the
// operations, so that the dialogs, the repeat command, the menus and
// `vellumark-cli list` know them; the family's Run comes with its kernels.
#include "filters/CatalogueRows.h"

namespace vm {

using namespace rows;

void AddStylizeRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("风格化");
    // The two without parameters run straight from their entries.
    r.push_back(Row("FindEdges", "FindEdges", "查找边缘", family));
    r.push_back(Row("Solarize", "Solarize", "曝光过度", family));
    {
        Operation op = Row("Emboss", "Emboss", "浮雕", family);
        op.Sliders = {S("Radius", "高度", Pixels, 1, 100, 3), S("Amount", "数量", Percent, 1, 500, 100)};
        op.Dial = Dial(135);
        r.push_back(op);
    }
    {
        Operation op = Row("Relief", "Relief", "浮凸", family);
        op.DialogTitle = QStringLiteral("浮雕");
        op.Sliders = {S("Radius", "高度", Pixels, 1, 100, 3)};
        op.Dial = Dial(135);
        r.push_back(op);
    }
    {
        Operation op = Row("Splash", "Splash", "喷溅", family);
        op.Sliders = {S("Radius", "数量", Pixels, 1, 100, 5)};
        op.Choices = {Options("SplashMode", "模式", {"正常", "变暗优先", "变亮优先", "各向异性"}, 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("EdgeDetectEffects", "EdgeDetectEffects", "边缘强化", family);
        op.Dial = Dial(45);
        r.push_back(op);
    }
    {
        Operation op = Row("Wind", "Wind", "风", family);
        op.Sliders = {S("Threshold", "阈值", 0, 50, 10), S("Strength", "力度", 0, 100, 10)};
        op.Choices = {Options("Type", "方法", {"风", "大风"}, 0),
                      Options("Direction", "方向", {"左侧", "右侧"}, 0),
                      Options("Edge", "边缘", {"头部", "尾部", "两者皆有"}, 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("OutLine", "OutLine", "轮廓", family);
        op.Sliders = {S("Thickness", "厚度", 1, 20, 3), S("Intensity", "强度", 0, 100, 50)};
        r.push_back(op);
    }
    {
        Operation op = Row("Video", "Video", "视频", family);
        op.NoPreview = true;
        op.Texts = {IntText(QStringLiteral("PatternMode"), QStringLiteral("图案"), QStringLiteral("0")),
                    IntText(QStringLiteral("Additive"), QStringLiteral("叠加"), QStringLiteral("0")),
                    IntText(QStringLiteral("Rotated"), QStringLiteral("旋转"), QStringLiteral("3"))};
        r.push_back(op);
    }
}

} // namespace vm
