#pragma once
// The dialogs of their own that some rows have: a row listed here shows its
// dialog instead of the generic ones (FrmOperation, FrmPreViewFilters,
// FrmNoPreviewFilter), which serve every other row. A new dialog registers
// itself here by its row's key, and the menus and the window need nothing else.
#include "core/Catalogue.h"

namespace vm {

class Canvas;
class FrmMain;

// Shows the row's dialog over the window for the canvas' document and, on OK,
// runs the command. True when the document changed.
using CommandDialog = bool (*)(FrmMain& Window, const Operation& Row, Canvas& Target);

// The dialog of a row's key; null for a row the generic dialogs serve.
CommandDialog DialogOfRow(const QString& Key);

} // namespace vm
