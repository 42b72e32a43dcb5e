#pragma once
#include "core/MessageBox.h"

class QWidget;

namespace vm {

// Shows a request as a modal dialog with the system's Chinese captions, its
// icon and, when asked, a check box. Answers the pressed button.
int ShowMessageDialog(MessageRequest& Request, QWidget* Parent = nullptr);
// Makes the dialog the handler of every MessageBox call of the logic.
void InstallGuiMessageBox();

} // namespace vm
