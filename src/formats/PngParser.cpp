#include "formats/PngParser.h"

#include "core/Numeric.h"
#include "formats/CodecCommon.h"
#include "formats/ParserCommon.h"
#include "formats/ParserRegistry.h"

#include <QPainter>

#include <csetjmp>
#include <cstring>
#include <vector>

#include <png.h>

namespace vm {

namespace {

const uint8_t PngSignature[8] = {137, 'P', 'N', 'G', 13, 10, 26, 10};

// libpng reports a fatal error through the error function, which must not
// return; it jumps back to the setjmp of the method under way. Those methods
// hold no object with a destructor.
[[noreturn]] void PngErrorExit(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}
void PngSilent(png_structp, png_const_charp) {}

struct MemorySource {
    const uint8_t* Data = nullptr;
    size_t Size = 0;
    size_t Position = 0;
};

void ReadFromMemory(png_structp png, png_bytep out, png_size_t count) {
    auto* source = static_cast<MemorySource*>(png_get_io_ptr(png));
    if (source->Size - source->Position < count) png_error(png, "truncated");
    std::memcpy(out, source->Data + source->Position, count);
    source->Position += count;
}

void WriteToArray(png_structp png, png_bytep data, png_size_t count) {
    auto* out = static_cast<QByteArray*>(png_get_io_ptr(png));
    out->append(reinterpret_cast<const char*>(data), static_cast<qsizetype>(count));
}
void FlushNothing(png_structp) {}

class PngReader {
  public:
    ~PngReader() {
        if (png_) png_destroy_read_struct(&png_, info_ ? &info_ : nullptr, nullptr);
    }

    bool ReadInfo(MemorySource& source) {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, PngErrorExit, PngSilent);
        if (!png_) return false;
        info_ = png_create_info_struct(png_);
        if (!info_) return false;
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_read_fn(png_, &source, ReadFromMemory);
        png_read_info(png_, info_);
        return true;
    }
    // Applies the transforms chosen by the caller and reports the row size.
    bool Update(size_t& rowBytes) {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
        rowBytes = png_get_rowbytes(png_, info_);
        return true;
    }
    bool ReadImage(png_bytepp rows) {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_read_image(png_, rows);
        return true;
    }
    png_structp Png() const { return png_; }
    png_infop Info() const { return info_; }

