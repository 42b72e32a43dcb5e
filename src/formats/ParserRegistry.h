#pragma once
// The file families as the dispatcher sees them. Each family is one entry,
// defined beside its parser: its signature test, its loader and writer over
// bytes, whether a picture may be saved back into it, and its writer options
// declared as the operation catalogue declares parameters. The save dialog,
// `vellumark-cli convert --option` and the defaults all read these
// declarations; nothing else writes a range or a default.
//
// The dispatcher (LoadPictureFile, WritePicture and the family helpers below)
// does what the families share: reading the file once, setting FileName and
// RawImageFormat, writing through a temporary file that replaces the target
// only when complete, the preview of the open dialog, and catching an
// allocation failure at the boundary of an open or a save.
#include "core/Image.h"

#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

class QPainter;

namespace vm {

struct SaveOptionChoice {
    int32_t Value = 0;
    QString Caption;
};

struct SaveOptionSpec {
    enum Kind { Number, Switch, Choice };
    QString Key;   // the --option key
    QString Label; // what the dialog and the messages call it
    Kind Type = Number;
    int32_t Min = 0, Max = 1, Default = 0; // Number: the range; Switch: 0 and 1
    QList<SaveOptionChoice> Choices;       // Choice: the values and their captions
    // The name under which the save dialog keeps the user's last choice; empty
    // when it is not kept.
    QString SettingKey;
    // The value the picture's own file used, read when it is written back to
    // its family; null when the file does not tell.
    std::function<int32_t(const CImage&)> Remembered;
    // Whether the option means anything for the picture (the 16-bit layouts
    // for a 16-bit block only); null: always.
    std::function<bool(const CImage&)> AppliesTo;
    // The choices a picture can take (fax codings on 1 bit only); null: all.
    std::function<bool(int32_t Value, const CImage&)> Fits;
    // The option only counts while another one has this value (the row order
    // only for the Windows header).
    QString EnabledWhenKey;
    int32_t EnabledWhenValue = 0;

    // A value this declaration allows, regardless of the picture.
    bool Accepts(int32_t Value) const;
    // The value clamped into the range, or the default for an unknown choice.
    int32_t Clamped(int32_t Value) const;
    // The value a set of options holds for this key, or the default.
    int32_t ValueIn(const SaveOptions& Options) const { return Options.Int(Key, Default); }
};

struct LoadOptions {
    // In: the frame (page) asked for. Out: the frame opened; a number out of
    // range opens the last.
    int32_t Frame = 0;
};

struct FileFamily {
    int32_t Code = 0;
    const char* Name = "";
    // Looks at the bytes of a whole file.
    bool (*Signature)(const QByteArray& Bytes) = nullptr;
    // Fills the image from bytes that passed the signature; false when the
    // bytes do not hold a picture this program can open. FileName and
    // RawImageFormat are the dispatcher's.
    bool (*Load)(const QByteArray& Bytes, CImage& Image, LoadOptions& Options) = nullptr;
    // The whole file's bytes for a picture, every option present. False with
    // Error, in the user's words, when the family cannot store the picture.
    // Null for the families that cannot be written.
    bool (*Save)(const CImage& Image, const SaveOptions& Options, QByteArray& Out, QString& Error) = nullptr;
    // Frames (pages) of a file; null for the families of one picture.
    int32_t (*FrameCount)(const QByteArray& Bytes) = nullptr;
    // Whether Save writes a picture back into its own family without loss of
    // what the family holds (the metafiles are written as one bitmap, so a
    // plain save must go through Save As).
    bool SavesBack = true;
    std::vector<SaveOptionSpec> Options;

    const SaveOptionSpec* Option(const QString& Key) const;
};
// The name the callers have always used.
using ParserEntry = FileFamily;

// Every family, in the order loading tries them.
const std::vector<const FileFamily*>& Parsers();
const FileFamily* ParserFor(int32_t Code);
// The first family whose signature accepts the bytes, or null.
const FileFamily* ParserOf(const QByteArray& Bytes);

// ---- the dispatcher

enum class FileResult {
    Done,
    Missing,      // no such file, or it cannot be read
    Unrecognised, // no family takes the bytes, or the family's loader refuses them
    NoWriter,     // the family has no writer
    Refused,      // the writer cannot store the picture; Message says why
    WriteFailed,  // the file system refused the write
    OutOfMemory,
};
struct FileOutcome {
    FileResult Result = FileResult::Done;
    QString Message;
    bool Ok() const { return Result == FileResult::Done; }
};

// Opens a file by its content. No message is shown: the caller reports.
FileOutcome OpenPicture(const QString& File, CImage& Image, int32_t& Frame);
// Opens a file with one family only.
FileOutcome OpenPictureAs(const FileFamily& Family, const QString& File, CImage& Image, int32_t& Frame);
// Writes a picture in a family: options completed from the declarations, the
// bytes to a temporary file renamed over File only on success, and
// RawImageFormat set when it was 0. No message is shown.
FileOutcome WritePicture(const FileFamily& Family, const QString& File, CImage& Image,
                         const SaveOptions& Options);

// Whether a family recognises a file; false for a file that cannot be read.
bool FamilyRecognises(const FileFamily& Family, const QString& File);
// The frames of a file in a family; 1 for the families of one picture, 0
// when the file is not of the family.
int32_t FamilyFrameCount(const FileFamily& Family, const QString& File);
// The open dialog's preview: load, draw into a 128 x 128 box, report the
// size and the depth the file was stored with.
bool FamilyThumbAndInfo(const FileFamily& Family, const QString& File, QPainter* Graphics, int32_t& Width,
                        int32_t& Height, int32_t& BitDepth);
// The parser classes' load and save by file, with the messages of the
// system for what went wrong.
bool LoadFamilyFile(const FileFamily& Family, const QString& File, CImage& Image, int32_t& Frame);
bool SaveFamilyFile(const FileFamily& Family, const QString& File, CImage& Image, const SaveOptions& Options);

// Every declared option of a family for a picture: what Given sets, else what
// the picture's file used when it is written back to its family, else (with
// UseSettings) the save dialog's kept choice, else the default. Values that a
// declaration does not allow, or that do not fit the picture, fall back the
// same way.
SaveOptions ResolveSaveOptions(const FileFamily& Family, const CImage& Image, const SaveOptions& Given,
                               bool UseSettings);
// The path a save lands on: with the setting UseUpperCase the file's name
// (not its folders) in upper case.
QString SavePathFor(const QString& File);
// The section of the settings where the save dialog keeps its choices.
QString SaveSettingSection();

} // namespace vm
