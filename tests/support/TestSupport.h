#pragma once
// Shared by the test programs: temporary folders, running other programs,
// and reading a picture through ImageMagick's own decoder for comparison.
#include "core/Image.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

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
// The image's pixels as straight RGBA (through GetRGB32Image and its palette).
QImage ToRgba(const vm::CImage& Image);
// Number of pixels that differ by more than Tolerance in any channel; with
// CompareAlpha false only colour is compared.
long long CountDifferences(const QImage& A, const QImage& B, int Tolerance = 0, bool CompareAlpha = true);
// A random picture of the given depth, same seed same picture.
std::unique_ptr<vm::CImage> RandomImage(int Width, int Height, int BitCount, unsigned Seed);

} // namespace vmtest
