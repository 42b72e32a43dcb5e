#pragma once
// What every fuzz target shares: the input reaches the parser through a file,
// as the editor meets it, and a broken promise ends the run at once.
#include <QFile>
#include <QGuiApplication>
#include <QString>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

namespace vmfuzz {

// The run's folder with an input and an output file of the extension.
struct Files {
    explicit Files(const char* Extension)
        : Input(dir_.filePath(QStringLiteral("input.") + QLatin1String(Extension))),
          Output(dir_.filePath(QStringLiteral("output.") + QLatin1String(Extension))) {}
    bool Write(const uint8_t* Data, size_t Size) const {
        QFile f(Input);
        return f.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
               f.write(reinterpret_cast<const char*>(Data), static_cast<qint64>(Size)) ==
                   static_cast<qint64>(Size);
    }

  private:
    QTemporaryDir dir_;

  public:
    const QString Input;
    const QString Output;
};

inline void Check(bool Condition) {
    if (!Condition) std::abort();
}

// Text records of the metafiles need the font database of a GUI application;
// the offscreen platform needs no display.
inline void EnsureGuiApplication() {
    static int argc = 1;
    static char name[] = "vellumark-fuzz";
    static char* argv[] = {name, nullptr};
    static QGuiApplication* app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QGuiApplication(argc, argv);
    }();
    (void)app;
}

} // namespace vmfuzz