  private:
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

class PngWriter {
  public:
    ~PngWriter() {
        if (png_) png_destroy_write_struct(&png_, info_ ? &info_ : nullptr);
    }
    bool Create(QByteArray& out) {
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, PngErrorExit, PngSilent);
        if (!png_) return false;
        info_ = png_create_info_struct(png_);
        if (!info_) return false;
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_write_fn(png_, &out, WriteToArray, FlushNothing);
        return true;
    }
    bool Header(uint32_t width, uint32_t height, int depth, int colorType, const png_color* palette,
                int paletteCount, const png_byte* alpha, int alphaCount, uint32_t pixelsPerMetre, bool bgr) {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_set_IHDR(png_, info_, width, height, depth, colorType, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        if (paletteCount > 0) png_set_PLTE(png_, info_, palette, paletteCount);
        if (alphaCount > 0) png_set_tRNS(png_, info_, alpha, alphaCount, nullptr);
        png_set_pHYs(png_, info_, pixelsPerMetre, pixelsPerMetre, PNG_RESOLUTION_METER);
        png_write_info(png_, info_);
        if (bgr) png_set_bgr(png_);
        return true;
    }
    bool Row(uint8_t* row) {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_write_row(png_, row);
        return true;
    }
    bool End() {
        if (setjmp(png_jmpbuf(png_))) return false;
        png_write_end(png_, info_);
        return true;
    }

  private:
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

// The decoder's format of a file: its colour type, depth and whether a tRNS
// chunk adds transparency. Grey of up to 8 bits is a palette of its levels.
uint32_t LibraryFormatOf(int colorType, int bitDepth, bool hasTrns) {
    switch (colorType) {
    case PNG_COLOR_TYPE_PALETTE:
    case PNG_COLOR_TYPE_GRAY:
        if (bitDepth == 1) return PixelFormat1bppIndexed;
        if (bitDepth == 2 || bitDepth == 4) return PixelFormat4bppIndexed;
        if (bitDepth == 8) return PixelFormat8bppIndexed;
        return hasTrns ? LibraryFormat64bppARGB : LibraryFormat16bppGrayScale;
    case PNG_COLOR_TYPE_GRAY_ALPHA:
        return bitDepth == 8 ? PixelFormat32bppARGB : LibraryFormat64bppARGB;
    case PNG_COLOR_TYPE_RGB:
        if (bitDepth == 8) return hasTrns ? PixelFormat32bppARGB : PixelFormat24bppRGB;
        return hasTrns ? LibraryFormat64bppARGB : LibraryFormat48bppRGB;
    case PNG_COLOR_TYPE_RGB_ALPHA:
        return bitDepth == 8 ? PixelFormat32bppARGB : LibraryFormat64bppARGB;
    default:
        return 0;
    }
}

bool LoadPng(const QByteArray& bytes, CImage& image, LoadOptions&) {
    auto fail = [&image] {
        image.DisposeResource();
        return false;
    };

    MemorySource source{reinterpret_cast<const uint8_t*>(bytes.constData()),
                        static_cast<size_t>(bytes.size()), 0};
    PngReader reader;
    if (!reader.ReadInfo(source)) return fail();
    png_structp png = reader.Png();
    png_infop info = reader.Info();
    const uint32_t width = png_get_image_width(png, info);
    const uint32_t height = png_get_image_height(png, info);
    const int bitDepth = png_get_bit_depth(png, info);
    const int colorType = png_get_color_type(png, info);
    const bool hasTrns = png_get_valid(png, info, PNG_INFO_tRNS) != 0;

    const uint32_t libraryFormat = LibraryFormatOf(colorType, bitDepth, hasTrns);
    const LibraryMapping mapping = MapLibraryFormat(libraryFormat);
    if (mapping.Depth == 0 || width > INT32_MAX || height > INT32_MAX) return fail();

    if (mapping.Depth > 8) {
        if (libraryFormat == LibraryFormat16bppGrayScale) png_set_scale_16(png);
        if (colorType == PNG_COLOR_TYPE_GRAY || colorType == PNG_COLOR_TYPE_GRAY_ALPHA)
            png_set_gray_to_rgb(png);
        if (colorType == PNG_COLOR_TYPE_RGB && hasTrns) png_set_tRNS_to_alpha(png);
        png_set_bgr(png);
    }
    size_t rowBytes = 0;
    if (!reader.Update(rowBytes)) return fail();
    if (!NewBlock(image, static_cast<int32_t>(width), static_cast<int32_t>(height), mapping.Depth, 0))
        return fail();

    // Two-bit rows are read aside and widened to four bits; the others land in
    // the block itself.
    const bool widen2 = bitDepth == 2;
    if (!widen2 && rowBytes > static_cast<size_t>(image.Stride())) return fail();
    std::vector<uint8_t> aside;
    if (widen2) aside.resize(rowBytes * height);
    std::vector<png_bytep> rows(height);
    for (uint32_t y = 0; y < height; ++y)
        rows[y] = widen2 ? aside.data() + rowBytes * y : image.Row(static_cast<int32_t>(y));
    if (!reader.ReadImage(rows.data())) return fail();
    if (widen2) {
        for (uint32_t y = 0; y < height; ++y) {
            const uint8_t* s = rows[y];
            uint8_t* d = image.Row(static_cast<int32_t>(y));
            for (uint32_t x = 0; x < width; ++x) {
                const int v = (s[x >> 2] >> (6 - 2 * (x & 3))) & 3;
                if (x & 1)
                    d[x >> 1] = static_cast<uint8_t>(d[x >> 1] | v);
                else
                    d[x >> 1] = static_cast<uint8_t>(v << 4);
            }
        }
    }

    if (mapping.Depth <= 8) {
        PaletteData palette;
        palette.Flags = 0;
        if (colorType == PNG_COLOR_TYPE_PALETTE) {
            png_colorp entries = nullptr;
            int count = 0;
            png_get_PLTE(png, info, &entries, &count);
            png_bytep alpha = nullptr;
            int alphaCount = 0;
            if (hasTrns) png_get_tRNS(png, info, &alpha, &alphaCount, nullptr);
            count = std::clamp(count, 0, 256);
            palette.Count = static_cast<uint32_t>(count);
            for (int i = 0; i < count; ++i)
                palette.SetEntry(i, entries[i].red, entries[i].green, entries[i].blue,
                                 alpha && i < alphaCount ? alpha[i] : 255);
        } else {
            const int levels = 1 << bitDepth;
            int transparent = -1;
            if (hasTrns) {
                png_color_16p grey = nullptr;
                png_get_tRNS(png, info, nullptr, nullptr, &grey);
                if (grey) transparent = grey->gray;
            }
            palette.Count = static_cast<uint32_t>(levels);
            for (int i = 0; i < levels; ++i) {
                const int v = i * 255 / (levels - 1);
                palette.SetEntry(i, v, v, v, i == transparent ? 0 : 255);
            }
        }
        for (uint32_t i = 0; i < palette.Count; ++i)
            if (palette.Entry(static_cast<int>(i))[3] != 255) palette.Flags |= 1; // the entries carry alpha
        image.SetPaletteData(palette);
        // Grey is an 8-bit format: a 1- or 4-bit block whose few entries happen to
        // rise like a ramp stays indexed.
        if (mapping.Depth == 8)
            image.PixelFormat = IsGrayRamp(palette) ? PixelFormat8bppGray : PixelFormat8bppIndexed;
    }

    png_uint_32 resX = 0, resY = 0;
    int unit = 0;
    float resolution = LibraryDefaultResolution;
    if (png_get_pHYs(png, info, &resX, &resY, &unit) && unit == PNG_RESOLUTION_METER && resX > 0)
        resolution = static_cast<float>(resX * 0.0254);

    image.Resolution = resolution;
    image.SetPropertyBuffer(QByteArray());
    image.PropertyCount = 0;
    image.RawPixelFormat = image.PixelFormat;
    return true;
}

bool SavePng(const CImage& image, const SaveOptions& options, QByteArray& out, QString& error) {
    (void)options;
    // The header could say more, but decoders (libpng's own default limit,
    // browsers) refuse a side beyond a million pixels: such a file is broken
    // for everyone who opens it.
    if (image.Width() > PNG_USER_WIDTH_MAX || image.Height() > PNG_USER_HEIGHT_MAX) {
        error = TooLargeMessage(QStringLiteral("PNG"), PNG_USER_WIDTH_MAX);
        return false;
    }
    const uint32_t format = image.PixelFormat;
    const int32_t w = image.Width(), h = image.Height();

    int depth = 8, colorType = PNG_COLOR_TYPE_RGB;
    bool bgr = true, convert = false;
    std::vector<png_color> palette;
    std::vector<png_byte> alpha;
    switch (format) {
    case PixelFormat1bppIndexed:
    case PixelFormat4bppIndexed:
    case PixelFormat8bppIndexed: {
        depth = BitsPerPixel(format);
        colorType = PNG_COLOR_TYPE_PALETTE;
        bgr = false;
        const PaletteData& pal = image.Palette();
        // Pixels may point past the palette's count (a file can hold such
        // indices); the table then grows to cover them, as PNG requires.
        int maxIndex = 0;
        for (int32_t y = 0; y < h; ++y) {
            const uint8_t* row = image.Row(y);
            for (int32_t x = 0; x < w; ++x) {
                const int v = IndexInRow(row, x, depth);
                maxIndex = std::max(maxIndex, v);
            }
        }
        const int count =
            std::clamp<int>(std::max<int>(static_cast<int>(pal.Count), maxIndex + 1), 1, 1 << depth);
        int lastTranslucent = -1;
        for (int i = 0; i < count; ++i) {
            const uint8_t* e = pal.Entry(i);
            palette.push_back(png_color{e[2], e[1], e[0]});
            alpha.push_back(e[3]);
            if (e[3] != 255) lastTranslucent = i;
        }
        alpha.resize(static_cast<size_t>(lastTranslucent + 1));
        break;
    }
    case PixelFormat8bppGray:
        colorType = PNG_COLOR_TYPE_GRAY;
        bgr = false;
        break;
    case PixelFormat24bppRGB:
        break;
    case PixelFormat32bppARGB:
        colorType = PNG_COLOR_TYPE_RGB_ALPHA;
        break;
    default:
        convert = true;
        break; // 16-bit and anything else: widened to RGB
    }

    out.clear();
    PngWriter writer;
    if (!writer.Create(out)) return false;
    const double ppm = image.Resolution / 0.0254;
    const uint32_t pixelsPerMetre = ppm > 0 && ppm < 4e9 ? static_cast<uint32_t>(RoundHalfEven64(ppm)) : 0;
    if (!writer.Header(static_cast<uint32_t>(w), static_cast<uint32_t>(h), depth, colorType, palette.data(),
                       static_cast<int>(palette.size()), alpha.data(), static_cast<int>(alpha.size()),
                       pixelsPerMetre, bgr))
        return false;
    std::vector<uint8_t> row(convert ? static_cast<size_t>(w) * 3 : 0);
    for (int32_t y = 0; y < h; ++y) {
        uint8_t* p = image.Row(y);
        if (convert) {
            RowToBgr(image, y, row.data());
            p = row.data();
        }
        if (!writer.Row(p)) return false;
    }
    if (!writer.End()) return false;
    return true;
}

} // namespace

const FileFamily& PngFamily() {
    static const FileFamily family = [] {
        FileFamily f;
        f.Code = RawPng;
        f.Name = "PngParser";
        f.Signature = [](const QByteArray& bytes) {
            return bytes.size() >= 8 && std::memcmp(bytes.constData(), PngSignature, 8) == 0;
        };
        f.Load = LoadPng;
        f.Save = SavePng;
        return f;
    }();
    return family;
}

bool PngParser::IsPng(const QString& file) {
    return FamilyRecognises(PngFamily(), file);
}

bool PngParser::LoadPictureFromFile(const QString& file, CImage& image) {
    int32_t frame = 0;
    return LoadFamilyFile(PngFamily(), file, image, frame);
}

bool PngParser::SavePictureToFile(const QString& file, CImage& image) {
    return SaveFamilyFile(PngFamily(), file, image, SaveOptions());
}

bool PngParser::GetImageThumbAndInfo(const QString& file, QPainter* graphics, int32_t& width, int32_t& height,
                                     int32_t& bitDepth) {
    return FamilyThumbAndInfo(PngFamily(), file, graphics, width, height, bitDepth);
}

} // namespace vm
