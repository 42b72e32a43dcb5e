// The rows of the make menu: bar codes, gradient and pattern fills, white
// balance, haze removal and the photo filter. The colour commands among them
// work on the whole of a colour picture.
#include "core/Catalogue.h"

namespace vm {

void AddMakeRows(std::vector<Operation>& rows) {
    using namespace FormatSet;
    const QString family = QStringLiteral("制作");
    auto colour = [&](const char* key, const char* title) {
        rows.push_back(MakeRow(key, title, family, Colour(), Colour()));
    };
    rows.push_back(MakeRow("BarCode", "条形码", family, Editable()));
    rows.push_back(MakeRow("Gradient", "渐变填充", family, Editable()));
    colour("AutoNewWhiteBalance", "自适应白平衡");
    colour("AutoWhiteBalance", "自动白平衡");
    colour("AutoHighWhiteBalance", "严重白平衡错误");
    colour("HazeRemoveal", "一键去雾");
    colour("PhotoFilter", "照片滤镜");
    colour("FillWithPattern", "图案填充");
}

} // namespace vm
