#pragma once
// The 确定 and 取消 row every dialog of the editor ends with.
#include <QBoxLayout>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>

namespace vm {

// Adds the row to Layout: OK accepts Dialog (through its own accept, where it
// has one), Cancel rejects it.
inline QDialogButtonBox* AddOkCancelButtons(QDialog* Dialog, QBoxLayout* Layout) {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("确定"));
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("取消"));
    QObject::connect(buttons, &QDialogButtonBox::accepted, Dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, Dialog, &QDialog::reject);
    Layout->addWidget(buttons);
    return buttons;
}

} // namespace vm
