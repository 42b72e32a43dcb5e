// The rows of the beautify menu: portrait commands, for the whole of a colour
// picture.
#include "core/Catalogue.h"

namespace vm {

void AddBeautifyRows(std::vector<Operation>& rows) {
    using namespace FormatSet;
    const QString family = QStringLiteral("美化");
    for (const auto& [key, title] : {std::pair{"SmoothSkinByHighPass", "高通磨皮"},
                                     {"SmoothSkinByReduceNosie", "快速磨皮"},
                                     {"SmoothSkinBrush", "手动磨皮"},
                                     {"FastWhite", "一键美白"},
                                     {"VirBlurByHandle", "手动涂抹"},
                                     {"VirBlurByShape", "形状虚化"},
                                     {"LocalColorize", "局部彩色笔"},
                                     {"LocalMasic", "局部马赛克"},
                                     {"ChangeEye", "眼睛缩放"}})
        rows.push_back(MakeRow(key, title, family, Colour(), Colour()));
}

} // namespace vm
