#include "formats/JpgParser.h"

#include "core/AppSettings.h"
#include "core/Numeric.h"
#include "formats/CodecCommon.h"
#include "formats/ParserCommon.h"
#include "formats/ParserRegistry.h"

#include <QFile>
#include <QPainter>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <jpeglib.h>
#include <libexif/exif-data.h>

namespace vm {

namespace {

// libjpeg reports a fatal error by calling error_exit, which must not return:
// it jumps back to the setjmp of the call that is under way. Every method that
// calls into libjpeg sets its own jump point and holds no object with a
// destructor, so the jump skips nothing that needs cleaning up.
struct JpegError {
    jpeg_error_mgr Manager;
    jmp_buf Jump;
};

[[noreturn]] void JpegErrorExit(j_common_ptr info) {
    longjmp(reinterpret_cast<JpegError*>(info->err)->Jump, 1);
}
// Warnings (a corrupt entropy segment, say) are not worth a message: the
// decoder goes on with what it has, as viewers do.
void JpegSilent(j_common_ptr) {}

class JpegReader {
  public:
    JpegReader() {
        std::memset(&info_, 0, sizeof(info_));
        info_.err = jpeg_std_error(&error_.Manager);
        error_.Manager.error_exit = JpegErrorExit;
        error_.Manager.output_message = JpegSilent;
    }
    ~JpegReader() {
        if (created_) jpeg_destroy_decompress(&info_);
    }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    bool ReadHeader(const uint8_t* data, size_t size) {
        if (setjmp(error_.Jump)) return false;
        jpeg_create_decompress(&info_);
        created_ = true;
        // The library's own working memory (a progressive file keeps every
        // coefficient of the picture) is capped like a pixel block, so that a
        // few hundred bytes cannot ask for gigabytes: beyond it the library
        // has no backing store and gives up.
        info_.mem->max_memory_to_use = MaxBlockBytes;
        jpeg_mem_src(&info_, data, static_cast<unsigned long>(size));
        jpeg_save_markers(&info_, JPEG_APP0 + 1, 0xFFFF);
        return jpeg_read_header(&info_, TRUE) == JPEG_HEADER_OK;
    }
    bool Start(J_COLOR_SPACE out) {
        if (setjmp(error_.Jump)) return false;
        info_.out_color_space = out;
        return jpeg_start_decompress(&info_) == TRUE;
    }
    bool ReadRow(uint8_t* row) {
        if (setjmp(error_.Jump)) return false;
        JSAMPROW rows[1] = {row};
        return jpeg_read_scanlines(&info_, rows, 1) == 1;
    }
    bool Finish() {
        if (setjmp(error_.Jump)) return false;
        return jpeg_finish_decompress(&info_) == TRUE;
    }
    jpeg_decompress_struct& Info() { return info_; }

  private:
    jpeg_decompress_struct info_;
    JpegError error_;
    bool created_ = false;
};

class JpegWriter {
  public:
    JpegWriter() {
        std::memset(&info_, 0, sizeof(info_));
        info_.err = jpeg_std_error(&error_.Manager);
        error_.Manager.error_exit = JpegErrorExit;
        error_.Manager.output_message = JpegSilent;
    }
    ~JpegWriter() {
        if (created_) jpeg_destroy_compress(&info_);
        std::free(buffer_);
    }
    JpegWriter(const JpegWriter&) = delete;
    JpegWriter& operator=(const JpegWriter&) = delete;

