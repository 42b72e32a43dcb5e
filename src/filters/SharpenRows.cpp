// The rows of the 锐化 (sharpen) filters. Their parameters are declared ahead of the
// operations, so that the dialogs, the repeat command, the menus and
// `vellumark-cli list` know them; the family's Run comes with its kernels.
#include "filters/CatalogueRows.h"

namespace vm {

using namespace rows;

void AddSharpenRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("锐化");
    r.push_back(Row("Sharpen", "Sharpen", "普通锐化", family));
    r.push_back(Row("SharpenMore", "SharpenMore", "进一步锐化", family));
    {
        Operation op = Row("SharpByHistGram", "SharpByHistGram", "高级锐化", family);
        op.Sliders = {S("Radius", "半径", 1, 50, 5)};
        op.RepeatReads = {Repeat("Radius", "", "", 50)};
        r.push_back(op);
    }
    {
        Operation op = Row("UnsharpMask", "UnsharpMask", "USM锐化", family);
        op.Sliders = {S("Amount", "数量", 1, 500, 50), Rgba(S("Radius", "半径", Pixels, 1, 250, 1), 180),
                      S("Threshold", "阈值", Levels, 0, 255, 0)};
        r.push_back(op);
    }
}

} // namespace vm
