// The rows of the Edit menu's pixel commands.
#include "core/AppSettings.h"
#include "core/Catalogue.h"
#include "core/EditOps.h"

namespace vm {

void AddEditRows(std::vector<Operation>& rows) {
    const QString family = QStringLiteral("编辑");
    {
        // With the background colour of the colour panel.
        Operation op = MakeRow("Clear", "清除", family, FormatSet::Editable());
        op.Needs = SelectionNeed::OnCanvas;
        op.Run = [](CImage& img, const Params&) { return Clear(img, Globals().SystemBackColor); };
        rows.push_back(op);
    }
    {
        // The fill dialog asks for these in its own words (FrmMultiUse); the
        // command line gives them by key.
        Operation op = MakeRow("Fill", "填充", family, FormatSet::Editable());
        op.Function = QStringLiteral("FillWithColor");
        op.Sliders = {
            Slider(QStringLiteral("Opacity"), QStringLiteral("不透明度"), QStringLiteral("%"), 1, 100, 100)};
        op.Texts = {{QStringLiteral("Color"), QStringLiteral("颜色"), QStringLiteral("0"),
                     [](const QString& t) {
                         bool ok = false;
                         const int v = t.trimmed().toInt(&ok);
                         return ok && v >= 0 && v <= 0xFFFFFF;
                     },
                     QStringLiteral("应为 0 到 16777215 之间的颜色值（红色在最低字节）")}};
        op.Run = [](CImage& img, const Params& p) {
            return FillWithColor(img, p.Int(QStringLiteral("Color")), p.Int(QStringLiteral("Opacity")));
        };
        rows.push_back(op);
    }
}

} // namespace vm