    bool Start(int32_t width, int32_t height, bool grey, int32_t quality, float resolution) {
        if (setjmp(error_.Jump)) return false;
        jpeg_create_compress(&info_);
        created_ = true;
        jpeg_mem_dest(&info_, &buffer_, &size_);
        info_.image_width = static_cast<JDIMENSION>(width);
        info_.image_height = static_cast<JDIMENSION>(height);
        info_.input_components = grey ? 1 : 3;
        info_.in_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGR;
        jpeg_set_defaults(&info_);
        jpeg_set_quality(&info_, quality, TRUE);
        info_.write_JFIF_header = TRUE;
        info_.density_unit = 1;
        const int32_t dpi = std::clamp(RoundHalfEven(resolution), 1, 65535);
        info_.X_density = static_cast<UINT16>(dpi);
        info_.Y_density = static_cast<UINT16>(dpi);
        jpeg_start_compress(&info_, TRUE);
        return true;
    }
    bool Marker(int code, const QByteArray& data) {
        if (setjmp(error_.Jump)) return false;
        jpeg_write_marker(&info_, code, reinterpret_cast<const JOCTET*>(data.constData()),
                          static_cast<unsigned int>(data.size()));
        return true;
    }
    bool WriteRow(uint8_t* row) {
        if (setjmp(error_.Jump)) return false;
        JSAMPROW rows[1] = {row};
        return jpeg_write_scanlines(&info_, rows, 1) == 1;
    }
    bool Finish(QByteArray& out) {
        if (setjmp(error_.Jump)) return false;
        jpeg_finish_compress(&info_);
        out = QByteArray(reinterpret_cast<const char*>(buffer_), static_cast<qsizetype>(size_));
        return true;
    }

