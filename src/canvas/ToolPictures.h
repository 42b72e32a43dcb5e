#pragma once
// The pictures of the tool box and of the option bar's buttons, and the
// mouse cursors of the tools, all drawn in code and looked up by the names
// the tools have always given them ("NormalRectangle", "SubFormLassoSelection",
// "MoveSelectionDown", ...).
#include <QCursor>
#include <QIcon>
#include <QPixmap>
#include <QString>

namespace vm {

// A 24 x 24 picture (drawn at twice the density for sharp screens). Tool
// names give the tool's picture; the option bar adds "NewSelection",
// "AddSelection", "SubSelection", "AndSelection", the gradient kinds
// "LinearGradient", "RoundGradient", "AngleGradient", "SymmetricalGradient",
// "DiamondGradient", and "ZoomIn", "ZoomOut". A null pixmap for other names.
QPixmap ToolPicture(const QString& Name);
QIcon ToolIcon(const QString& Name);

// The cursor of a name, cached. An unknown name gives the arrow.
QCursor ToolCursor(const QString& Name);
// Whether a name is one of the drawn cursors.
bool HasToolCursor(const QString& Name);

} // namespace vm
