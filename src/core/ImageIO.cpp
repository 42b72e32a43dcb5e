// Choosing a parser: reading by content in a fixed order, writing by the
// family code the caller passes.
#include "core/AppSettings.h"
#include "core/Image.h"
#include "core/StartUp.h"
#include "formats/ParserRegistry.h"

#include <QDir>
#include <QFileInfo>

namespace vm {

SaveOptions SaveOptions::Remembered(const CImage& image) {
    SaveOptions o;
    o.FileSystem = image.BmpFileSystem;
    o.FlipRow = image.BmpFlipRow;
    o.Compress = image.RleCompress;
    o.Bmp16Format = image.Bmp16PixelFormat;
    o.Author = image.AuthorInformation;
    o.Comment = image.FileComment;
    o.SurfaceFormat = image.RawDdsFileFormat;
    o.StoreWay = image.PnmStoreWay;
    return o;
}

bool CImage::LoadPictureFromFile(const QString& fileName, int32_t frameIndex) {
    DisposeResource();
    if (!FileExists(fileName)) return false;
    for (const ParserEntry& parser : Parsers()) {
        if (parser.Load(fileName, *this, frameIndex)) return true;
        // A parser that gave up half way must not leave pixels behind for the next.
        DisposeResource();
    }
    return false;
}

bool CImage::SavePictureToFile(const QString& fileName, int32_t format, const SaveOptions& options) {
    QString path = fileName;
    if (Globals().UseUpperCase) {
        // Only the name is raised: the folders above it are the user's and on
        // this system their case is significant.
        const QFileInfo info(fileName);
        path = info.dir().filePath(info.fileName().toUpper());
        if (info.path() == QLatin1String(".") && !fileName.startsWith(QLatin1String("./")))
            path = info.fileName().toUpper();
    }
    if (format < 1 || format > 24) return false;
    const ParserEntry* parser = ParserFor(format);
    if (!parser || !parser->Save) return false;
    return parser->Save(path, *this, options);
}

} // namespace vm
