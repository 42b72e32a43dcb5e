#pragma once
// What the fuzz harness needs: a broken promise ends the run at once, and
// the metafiles' text needs a GUI application.
#include <QGuiApplication>
#include <QString>

#include <cstdint>
#include <cstdlib>

namespace vmfuzz {

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
