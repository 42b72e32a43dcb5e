#pragma once
// The one message dialog of the system. The logic calls MessageBox; the front
// end decides what it is: a real dialog in the editor, standard error in the
// command-line tool, a recorder in the tests.
#include <QString>
#include <QStringList>

#include <functional>

namespace vm {

// Button sets.
enum MessageButtons : int {
    ButtonsOk = 0,            // "确定"
    ButtonsConfirmCancel = 1, // "确认" "取消"
    ButtonsYesNo = 2,         // "是(&Y)" "否(&N)"
    ButtonsYesNoCancel = 3,   // "是(&Y)" "否(&N)" "取消(&C)"
    ButtonsYesNoAppend = 4,   // "是(&Y)" "否(&N)" "追加(&A)"
};

// Answers: the number of the pressed button.
enum MessageResult : int {
    ResultOk = 1,
    ResultCancel = 2,
    ResultAppend = 3,
    ResultYes = 6,
    ResultNo = 7,
};

// Icons by resource number; the first four also sound.
enum MessageIcon : int {
    IconNone = 0,
    IconQuestion = 101,    // sound "Normal"
    IconCritical = 102,    // sound "CRITICAL"
    IconExclamation = 103, // sound "EXCLAMATION"
    IconInformation = 104, // sound "INFORMATION"
};

struct MessageRequest {
    QString Text;
    int Flags = 0;
    QString Title; // already with the program's name when it was empty
    int Buttons = ButtonsOk;
    int Icon = IconNone;
    QString CheckText;
    bool CheckState = false; // the check box's state on entry
};

// Title of a message whose caller gave none.
inline const QString DefaultMessageTitle = QStringLiteral("Osier VelluMark 2.0");

// Captions of the buttons of a set, in the order they are shown, with the
// answer each gives. Any unknown set is an OK box.
struct MessageButton {
    QString Caption;
    int Result;
};
QList<MessageButton> ButtonsOf(int Buttons);

// A handler shows the request and answers the pressed button; it may change
// CheckState.
using MessageHandler = std::function<int(MessageRequest&)>;
// Installs the front end's handler; answers the previous one.
MessageHandler SetMessageHandler(MessageHandler Handler);

int MessageBox(const QString& Text, int Flags = 0, const QString& Title = QString(), int Buttons = ButtonsOk,
               int Icon = IconNone, const QString& CheckText = QString(), bool* CheckState = nullptr);

// The command-line front end: the text goes to standard error and the answer
// is the first button (OK, confirm or yes) — nobody is there to ask.
int StdErrMessageHandler(MessageRequest& Request);

// The tests' front end: keeps every request and answers from a queue
// (the first button when the queue is empty).
class MessageRecorder {
  public:
    MessageRecorder();
    ~MessageRecorder();
    QList<MessageRequest> Requests;
    QList<int> Answers;
    bool NextCheckState = false;
    QString LastText() const { return Requests.isEmpty() ? QString() : Requests.last().Text; }

  private:
    MessageHandler previous_;
};

} // namespace vm
