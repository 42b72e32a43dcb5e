#pragma once
// The editor's icon, drawn by our own code: a framed landscape under a dashed
// selection outline. packaging/vellumark.svg is the same picture for the desktop.
#include <QIcon>
#include <QImage>

namespace vm {

QImage DrawAppIcon(int Size);
QIcon MakeAppIcon();

} // namespace vm
