#pragma once
// Small helpers the editor's tests share: raw bytes to compare, canvases and
// plain pictures to start from, and pasting a picture into a main window.
#include "app/FrmMain.h"
#include "canvas/Canvas.h"
#include "core/Image.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

namespace vmtest {

// The image's whole pixel block, row padding included.
inline QByteArray Bytes(const vm::CImage& image) {
    return QByteArray(reinterpret_cast<const char*>(image.Pointer()),
                      static_cast<qsizetype>(image.BlockSize()));
}

inline QByteArray MaskBytes(const vm::CSelection& s) {
    return QByteArray(reinterpret_cast<const char*>(s.Pointer()), static_cast<qsizetype>(s.BufferSize()));
}

inline QImage Solid(int w, int h, QColor colour, QImage::Format f = QImage::Format_RGB888) {
    QImage q(w, h, f);
    q.fill(colour);
    return q;
}

// An 8-bit grey picture of one level.
inline std::unique_ptr<vm::CImage> Grey(int w, int h, uint8_t level = 0) {
    auto g = std::make_unique<vm::CImage>();
    g->CreateNewImage(w, h, 8);
    for (int y = 0; y < h; ++y)
        std::memset(g->Row(y), level, static_cast<size_t>(w));
    return g;
}

// A canvas whose view is exactly ViewW x ViewH while no scroll bar shows.
inline std::unique_ptr<vm::Canvas> MakeCanvas(int viewW, int viewH) {
    auto c = std::make_unique<vm::Canvas>();
    c->SetShowRuler(false);
    c->resize(viewW, viewH + vm::Canvas::StripHeight);
    return c;
}
inline std::unique_ptr<vm::Canvas> MakeCanvas(int viewW, int viewH, const QImage& picture) {
    auto c = MakeCanvas(viewW, viewH);
    EXPECT_TRUE(c->LoadPictureFormStdPicture(picture));
    return c;
}

// Edit > Paste of Picture, which opens it as a new document.
inline vm::Canvas* Paste(vm::FrmMain& w, const QImage& picture) {
    QGuiApplication::clipboard()->setImage(picture);
    w.OnMenu(QStringLiteral("Edit"), 6);
    return w.ActiveCanvas();
}

} // namespace vmtest
