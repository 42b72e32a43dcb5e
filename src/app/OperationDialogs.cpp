#include "app/OperationDialogs.h"

#include "app/FrmMain.h"
#include "app/FrmMultiUse.h"
#include "canvas/Canvas.h"

#include <utility>

namespace vm {

namespace {

// "填充": the colour and opacity the fill dialog (FrmMultiUse "Fill") asks for.
bool ShowFill(FrmMain& window, const Operation& row, Canvas& target) {
    FillChoice choice = FillChoice::Stored();
    if (!window.AskFill(choice)) return false;
    Params p;
    p.Set(QStringLiteral("Color"), choice.EffectiveColor());
    p.Set(QStringLiteral("Opacity"), choice.Opacity);
    return row.Run(*target.Image(), row.WithDefaults(p));
}

const std::pair<const char*, CommandDialog> Dialogs[] = {
    {"Fill", ShowFill},
};

} // namespace

CommandDialog DialogOfRow(const QString& key) {
    for (const auto& [k, dialog] : Dialogs)
        if (key == QLatin1String(k)) return dialog;
    return nullptr;
}

} // namespace vm