  private:
    jpeg_compress_struct info_;
    JpegError error_;
    bool created_ = false;
    unsigned char* buffer_ = nullptr;
    unsigned long size_ = 0;
};

// Encodes the whole image; indexed, 16-bit and 32-bit pixels go in as colour,
// the alpha bytes are not part of a JPEG.
bool EncodeJpeg(const CImage& image, int32_t quality, float resolution, const QByteArray& exifBlock,
                QByteArray& out) {
    const bool grey = image.PixelFormat == PixelFormat8bppGray;
    JpegWriter writer;
    if (!writer.Start(image.Width(), image.Height(), grey, quality, resolution)) return false;
    if (!exifBlock.isEmpty() && !writer.Marker(JPEG_APP0 + 1, exifBlock)) return false;
    std::vector<uint8_t> row(static_cast<size_t>(image.Width()) * 3);
    for (int32_t y = 0; y < image.Height(); ++y) {
        if (grey) {
            if (!writer.WriteRow(image.Row(y))) return false;
        } else {
            RowToBgr(image, y, row.data());
            if (!writer.WriteRow(row.data())) return false;
        }
    }
    return writer.Finish(out);
}

// ---- Exif through libexif

constexpr ExifIfd DirectoryOrder[] = {EXIF_IFD_0, EXIF_IFD_EXIF, EXIF_IFD_INTEROPERABILITY, EXIF_IFD_GPS,
                                      EXIF_IFD_1};

ExifData* NewExifData() {
    ExifData* data = exif_data_new();
    if (!data) return nullptr;
    // Keep every tag as it stands: unknown tags too, and nothing added or
    // "repaired" on our behalf.
    exif_data_unset_option(data, EXIF_DATA_OPTION_IGNORE_UNKNOWN_TAGS);
    exif_data_unset_option(data, EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_set_option(data, EXIF_DATA_OPTION_DONT_CHANGE_MAKER_NOTE);
    return data;
}

// Bytes of one component that is swapped as a unit: a rational is two longs.
int SwapUnit(ExifFormat format) {
    switch (format) {
    case EXIF_FORMAT_SHORT:
    case EXIF_FORMAT_SSHORT:
        return 2;
    case EXIF_FORMAT_LONG:
    case EXIF_FORMAT_SLONG:
    case EXIF_FORMAT_FLOAT:
    case EXIF_FORMAT_RATIONAL:
    case EXIF_FORMAT_SRATIONAL:
        return 4;
    case EXIF_FORMAT_DOUBLE:
        return 8;
    default:
        return 1;
    }
}

QByteArray ToLittleEndian(const unsigned char* data, unsigned int size, ExifFormat format,
                          ExifByteOrder order) {
    QByteArray value(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const int unit = SwapUnit(format);
    if (order == EXIF_BYTE_ORDER_MOTOROLA && unit > 1)
        for (qsizetype i = 0; i + unit <= value.size(); i += unit)
            std::reverse(value.begin() + i, value.begin() + i + unit);
    return value;
}

std::vector<PropertyItem> ReadExifItems(const uint8_t* block, size_t size) {
    std::vector<PropertyItem> items;
    ExifData* data = NewExifData();
    if (!data) return items;
    exif_data_load_data(data, block, static_cast<unsigned int>(size));
    const ExifByteOrder order = exif_data_get_byte_order(data);
    for (ExifIfd ifd : DirectoryOrder) {
        const ExifContent* content = data->ifd[ifd];
        if (!content) continue;
        for (unsigned int i = 0; i < content->count; ++i) {
            const ExifEntry* e = content->entries[i];
            if (!e || (!e->data && e->size)) continue;
            PropertyItem item;
            item.Id = e->tag;
            item.Type = static_cast<uint16_t>(e->format);
            item.Directory = static_cast<uint16_t>(ifd);
            item.Value = ToLittleEndian(e->data, e->size, e->format, order);
            items.push_back(std::move(item));
        }
    }
    if (data->data && data->size) {
        PropertyItem thumb;
        thumb.Id = PropertyTagThumbnailData;
        thumb.Type = EXIF_FORMAT_BYTE;
        thumb.Directory = EXIF_IFD_1;
        thumb.Value =
            QByteArray(reinterpret_cast<const char*>(data->data), static_cast<qsizetype>(data->size));
        items.push_back(std::move(thumb));
    }
    exif_data_unref(data);
    return items;
}

// An APP1 block ("Exif\0\0" and a TIFF structure) from property items. Items
// that libexif cannot write faithfully (an unknown type, a directory out of
// range) are left out rather than written wrong.
QByteArray BuildExifBlock(const std::vector<PropertyItem>& items) {
    ExifData* data = NewExifData();
    if (!data) return {};
    exif_data_set_byte_order(data, EXIF_BYTE_ORDER_INTEL);
    for (const PropertyItem& item : items) {
        if (item.Id == PropertyTagThumbnailData) {
            if (item.Value.isEmpty()) continue;
            std::free(data->data);
            data->data = static_cast<unsigned char*>(std::malloc(static_cast<size_t>(item.Value.size())));
            if (!data->data) {
                data->size = 0;
                continue;
            }
            std::memcpy(data->data, item.Value.constData(), static_cast<size_t>(item.Value.size()));
            data->size = static_cast<unsigned int>(item.Value.size());
            continue;
        }
        const ExifFormat format = static_cast<ExifFormat>(item.Type);
        const unsigned int unit = exif_format_get_size(format);
        if (unit == 0 || item.Directory >= EXIF_IFD_COUNT || item.Id > 0xFFFF) continue;
        const unsigned long components = static_cast<unsigned long>(item.Value.size()) / unit;
        ExifEntry* e = exif_entry_new();
        if (!e) continue;
        e->tag = static_cast<ExifTag>(item.Id);
        e->format = format;
        e->components = components;
        e->size = static_cast<unsigned int>(components * unit);
        // exif_entry_new allocates through the default allocator, which is
        // malloc and free; the entry frees this buffer the same way.
        e->data = static_cast<unsigned char*>(std::malloc(std::max<size_t>(e->size, 1)));
        if (!e->data) {
            exif_entry_unref(e);
            continue;
        }
        std::memcpy(e->data, item.Value.constData(), e->size);
        exif_content_add_entry(data->ifd[item.Directory], e);
        exif_entry_unref(e);
    }
    unsigned char* bytes = nullptr;
    unsigned int size = 0;
    exif_data_save_data(data, &bytes, &size);
    QByteArray block;
    if (bytes) block = QByteArray(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size));
    std::free(bytes);
    exif_data_unref(data);
    return block;
}

uint32_t U32Le(const QByteArray& b, int at) {
    return static_cast<uint32_t>(static_cast<uint8_t>(b[at])) |
           (static_cast<uint32_t>(static_cast<uint8_t>(b[at + 1])) << 8) |
           (static_cast<uint32_t>(static_cast<uint8_t>(b[at + 2])) << 16) |
           (static_cast<uint32_t>(static_cast<uint8_t>(b[at + 3])) << 24);
}

// Dots per inch from the main image's XResolution and ResolutionUnit items;
// 0 when they are missing.
float ExifResolution(const std::vector<PropertyItem>& items) {
    double value = 0;
    int unit = 2;
    for (const PropertyItem& item : items) {
        if (item.Directory != EXIF_IFD_0) continue;
        if (item.Id == EXIF_TAG_X_RESOLUTION && item.Type == EXIF_FORMAT_RATIONAL && item.Value.size() >= 8) {
            const uint32_t num = U32Le(item.Value, 0), den = U32Le(item.Value, 4);
            if (den) value = static_cast<double>(num) / den;
        } else if (item.Id == EXIF_TAG_RESOLUTION_UNIT && item.Type == EXIF_FORMAT_SHORT &&
                   item.Value.size() >= 2) {
            unit = static_cast<uint8_t>(item.Value[0]) | (static_cast<uint8_t>(item.Value[1]) << 8);
        }
    }
    if (unit == 3)
        value *= 2.54;
    else if (unit != 2)
        value = 0;
    return static_cast<float>(value);
}

// FF D8 at the start and FF D9 as the very last two bytes.
bool JpegMarkers(const QByteArray& bytes) {
    const ByteReader r(bytes);
    const size_t n = r.Size();
    return n >= 2 && r.At(0) == 0xFF && r.At(1) == 0xD8 && r.At(n - 2) == 0xFF && r.At(n - 1) == 0xD9;
}

} // namespace

const FileFamily& JpgFamily();

std::vector<PropertyItem> ParsePropertyBuffer(const QByteArray& buffer) {
    std::vector<PropertyItem> items;
    ByteReader r(buffer);
    while (r.Remaining() >= 12) {
        PropertyItem item;
        item.Id = r.U32();
        item.Type = r.U16();
        item.Directory = r.U16();
        const uint32_t length = r.U32();
        if (length > r.Remaining()) break;
        item.Value = buffer.mid(static_cast<qsizetype>(r.Position()), static_cast<qsizetype>(length));
        r.Skip(length);
        items.push_back(std::move(item));
    }
    return items;
}

QByteArray BuildPropertyBuffer(const std::vector<PropertyItem>& items) {
    ByteWriter w;
    for (const PropertyItem& item : items) {
        w.U32(item.Id);
        w.U16(item.Type);
        w.U16(item.Directory);
        w.U32(static_cast<uint32_t>(item.Value.size()));
        w.Bytes(item.Value.constData(), static_cast<size_t>(item.Value.size()));
    }
    return w.Data();
}

namespace {

bool LoadJpg(const QByteArray& bytes, CImage& image, LoadOptions&) {

    JpegReader reader;
    auto fail = [&image] {
        image.DisposeResource();
        return false;
    };
    if (!reader.ReadHeader(reinterpret_cast<const uint8_t*>(bytes.constData()),
                           static_cast<size_t>(bytes.size())))
        return fail();
    jpeg_decompress_struct& info = reader.Info();

    uint32_t libraryFormat = 0;
    J_COLOR_SPACE out = JCS_UNKNOWN;
    switch (info.jpeg_color_space) {
    case JCS_GRAYSCALE:
        libraryFormat = PixelFormat8bppIndexed;
        out = JCS_GRAYSCALE;
        break;
    case JCS_YCbCr:
    case JCS_RGB:
        libraryFormat = PixelFormat24bppRGB;
        out = JCS_EXT_BGR;
        break;
    case JCS_CMYK:
    case JCS_YCCK:
        libraryFormat = LibraryFormat32bppCMYK;
        out = JCS_CMYK;
        break;
    default:
        return fail();
    }
    const int32_t depth = libraryFormat == PixelFormat8bppIndexed ? 8 : 24;
    const int64_t width = info.image_width, height = info.image_height;
    if (width > INT32_MAX || height > INT32_MAX) return fail();
    // The library takes its working memory first: a picture it refuses costs
    // no block.
    if (!reader.Start(out)) return fail();
    if (!NewBlock(image, static_cast<int32_t>(width), static_cast<int32_t>(height), depth, 0)) return fail();
    if (static_cast<int64_t>(info.output_width) != width ||
        static_cast<int64_t>(info.output_height) != height)
        return fail();

    if (libraryFormat == LibraryFormat32bppCMYK) {
        // The library converts CMYK while drawing. Adobe's writers store the
        // channels inverted, and say so in their APP14 marker.
        const bool inverted = info.saw_Adobe_marker;
        std::vector<uint8_t> cmyk(static_cast<size_t>(width) * 4);
        for (int32_t y = 0; y < image.Height(); ++y) {
            if (!reader.ReadRow(cmyk.data())) return fail();
            uint8_t* d = image.Row(y);
            for (int32_t x = 0; x < image.Width(); ++x) {
                int c = cmyk[4 * x], m = cmyk[4 * x + 1], yy = cmyk[4 * x + 2], k = cmyk[4 * x + 3];
                if (!inverted) {
                    c = 255 - c;
                    m = 255 - m;
                    yy = 255 - yy;
                    k = 255 - k;
                }
                d[3 * x] = static_cast<uint8_t>((yy * k + 127) / 255);
                d[3 * x + 1] = static_cast<uint8_t>((m * k + 127) / 255);
                d[3 * x + 2] = static_cast<uint8_t>((c * k + 127) / 255);
            }
        }
    } else {
        for (int32_t y = 0; y < image.Height(); ++y)
            if (!reader.ReadRow(image.Row(y))) return fail();
    }

    std::vector<PropertyItem> items;
    for (jpeg_saved_marker_ptr m = info.marker_list; m; m = m->next) {
        if (m->marker != JPEG_APP0 + 1 || m->data_length < 6 || std::memcmp(m->data, "Exif\0\0", 6) != 0)
            continue;
        items = ReadExifItems(m->data, m->data_length);
        break;
    }

    float resolution = 0;
    if (info.saw_JFIF_marker && info.density_unit == 1)
        resolution = info.X_density;
    else if (info.saw_JFIF_marker && info.density_unit == 2)
        resolution = static_cast<float>(info.X_density * 2.54);
    if (resolution <= 0) resolution = ExifResolution(items);
    if (resolution <= 0) resolution = LibraryDefaultResolution;
    reader.Finish();

    image.SetPropertyBuffer(BuildPropertyBuffer(items));
    image.PropertyCount = static_cast<int32_t>(items.size());
    image.Resolution = resolution;
    // An 8-bit JPEG is grey: its block keeps the ramp CreateNewImage gave it.
    image.PixelFormat = depth == 24 ? PixelFormat24bppRGB : PixelFormat8bppGray;
    image.RawPixelFormat = image.PixelFormat;
    return true;
}

bool SaveJpg(const CImage& image, const SaveOptions& options, QByteArray& out, QString& error) {
    // The declared range is the encoder's: a quality beyond it is clamped.
    const int32_t quality =
        JpgFamily().Option(QStringLiteral("Quality"))->Clamped(options.Int(QStringLiteral("Quality")));
    if (image.Width() > JPEG_MAX_DIMENSION || image.Height() > JPEG_MAX_DIMENSION) {
        error = TooLargeMessage(QStringLiteral("JPEG"), JPEG_MAX_DIMENSION);
        return false;
    }

    QByteArray exifBlock;
    if (image.PropertyCount >= 4 && !Globals().IgnoreExif) {
        std::vector<PropertyItem> items;
        for (PropertyItem& item : ParsePropertyBuffer(image.PropertyBuffer())) {
            if (item.Id == PropertyTagThumbnailData) {
                int32_t tw = 0, th = 0;
                JpgParser().GetBestFitInfo(image, 240, 180, tw, th);
                CImage thumb;
                if (tw < 1 || th < 1 || !thumb.CreateNewImage(tw, th, 24, 0)) continue;
                QImage target(thumb.Pointer(), tw, th, thumb.Stride(), QImage::Format_BGR888);
                {
                    QPainter painter(&target);
                    image.Render(painter, 0, 0, tw, th);
                }
                QByteArray encoded;
                if (!EncodeJpeg(thumb, 80, thumb.Resolution, QByteArray(), encoded)) continue;
                item.Value = encoded;
                items.push_back(std::move(item));
            } else if (item.Id == PropertyTagSoftwareUsed && item.Directory == EXIF_IFD_0) {
                continue;
            } else {
                items.push_back(std::move(item));
            }
        }
        // Every JPEG that passes through the editor names it as its software.
        PropertyItem software;
        software.Id = PropertyTagSoftwareUsed;
        software.Type = EXIF_FORMAT_ASCII;
        software.Directory = EXIF_IFD_0;
        software.Value = QByteArray(JpegSoftwareName);
        items.push_back(std::move(software));
        exifBlock = BuildExifBlock(items);
        // A marker segment holds at most 65533 bytes; a larger block (a huge
        // maker note) cannot be stored, and the picture is worth more than it.
        if (exifBlock.size() > 65533) exifBlock.clear();
    }

    if (!EncodeJpeg(image, quality, image.Resolution, exifBlock, out)) return false;
    return true;
}

} // namespace

bool JpgParser::GetBestFitInfo(const CImage& image, int32_t maxWidth, int32_t maxHeight, int32_t& width,
                               int32_t& height) {
    width = image.Width();
    height = image.Height();
    if (width <= 0 || height <= 0) return false;
    if (width <= maxWidth && height <= maxHeight) return true;
    const double rw = static_cast<double>(maxWidth) / image.Width();
    const double rh = static_cast<double>(maxHeight) / image.Height();
    if (rw >= rh) {
        height = maxHeight;
        width = RoundHalfEven(image.Width() * rh);
    } else {
        width = maxWidth;
        height = RoundHalfEven(image.Height() * rw);
    }
    return true;
}

const FileFamily& JpgFamily() {
    static const FileFamily family = [] {
        FileFamily f;
        f.Code = RawJpeg;
        f.Name = "JpgParser";
        f.Signature = [](const QByteArray& bytes) { return JpegMarkers(bytes); };
        f.Load = LoadJpg;
        f.Save = SaveJpg;
        f.Options = {{.Key = QStringLiteral("Quality"),
                      .Label = QStringLiteral("品质"),
                      .Type = SaveOptionSpec::Number,
                      .Min = 0,
                      .Max = 100,
                      .Default = 85,
                      .SettingKey = QStringLiteral("JpegSaveQuality")}};
        return f;
    }();
    return family;
}

bool JpgParser::IsJpg(const QString& file) {
    return FamilyRecognises(JpgFamily(), file);
}

bool JpgParser::LoadPictureFromFile(const QString& file, CImage& image) {
    int32_t frame = 0;
    return LoadFamilyFile(JpgFamily(), file, image, frame);
}

bool JpgParser::SavePictureToFile(const QString& file, CImage& image, int32_t quality) {
    SaveOptions options;
    options.Set(QStringLiteral("Quality"), quality);
    return SaveFamilyFile(JpgFamily(), file, image, options);
}

bool JpgParser::GetImageThumbAndInfo(const QString& file, QPainter* graphics, int32_t& width, int32_t& height,
                                     int32_t& bitDepth) {
    return FamilyThumbAndInfo(JpgFamily(), file, graphics, width, height, bitDepth);
}

} // namespace vm
