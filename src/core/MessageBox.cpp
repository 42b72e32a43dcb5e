#include "core/MessageBox.h"

#include <cstdio>

namespace vm {

namespace {
MessageHandler& CurrentHandler() {
    static MessageHandler handler = StdErrMessageHandler;
    return handler;
}
} // namespace

QList<MessageButton> ButtonsOf(int buttons) {
    switch (buttons) {
    case ButtonsConfirmCancel:
        return {{QStringLiteral("确认"), ResultOk}, {QStringLiteral("取消"), ResultCancel}};
    case ButtonsYesNo:
        return {{QStringLiteral("是(&Y)"), ResultYes}, {QStringLiteral("否(&N)"), ResultNo}};
    case ButtonsYesNoCancel:
        return {{QStringLiteral("是(&Y)"), ResultYes},
                {QStringLiteral("否(&N)"), ResultNo},
                {QStringLiteral("取消(&C)"), ResultCancel}};
    case ButtonsYesNoAppend:
        return {{QStringLiteral("是(&Y)"), ResultYes},
                {QStringLiteral("否(&N)"), ResultNo},
                {QStringLiteral("追加(&A)"), ResultAppend}};
    default:
        return {{QStringLiteral("确定"), ResultOk}};
    }
}

MessageHandler SetMessageHandler(MessageHandler handler) {
    MessageHandler previous = CurrentHandler();
    CurrentHandler() = handler ? std::move(handler) : MessageHandler(StdErrMessageHandler);
    return previous;
}

int MessageBox(const QString& text, int flags, const QString& title, int buttons, int icon,
               const QString& checkText, bool* checkState) {
    MessageRequest request;
    request.Text = text;
    request.Flags = flags;
    request.Title = title.isEmpty() ? DefaultMessageTitle : title;
    request.Buttons = buttons;
    request.Icon = icon;
    request.CheckText = checkText;
    request.CheckState = checkState ? *checkState : false;
    const int answer = CurrentHandler()(request);
    if (checkState && !checkText.isEmpty()) *checkState = request.CheckState;
    return answer;
}

int StdErrMessageHandler(MessageRequest& request) {
    const QByteArray text = request.Text.toUtf8();
    std::fprintf(stderr, "%s\n", text.constData());
    std::fflush(stderr);
    return ButtonsOf(request.Buttons).first().Result;
}

MessageRecorder::MessageRecorder() {
    previous_ = SetMessageHandler([this](MessageRequest& request) {
        Requests.append(request);
        request.CheckState = NextCheckState;
        if (!Answers.isEmpty()) return Answers.takeFirst();
        return ButtonsOf(request.Buttons).first().Result;
    });
}

MessageRecorder::~MessageRecorder() {
    SetMessageHandler(previous_);
}

} // namespace vm
