#include "app/GuiMessageBox.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace vm {

int ShowMessageDialog(MessageRequest& request, QWidget* parent) {
    if (!parent) parent = QApplication::activeWindow();
    QDialog dialog(parent);
    dialog.setWindowTitle(request.Title);
    dialog.setModal(true);
    auto* outer = new QVBoxLayout(&dialog);
    auto* body = new QHBoxLayout;
    outer->addLayout(body);

    QStyle::StandardPixmap pixmap = QStyle::SP_CustomBase;
    switch (request.Icon) {
    case IconQuestion:
        pixmap = QStyle::SP_MessageBoxQuestion;
        break;
    case IconCritical:
        pixmap = QStyle::SP_MessageBoxCritical;
        break;
    case IconExclamation:
        pixmap = QStyle::SP_MessageBoxWarning;
        break;
    case IconInformation:
        pixmap = QStyle::SP_MessageBoxInformation;
        break;
    default:
        break;
    }
    if (pixmap != QStyle::SP_CustomBase) {
        auto* icon = new QLabel;
        const int size = dialog.style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
        icon->setPixmap(dialog.style()->standardIcon(pixmap).pixmap(size, size));
        icon->setAlignment(Qt::AlignTop);
        body->addWidget(icon);
        // The four message icons have a sound of their own; it never waits.
        QApplication::beep();
    }
    auto* text = new QLabel(request.Text);
    text->setWordWrap(true);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    text->setMinimumWidth(280);
    body->addWidget(text, 1);

    QCheckBox* check = nullptr;
    if (!request.CheckText.isEmpty()) {
        check = new QCheckBox(request.CheckText);
        check->setChecked(request.CheckState);
        outer->addWidget(check);
    }

    const QList<MessageButton> buttons = ButtonsOf(request.Buttons);
    int answer = buttons.size() == 1 ? buttons.first().Result : ResultCancel;
    if (request.Buttons == ButtonsYesNo) answer = ResultNo;
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    for (int i = 0; i < buttons.size(); ++i) {
        auto* b = new QPushButton(buttons[i].Caption);
        const int result = buttons[i].Result;
        QObject::connect(b, &QPushButton::clicked, &dialog, [&dialog, &answer, result] {
            answer = result;
            dialog.accept();
        });
        if (i == 0) b->setDefault(true);
        row->addWidget(b);
    }
    outer->addLayout(row);
    dialog.exec();
    if (check) request.CheckState = check->isChecked();
    return answer;
}

void InstallGuiMessageBox() {
    SetMessageHandler([](MessageRequest& request) { return ShowMessageDialog(request); });
}

} // namespace vm
