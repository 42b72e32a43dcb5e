// The rows of the 锐化 (sharpen) filters.
#include "filters/CatalogueRows.h"
#include "filters/Sharpen.h"

namespace vm {

using namespace rows;

void AddSharpenRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("锐化");
    // The two without parameters run straight from their entries.
    {
        Operation op = Row("Sharpen", "Sharpen", "普通锐化", family);
        op.Run = [](CImage& img, const Params&) { return Sharpen(img); };
        r.push_back(op);
    }
    {
        Operation op = Row("SharpenMore", "SharpenMore", "进一步锐化", family);
        op.Run = [](CImage& img, const Params&) { return SharpenMore(img); };
        r.push_back(op);
    }
    {
        Operation op = Row("SharpByHistGram", "SharpByHistGram", "高级锐化", family);
        op.Sliders = {S("Radius", "半径", 1, 50, 5)};
        op.RepeatReads = {Repeat("Radius", "", "", 50)};
        op.Run = [](CImage& img, const Params& p) { return SharpByHistGram(img, p.Int("Radius")); };
        r.push_back(op);
    }
    {
        Operation op = Row("UnsharpMask", "UnsharpMask", "USM锐化", family);
        op.Sliders = {S("Amount", "数量", 1, 500, 50), Rgba(S("Radius", "半径", Pixels, 1, 250, 1), 180),
                      S("Threshold", "阈值", Levels, 0, 255, 0)};
        op.Run = [](CImage& img, const Params& p) {
            return UnsharpMask(img, p.Int("Amount"), p.Int("Radius"), p.Int("Threshold"));
        };
        r.push_back(op);
    }
}

} // namespace vm
