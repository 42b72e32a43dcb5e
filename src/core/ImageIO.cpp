// Choosing a family: reading by content in a fixed order, writing by the
// family code the caller passes. What every family shares happens here once.
#include "core/AppSettings.h"
#include "core/Image.h"
#include "core/MemoryGuard.h"
#include "core/MessageBox.h"
#include "core/SettingsStore.h"
#include "formats/ParserCommon.h"
#include "formats/ParserRegistry.h"

#include <QDir>
#include <QFileInfo>

#include <new>

namespace vm {

namespace {

// Runs a loader on bytes that passed its family's signature. A loader that
// gave up half way must not leave pixels behind, nor a block that an
// allocation failure interrupted.
FileOutcome LoadBytes(const FileFamily& family, const QByteArray& bytes, const QString& file, CImage& image,
                      int32_t& frame) {
    LoadOptions options;
    options.Frame = frame;
    try {
        if (!family.Load(bytes, image, options)) {
            image.DisposeResource();
            return {FileResult::Unrecognised, {}};
        }
    } catch (const std::bad_alloc&) {
        image.DisposeResource();
        return {FileResult::OutOfMemory, OutOfMemoryMessage()};
    }
    frame = options.Frame;
    image.FileName = file;
    image.RawImageFormat = family.Code;
    return {};
}

bool ReadFile(const QString& file, QByteArray& bytes) {
    return QFileInfo(file).isFile() && ReadWholeFile(file, bytes);
}

void Report(const FileOutcome& outcome) {
    if (outcome.Result == FileResult::OutOfMemory)
        ReportOutOfMemory();
    else if (outcome.Result == FileResult::Refused && !outcome.Message.isEmpty())
        MessageBox(outcome.Message, 0, QString(), ButtonsOk, IconExclamation);
}

} // namespace

QString SaveSettingSection() {
    return QStringLiteral("SaveSetting");
}

// The file's bytes, or why there are none: a missing file, or one too large
// for the memory left.
static FileOutcome ReadWhole(const QString& file, QByteArray& bytes) {
    try {
        if (!ReadFile(file, bytes)) return {FileResult::Missing, {}};
    } catch (const std::bad_alloc&) {
        return {FileResult::OutOfMemory, OutOfMemoryMessage()};
    }
    return {FileResult::Done, {}};
}

FileOutcome OpenPicture(const QString& file, CImage& image, int32_t& frame) {
    image.DisposeResource();
    QByteArray bytes;
    if (const FileOutcome read = ReadWhole(file, bytes); read.Result != FileResult::Done) return read;
    for (const FileFamily* family : Parsers()) {
        if (!family->Signature(bytes)) continue;
        const FileOutcome outcome = LoadBytes(*family, bytes, file, image, frame);
        // A family that does not take the bytes passes them on; running out of
        // memory ends the search, since the next family would not fare better.
        if (outcome.Result != FileResult::Unrecognised) return outcome;
    }
    return {FileResult::Unrecognised, {}};
}

FileOutcome OpenPictureAs(const FileFamily& family, const QString& file, CImage& image, int32_t& frame) {
    image.DisposeResource();
    QByteArray bytes;
    if (const FileOutcome read = ReadWhole(file, bytes); read.Result != FileResult::Done) return read;
    if (!family.Signature(bytes)) return {FileResult::Unrecognised, {}};
    return LoadBytes(family, bytes, file, image, frame);
}

SaveOptions ResolveSaveOptions(const FileFamily& family, const CImage& image, const SaveOptions& given,
                               bool useSettings) {
    SaveOptions out;
    const bool sameFamily = image.RawImageFormat == family.Code;
    for (const SaveOptionSpec& declared : family.Options) {
        auto fits = [&](int32_t v) {
            return declared.Accepts(v) && (!declared.Fits || declared.Fits(v, image));
        };
        int32_t value = declared.Default;
        if (!declared.AppliesTo || declared.AppliesTo(image)) {
            if (sameFamily && declared.Remembered && fits(declared.Remembered(image)))
                value = declared.Remembered(image);
            else if (useSettings && !declared.SettingKey.isEmpty()) {
                const int32_t kept =
                    GetSettingInt(SettingsRoot, SaveSettingSection(), declared.SettingKey, declared.Default);
                if (fits(kept)) value = kept;
            }
        }
        // A value given by the caller is the writer's to judge: an unknown
        // compression is refused there, a quality beyond the range clamped.
        out.Set(declared.Key, given.Has(declared.Key) ? given.Int(declared.Key) : value);
    }
    return out;
}

FileOutcome WritePicture(const FileFamily& family, const QString& file, CImage& image,
                         const SaveOptions& options) {
    if (!family.Save) return {FileResult::NoWriter, {}};
    if (!image.Pointer()) return {FileResult::WriteFailed, {}};
    try {
        QByteArray bytes;
        QString error;
        const SaveOptions complete = ResolveSaveOptions(family, image, options, false);
        if (!family.Save(image, complete, bytes, error))
            return {error.isEmpty() ? FileResult::WriteFailed : FileResult::Refused, error};
        // The temporary file lives beside the target and replaces it only
        // when every byte is written: a failed save never destroys the file.
        if (!WriteFileAtomically(file, bytes)) return {FileResult::WriteFailed, {}};
    } catch (const std::bad_alloc&) {
        return {FileResult::OutOfMemory, OutOfMemoryMessage()};
    }
    if (image.RawImageFormat == RawNone) image.RawImageFormat = family.Code;
    return {};
}

bool FamilyRecognises(const FileFamily& family, const QString& file) {
    QByteArray bytes;
    return ReadFile(file, bytes) && family.Signature(bytes);
}

int32_t FamilyFrameCount(const FileFamily& family, const QString& file) {
    QByteArray bytes;
    if (!ReadFile(file, bytes) || !family.Signature(bytes)) return 0;
    return family.FrameCount ? family.FrameCount(bytes) : 1;
}

bool FamilyThumbAndInfo(const FileFamily& family, const QString& file, QPainter* graphics, int32_t& width,
                        int32_t& height, int32_t& bitDepth) {
    return ThumbAndInfo(
        [&](CImage& image) {
            int32_t frame = 0;
            return OpenPictureAs(family, file, image, frame).Ok();
        },
        graphics, width, height, bitDepth);
}

bool LoadFamilyFile(const FileFamily& family, const QString& file, CImage& image, int32_t& frame) {
    const FileOutcome outcome = OpenPictureAs(family, file, image, frame);
    Report(outcome);
    return outcome.Ok();
}

bool SaveFamilyFile(const FileFamily& family, const QString& file, CImage& image,
                    const SaveOptions& options) {
    const FileOutcome outcome = WritePicture(family, file, image, options);
    Report(outcome);
    return outcome.Ok();
}

bool CImage::LoadPictureFromFile(const QString& fileName, int32_t frameIndex) {
    const FileOutcome outcome = OpenPicture(fileName, *this, frameIndex);
    Report(outcome);
    return outcome.Ok();
}

QString SavePathFor(const QString& fileName) {
    if (!Globals().UseUpperCase) return fileName;
    // Only the name is raised: the folders above it are the user's and on
    // this system their case is significant.
    const QFileInfo info(fileName);
    if (info.path() == QLatin1String(".") && !fileName.startsWith(QLatin1String("./")))
        return info.fileName().toUpper();
    return info.dir().filePath(info.fileName().toUpper());
}

bool CImage::SavePictureToFile(const QString& fileName, int32_t format, const SaveOptions& options) {
    const QString path = SavePathFor(fileName);
    if (format < 1 || format > 24) return false;
    const FileFamily* family = ParserFor(format);
    if (!family) return false;
    return SaveFamilyFile(*family, path, *this, options);
}

} // namespace vm
