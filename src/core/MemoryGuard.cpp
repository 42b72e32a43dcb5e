#include "core/MemoryGuard.h"

#include "core/MessageBox.h"

namespace vm {

QString OutOfMemoryMessage() {
    return QStringLiteral("内存不足，无法完成此操作。请关闭其他文档或程序后重试。");
}

void ReportOutOfMemory() {
    MessageBox(OutOfMemoryMessage(), 0, QStringLiteral("错误"), ButtonsOk, IconCritical);
}

} // namespace vm
