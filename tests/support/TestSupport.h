#pragma once
// Shared by the test programs: temporary folders, running other programs,
// reading a picture through ImageMagick's own decoder for comparison, and the
// small fixtures several folders need.
#include "core/Image.h"
#include "core/ImageListener.h"
#include "selection/Selection.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <memory>

namespace vmtest {

// A temporary folder that lives as long as the test.
QString TempDir();
// Runs a program; answers its exit code, -1 when it could not be started.
int Run(const QString& Program, const QStringList& Args, QByteArray* StdOut = nullptr,
        QByteArray* StdErr = nullptr);
// Decodes File with ImageMagick into straight 8-bit RGBA, top row first.
// A null image when ImageMagick refused it.
QImage DecodeWithMagick(const QString& File);
// The image's pixels as straight RGBA; palette entries give their alpha only
// with PaletteAlpha, else they are opaque.
QImage ToRgba(const vm::CImage& Image, bool PaletteAlpha = false);
// Number of pixels that differ by more than Tolerance in any channel; with
// CompareAlpha false only colour is compared.
long long CountDifferences(const QImage& A, const QImage& B, int Tolerance = 0, bool CompareAlpha = true);
// A random picture of the given depth, same seed same picture.
std::unique_ptr<vm::CImage> RandomImage(int Width, int Height, int BitCount, unsigned Seed);

// Points XDG_CONFIG_HOME at a fresh folder while it lives, so that the
// settings store starts empty and writes nowhere else.
class ConfigHome {
  public:
    ConfigHome();
    ~ConfigHome();
    QTemporaryDir Dir;

  private:
    bool hadOld_;
    QByteArray old_;
};

// An image's progress events, one line each: "start <restrain> <name> <kind>"
// and "end <restrain> <name> <kind>", the end's extra text appended when set.
struct ImageEventLog : vm::IImageListener {
    QStringList Lines;
    void ProgressStart(bool Restrain, const QString& Name, int Kind) override;
    void ProgressEnd(bool Restrain, const QString& Name, int Kind, const QString& Extra) override;
};

// Makes Sel a real W x H selection holding Weight(x, y), without events.
void SetMask(vm::CSelection& Sel, int W, int H, const std::function<int(int, int)>& Weight);

} // namespace vmtest
