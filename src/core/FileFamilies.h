#pragma once
// The file families as the dialogs and the writers see them: extensions, the
// open and save-as filter lists, and the map from a save-as row to its code.
#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>

namespace vm {

// Comma-separated extensions of a family; "Unknown" for any other code.
QString GetExtensionList(int32_t Format);

struct FileFilter {
    QString Text;         // as the dialog shows it, e.g. "Bmp (*.bmp;*.rle;*.dib)"
    QStringList Patterns; // "*.bmp", "*.rle", "*.dib"
    int32_t Format = 0;   // the family code, 0 for the "all" rows
    // The same row in the form Qt's file dialogs read: blanks between patterns.
    QString QtFilter() const;
};

// Open offers "所有支持格式" first, a row a family, "所有文件" last.
const QList<FileFilter>& OpenFilterList();
// Save As offers the families that can hold the pixel format, in the dialog's
// order; the row's Format is the code passed to the writer.
QList<FileFilter> SaveAsFilterList(uint32_t PixelFormat);
// The row of a save-as list to preselect for a family; 0 when it is not there.
int SaveAsIndexOf(uint32_t PixelFormat, int32_t Format);

} // namespace vm
