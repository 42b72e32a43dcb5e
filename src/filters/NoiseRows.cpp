// The rows of the 杂色 (noise) filters. Their parameters are declared ahead of the
// operations, so that the dialogs, the repeat command, the menus and
// `vellumark-cli list` know them; the family's Run comes with its kernels.
#include "filters/CatalogueRows.h"

namespace vm {

using namespace rows;

void AddNoiseRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("杂色");
    {
        Operation op = Row("AddNoise", "AddNoise", "添加噪音", family);
        op.Sliders = {S("Amount", "数量", Percent, 1, 400, 12)};
        op.Choices = {Options("Type", "分布", {"平均分布", "高斯分布"}, 0)};
        op.Checks = {Check("Homochromy", "单色", false)};
        op.RepeatReads = {Repeat("Amount", "", "", 50)};
        r.push_back(op);
    }
    {
        Operation op = Row("ReduceNoise", "ReduceNoise", "减少噪音", family);
        op.Sliders = {S("Radius", "半径", Pixels, 1, 50, 5), S("Strength", "强度", 1, 200, 50)};
        op.RepeatReads = {Repeat("Radius", "", "", 50)};
        r.push_back(op);
    }
    {
        Operation op = Row("Median", "Median", "中间值", family);
        op.Sliders = {S("Radius", "半径", Pixels, 1, 50, 5), S("Percentile", "百分比", 1, 100, 50)};
        op.RepeatReads = {Repeat("Percentile", "", "", 50)};
        r.push_back(op);
    }
    {
        Operation op = Row("RemoveRedEye", "RemoveRedEye", "去除红眼", family);
        op.Formats = ColourFormats();
        op.Sliders = {S("Tolerence", "容限", 0, 100, 5), S("NewSaturation", "饱和度", 0, 100, 10)};
        op.RepeatReads = {Repeat("NewSaturation", "", "", 50)};
        r.push_back(op);
    }
}

} // namespace vm
