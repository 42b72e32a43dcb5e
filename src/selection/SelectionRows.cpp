// The rows of the Selection menu. Selecting everything and the colour range
// start from any selection; every other command works on one that was made.
#include "core/Catalogue.h"

namespace vm {

void AddSelectionRows(std::vector<Operation>& rows) {
    const QString family = QStringLiteral("选择");
    auto made = [&](const char* key, const char* title) {
        Operation op = MakeRow(key, title, family);
        op.Needs = SelectionNeed::Made;
        return op;
    };
    rows.push_back(MakeRow("SelectAll", "全选", family));
    rows.push_back(made("CancelSelect", "取消选择"));
    rows.push_back(made("InvertSelect", "反选"));
    rows.push_back(MakeRow("ColorRange", "色彩范围", family));
    rows.push_back(made("SelectionBorder", "选区边界"));
    rows.push_back(made("SelectionSmooth", "平滑选区"));
    rows.push_back(made("SelectionExpand", "扩展选区"));
    rows.push_back(made("SelectionShrink", "收缩选区"));
    rows.push_back(made("SelectionFeather", "羽化选区"));
    rows.push_back(made("SelectSimilar", "选取相似"));
    rows.push_back(made("SaveSelection", "储存选区"));
    rows.push_back(made("LoadSelection", "加载选区"));
}

} // namespace vm
