#include "core/FileFamilies.h"

#include "core/PixelFormat.h"

#include <map>

namespace vm {

QString GetExtensionList(int32_t format) {
    static const char* const lists[] = {
        nullptr,
        "bmp,dib",
        "jpg,jpeg,jpe,jfif",
        "png",
        "gif",
        "tif,tiff",
        "ico",
        "wmf",
        "emf",
        "psd",
        "tga,vda,ict,vst",
        "pcx,pcc",
        "dds",
        "pnm,pbm,pgm,ppm,pfm,pam",
        "sct",
        "sgi,rgb,bw,icon",
        "ras,im1,im8,im24,im32",
        "rsb",
        "wbm",
        "iff",
        "xbm,bitmap",
        "xwd",
        "ska",
        "pcd",
        "fit,fits",
        "dcm,dicom",
    };
    if (format < 1 || format > 25) return QStringLiteral("Unknown");
    return QString::fromLatin1(lists[format]);
}

QString FileFilter::QtFilter() const {
    const qsizetype open = Text.lastIndexOf(QLatin1Char('('));
    const QString caption = open > 0 ? Text.left(open).trimmed() : Text;
    return caption + QStringLiteral(" (") + Patterns.join(QLatin1Char(' ')) + QLatin1Char(')');
}

namespace {

FileFilter Row(const QString& caption, const QStringList& exts, int32_t format) {
    FileFilter f;
    QStringList patterns;
    for (const QString& e : exts)
        patterns << QStringLiteral("*.") + e;
    f.Patterns = patterns;
    f.Text = caption + QStringLiteral(" (") + patterns.join(QLatin1Char(';')) + QLatin1Char(')');
    f.Format = format;
    return f;
}

// One row a family, by its code, with the caption the dialogs show.
const std::map<int32_t, FileFilter>& FamilyRows() {
    static const std::map<int32_t, FileFilter> rows = [] {
        std::map<int32_t, FileFilter> m;
        m[RawBmp] = Row("Bmp", {"bmp", "rle", "dib"}, RawBmp);
        m[RawJpeg] = Row("Jpeg", {"jpg", "jpeg", "jpe", "jfif"}, RawJpeg);
        m[RawPng] = Row("Png", {"png"}, RawPng);
        m[RawGif] = Row("CompuServe Gif", {"gif"}, RawGif);
        m[RawTiff] = Row("Tiff", {"tif", "tiff"}, RawTiff);
        m[RawIco] = Row("Ico", {"ico"}, RawIco);
        m[RawTga] = Row("Targa", {"tga", "vda", "ict", "vst"}, RawTga);
        m[RawPcx] = Row("Zsoft Pcx", {"pcx", "pcc"}, RawPcx);
        m[RawRas] = Row("Sun Raster", {"ras", "im1", "im8", "im24", "im32"}, RawRas);
        m[RawSgi] = Row("Silicon Graphics IRIS", {"sgi", "rgb", "bw", "icon"}, RawSgi);
        m[RawIff] = Row("ANIM Iff", {"iff"}, RawIff);
        m[RawPnm] = Row(QStringLiteral("便携位图"), {"pbm", "pgm", "pnm", "ppm", "pfm", "pam"}, RawPnm);
        m[RawPsd] = Row("Photoshop", {"psd"}, RawPsd);
        m[RawXwd] = Row(QStringLiteral("X Windows 转存"), {"xwd"}, RawXwd);
        m[RawSct] = Row("Scitex CT", {"sct"}, RawSct);
        m[RawFits] = Row(QStringLiteral("灵活图像传输系统"), {"fit", "fits"}, RawFits);
        m[RawDicom] = Row("DICOM", {"dcm", "dicom"}, RawDicom);
        m[RawDds] = Row("DirectDraw Surface", {"dds"}, RawDds);
        m[RawRsb] = Row("Red Storm", {"rsb"}, RawRsb);
        m[RawPcd] = Row("Photo CD", {"pcd"}, RawPcd);
        m[RawSka] = Row("Ska", {"ska"}, RawSka);
        m[RawWbm] = Row(QStringLiteral("无线位图"), {"wbm", "wbmp"}, RawWbm);
        m[RawXbm] = Row("X Bitmap", {"xbm", "bitmap"}, RawXbm);
        // Two blanks before the parenthesis: the caption has always read so.
        m[RawWmf] = Row("Microsoft Metafile ", {"wmf"}, RawWmf);
        m[RawEmf] = Row("Microsoft Enhanced Metafile", {"emf"}, RawEmf);
        return m;
    }();
    return rows;
}

} // namespace

const QList<FileFilter>& OpenFilterList() {
    static const QList<FileFilter> list = [] {
        const int32_t order[] = {RawBmp, RawJpeg, RawPng, RawGif, RawTiff, RawIco, RawTga,  RawPcx,   RawRas,
                                 RawSgi, RawIff,  RawPnm, RawPsd, RawXwd,  RawSct, RawFits, RawDicom, RawDds,
                                 RawRsb, RawPcd,  RawSka, RawWbm, RawXbm,  RawWmf, RawEmf};
        QStringList all;
        for (int32_t code = 1; code <= 25; ++code) {
            for (const QString& e : GetExtensionList(code).split(QLatin1Char(',')))
                all << e;
            if (code == RawBmp) all << QStringLiteral("rle");
        }
        QList<FileFilter> l;
        l << Row(QStringLiteral("所有支持格式"), all, 0);
        for (int32_t code : order)
            l << FamilyRows().at(code);
        FileFilter any;
        any.Text = QStringLiteral("所有文件 (*.*)");
        any.Patterns = {QStringLiteral("*")};
        l << any;
        return l;
    }();
    return list;
}

static QList<int32_t> SaveAsCodes(uint32_t pixelFormat) {
    switch (pixelFormat) {
    case PixelFormat32bppARGB:
        return {RawBmp, RawJpeg, RawPng, RawTiff, RawIco, RawTga, RawRas, RawSgi, RawDds};
    case PixelFormat24bppRGB:
        return {RawBmp, RawJpeg, RawPng, RawTiff, RawIco, RawTga,  RawPcx, RawRas,
                RawSgi, RawIff,  RawPnm, RawXwd,  RawSct, RawFits, RawRsb};
    case PixelFormat8bppGray:
        return {RawBmp, RawPng, RawGif, RawTiff, RawIco, RawTga,  RawPcx, RawRas,
                RawSgi, RawIff, RawPnm, RawXwd,  RawSct, RawFits, RawSka};
    case PixelFormat8bppIndexed:
        return {RawBmp, RawPng, RawGif, RawTiff, RawIco, RawTga,
                RawPcx, RawRas, RawIff, RawXwd,  RawSct, RawSka};
    case PixelFormat4bppIndexed:
        return {RawBmp, RawPng, RawGif, RawTiff, RawIco, RawPcx};
    case PixelFormat1bppIndexed:
        return {RawBmp, RawPng, RawGif, RawTiff, RawIco, RawPcx, RawRas, RawIff, RawPnm, RawWbm, RawXbm};
    default:
        return {};
    }
}

QList<FileFilter> SaveAsFilterList(uint32_t pixelFormat) {
    QList<FileFilter> l;
    for (int32_t code : SaveAsCodes(pixelFormat))
        l << FamilyRows().at(code);
    return l;
}

int SaveAsIndexOf(uint32_t pixelFormat, int32_t format) {
    const int i = static_cast<int>(SaveAsCodes(pixelFormat).indexOf(format));
    return i < 0 ? 0 : i;
}

} // namespace vm
