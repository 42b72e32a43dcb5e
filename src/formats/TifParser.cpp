#include "formats/TifParser.h"

#include "core/Numeric.h"
#include "formats/CodecCommon.h"
#include "formats/ParserCommon.h"
#include "formats/ParserRegistry.h"

#include <QPainter>

#include <cstring>
#include <vector>

#include <tiffio.h>

namespace vm {

namespace {

// libtiff reads and writes through these hooks over memory: the file is read
// once, and a page is written completely before anything reaches the disk.
struct TiffMemory {
    const uint8_t* Data = nullptr;       // reading
    std::vector<uint8_t>* Out = nullptr; // writing
    size_t Size = 0;
    size_t Position = 0;
};

tmsize_t TiffRead(thandle_t handle, void* buffer, tmsize_t count) {
    auto* m = static_cast<TiffMemory*>(handle);
    if (count <= 0 || m->Position >= m->Size) return 0;
    const size_t n = std::min(static_cast<size_t>(count), m->Size - m->Position);
    std::memcpy(buffer, (m->Out ? m->Out->data() : m->Data) + m->Position, n);
    m->Position += n;
    return static_cast<tmsize_t>(n);
}

tmsize_t TiffWrite(thandle_t handle, void* buffer, tmsize_t count) {
    auto* m = static_cast<TiffMemory*>(handle);
    if (!m->Out || count < 0) return -1;
    const size_t end = m->Position + static_cast<size_t>(count);
    if (end > static_cast<size_t>(MaxBlockBytes) * 2) return -1;
    if (end > m->Out->size()) m->Out->resize(end);
    std::memcpy(m->Out->data() + m->Position, buffer, static_cast<size_t>(count));
    m->Position = end;
    m->Size = m->Out->size();
    return count;
}

toff_t TiffSeek(thandle_t handle, toff_t offset, int whence) {
    auto* m = static_cast<TiffMemory*>(handle);
    int64_t base = 0;
    if (whence == SEEK_CUR)
        base = static_cast<int64_t>(m->Position);
    else if (whence == SEEK_END)
        base = static_cast<int64_t>(m->Size);
    const int64_t target = base + static_cast<int64_t>(offset);
    if (target < 0) return static_cast<toff_t>(-1);
    m->Position = static_cast<size_t>(target);
    return static_cast<toff_t>(target);
}

int TiffClose(thandle_t) {
    return 0;
}
toff_t TiffSize(thandle_t handle) {
    return static_cast<TiffMemory*>(handle)->Size;
}
int TiffMap(thandle_t, void**, toff_t*) {
    return 0;
}
void TiffUnmap(thandle_t, void*, toff_t) {}

// Messages of libtiff are not the user's business; a failure shows in the
// result of the call that met it.
int TiffQuiet(TIFF*, void*, const char*, const char*, va_list) {
    return 1;
}

class TiffHandle {
  public:
    ~TiffHandle() {
        if (tif_) TIFFClose(tif_);
    }
    bool Open(TiffMemory& memory, const char* mode) {
        TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
        if (!options) return false;
        TIFFOpenOptionsSetErrorHandlerExtR(options, TiffQuiet, nullptr);
        TIFFOpenOptionsSetWarningHandlerExtR(options, TiffQuiet, nullptr);
        TIFFOpenOptionsSetMaxSingleMemAlloc(options, MaxBlockBytes);
        tif_ = TIFFClientOpenExt("memory", mode, &memory, TiffRead, TiffWrite, TiffSeek, TiffClose, TiffSize,
                                 TiffMap, TiffUnmap, options);
        TIFFOpenOptionsFree(options);
        return tif_ != nullptr;
    }
    // Flushes a file being written.
    bool Close() {
        if (!tif_) return false;
        TIFF* t = tif_;
        tif_ = nullptr;
        TIFFClose(t);
        return true;
    }
    TIFF* Get() const { return tif_; }

  private:
    TIFF* tif_ = nullptr;
};

// How a page is decoded: its samples as they lie, or through libtiff's RGBA
// interface for the colour spaces that need converting.
enum class Route { Refuse, Raw, Rgba };

struct PageLayout {
    uint32_t Width = 0, Height = 0;
    uint16_t Bits = 1, Samples = 1, Photometric = 0, Planar = PLANARCONFIG_CONTIG;
    uint16_t Extra = EXTRASAMPLE_UNSPECIFIED; // the first extra sample, when there is one
    bool HasExtra = false;
    uint32_t LibraryFormat = 0;
    Route Way = Route::Refuse;
};

PageLayout LayoutOf(TIFF* tif) {
    PageLayout p;
    uint16_t sampleFormat = SAMPLEFORMAT_UINT, compression = COMPRESSION_NONE;
    TIFFGetField(tif, TIFFTAG_IMAGEWIDTH, &p.Width);
    TIFFGetField(tif, TIFFTAG_IMAGELENGTH, &p.Height);
    TIFFGetFieldDefaulted(tif, TIFFTAG_BITSPERSAMPLE, &p.Bits);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLESPERPIXEL, &p.Samples);
    TIFFGetFieldDefaulted(tif, TIFFTAG_PLANARCONFIG, &p.Planar);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLEFORMAT, &sampleFormat);
    TIFFGetFieldDefaulted(tif, TIFFTAG_COMPRESSION, &compression);
    uint16_t extraCount = 0;
    uint16_t* extra = nullptr;
    if (TIFFGetField(tif, TIFFTAG_EXTRASAMPLES, &extraCount, &extra) && extraCount > 0 && extra) {
        p.HasExtra = true;
        p.Extra = extra[0];
    }
    if (!TIFFGetField(tif, TIFFTAG_PHOTOMETRIC, &p.Photometric)) return p;
    if (sampleFormat != SAMPLEFORMAT_UINT && sampleFormat != SAMPLEFORMAT_VOID) return p;
    if (!TIFFIsCODECConfigured(compression)) return p;
    if (p.Width < 1 || p.Height < 1 || p.Width > INT32_MAX || p.Height > INT32_MAX) return p;

    const uint16_t ph = p.Photometric;
    const bool grey = ph == PHOTOMETRIC_MINISBLACK || ph == PHOTOMETRIC_MINISWHITE;
    auto alphaFormat = [&]() -> uint32_t {
        if (p.Extra == EXTRASAMPLE_ASSOCALPHA) return PixelFormat32bppPARGB;
        if (p.Extra == EXTRASAMPLE_UNASSALPHA) return PixelFormat32bppARGB;
        return PixelFormat32bppRGB;
    };
    if (p.Samples == 1 && (grey || ph == PHOTOMETRIC_PALETTE)) {
        p.Way = Route::Raw;
        switch (p.Bits) {
        case 1:
            p.LibraryFormat = PixelFormat1bppIndexed;
            break;
        case 2:
        case 4:
            p.LibraryFormat = PixelFormat4bppIndexed;
            break;
        case 8:
            p.LibraryFormat = PixelFormat8bppIndexed;
            break;
        case 16:
            p.LibraryFormat = grey ? LibraryFormat16bppGrayScale : 0u;
            break;
        default:
            p.LibraryFormat = 0;
            break;
        }
    } else if (grey && p.Samples == 2) {
        p.LibraryFormat = p.Bits == 8 ? alphaFormat() : LibraryFormat64bppARGB;
        p.Way = p.Planar == PLANARCONFIG_CONTIG ? Route::Raw : Route::Rgba;
    } else if (ph == PHOTOMETRIC_RGB && p.Samples >= 3) {
        if (p.Bits == 8)
            p.LibraryFormat = p.Samples == 3 ? PixelFormat24bppRGB : alphaFormat();
        else
            p.LibraryFormat = p.Samples == 3 ? LibraryFormat48bppRGB : LibraryFormat64bppARGB;
        p.Way = p.Planar == PLANARCONFIG_CONTIG ? Route::Raw : Route::Rgba;
    } else if ((ph == PHOTOMETRIC_SEPARATED || ph == PHOTOMETRIC_YCBCR || ph == PHOTOMETRIC_CIELAB ||
                ph == PHOTOMETRIC_ICCLAB || ph == PHOTOMETRIC_ITULAB) &&
               p.Bits == 8) {
        const bool alpha =
            p.HasExtra && (p.Extra == EXTRASAMPLE_ASSOCALPHA || p.Extra == EXTRASAMPLE_UNASSALPHA);
        p.LibraryFormat = alpha ? PixelFormat32bppARGB : PixelFormat24bppRGB;
        p.Way = Route::Rgba;
    }
    if (MapLibraryFormat(p.LibraryFormat).Depth == 0) p.Way = Route::Refuse;
    return p;
}

// Hands every row of a contiguous page to Sink(y, bytes), from strips or tiles.
template <typename Sink> bool ReadRawRows(TIFF* tif, const PageLayout& page, Sink&& sink) {
    const uint64_t rowBytes = TIFFScanlineSize64(tif);
    if (rowBytes == 0 || rowBytes > static_cast<uint64_t>(MaxBlockBytes)) return false;
    std::vector<uint8_t> row(static_cast<size_t>(rowBytes));
    if (!TIFFIsTiled(tif)) {
        for (uint32_t y = 0; y < page.Height; ++y) {
            if (TIFFReadScanline(tif, row.data(), y, 0) < 0) return false;
            sink(y, row.data());
        }
        return true;
    }
    uint32_t tileWidth = 0, tileHeight = 0;
    TIFFGetField(tif, TIFFTAG_TILEWIDTH, &tileWidth);
    TIFFGetField(tif, TIFFTAG_TILELENGTH, &tileHeight);
    const uint64_t tileBytes = TIFFTileSize64(tif), tileRowBytes = TIFFTileRowSize64(tif);
    if (tileWidth == 0 || tileHeight == 0 || tileBytes == 0 || tileRowBytes == 0 ||
        tileBytes > static_cast<uint64_t>(MaxBlockBytes) ||
        rowBytes * tileHeight > static_cast<uint64_t>(MaxBlockBytes))
        return false;
    const uint64_t bitsPerPixel = static_cast<uint64_t>(page.Bits) * page.Samples;
    std::vector<uint8_t> tile(static_cast<size_t>(tileBytes));
    std::vector<uint8_t> band(static_cast<size_t>(rowBytes * tileHeight));
    for (uint32_t top = 0; top < page.Height; top += tileHeight) {
        for (uint32_t left = 0; left < page.Width; left += tileWidth) {
            if (TIFFReadTile(tif, tile.data(), left, top, 0, 0) < 0) return false;
            // Tile widths are multiples of 16, so every tile starts on a byte.
            const uint64_t at = left * bitsPerPixel / 8;
            const uint64_t n = std::min(tileRowBytes, rowBytes - at);
            for (uint32_t ty = 0; ty < tileHeight; ++ty)
                std::memcpy(band.data() + ty * rowBytes + at, tile.data() + ty * tileRowBytes,
                            static_cast<size_t>(n));
        }
        for (uint32_t ty = 0; ty < tileHeight && top + ty < page.Height; ++ty)
            sink(top + ty, band.data() + ty * rowBytes);
    }
    return true;
}

uint8_t Unpremultiply(uint8_t c, uint8_t a) {
    if (a == 0) return 0;
    return static_cast<uint8_t>(std::min(255, (c * 255 + a / 2) / a));
}

uint8_t Scale16(uint32_t v) {
    return static_cast<uint8_t>((v * 255 + 32895) >> 16);
}

// The page's palette for 1 to 8 bits: grey levels, or the colour map.
PaletteData PaletteOfPage(TIFF* tif, const PageLayout& page, bool& ok) {
    PaletteData palette;
    palette.Flags = 0;
    const int bits = page.Bits;
    const int count = 1 << bits;
    palette.Count = static_cast<uint32_t>(count);
    ok = true;
    if (page.Photometric != PHOTOMETRIC_PALETTE) {
        for (int i = 0; i < count; ++i) {
            const int v = i * 255 / (count - 1);
            palette.SetEntry(i, v, v, v);
        }
        return palette;
    }
    uint16_t *r = nullptr, *g = nullptr, *b = nullptr;
    if (!TIFFGetField(tif, TIFFTAG_COLORMAP, &r, &g, &b) || !r || !g || !b) {
        ok = false;
        return palette;
    }
    // Old writers stored 8-bit values in the 16-bit map.
    bool wide = false;
    for (int i = 0; i < count; ++i)
        if (r[i] > 255 || g[i] > 255 || b[i] > 255) wide = true;
    auto level = [wide](uint16_t v) { return wide ? RoundHalfEven(v / 257.0) : v; };
    for (int i = 0; i < count; ++i)
        palette.SetEntry(i, level(r[i]), level(g[i]), level(b[i]));
    return palette;
}

bool DecodePage(TIFF* tif, const PageLayout& page, CImage& image) {
    const LibraryMapping mapping = MapLibraryFormat(page.LibraryFormat);
    const int32_t w = static_cast<int32_t>(page.Width), h = static_cast<int32_t>(page.Height);
    if (!NewBlock(image, w, h, mapping.Depth, 0)) return false;
    const bool minIsWhite = page.Photometric == PHOTOMETRIC_MINISWHITE;

    if (page.Way == Route::Rgba) {
        char message[1024];
        if (!TIFFRGBAImageOK(tif, message)) return false;
        std::vector<uint32_t> raster(static_cast<size_t>(w) * static_cast<size_t>(h));
        if (!TIFFReadRGBAImageOriented(tif, page.Width, page.Height, raster.data(), ORIENTATION_TOPLEFT, 0))
            return false;
        // The interface hands back premultiplied alpha.
        for (int32_t y = 0; y < h; ++y) {
            uint8_t* d = image.Row(y);
            const uint32_t* s = raster.data() + static_cast<size_t>(y) * w;
            for (int32_t x = 0; x < w; ++x) {
                const uint8_t a = static_cast<uint8_t>(TIFFGetA(s[x]));
                const uint8_t r = static_cast<uint8_t>(TIFFGetR(s[x])),
                              g = static_cast<uint8_t>(TIFFGetG(s[x])),
                              b = static_cast<uint8_t>(TIFFGetB(s[x]));
                if (mapping.Depth == 24) {
                    d[3 * x] = b;
                    d[3 * x + 1] = g;
                    d[3 * x + 2] = r;
                } else {
                    d[4 * x] = Unpremultiply(b, a);
                    d[4 * x + 1] = Unpremultiply(g, a);
                    d[4 * x + 2] = Unpremultiply(r, a);
                    d[4 * x + 3] = a;
                }
            }
        }
        return true;
    }

    switch (page.LibraryFormat) {
    case PixelFormat1bppIndexed: {
        // The decoder's convention for one bit: a set bit is white.
        bool ok = true;
        const PaletteData map = PaletteOfPage(tif, page, ok);
        if (!ok) return false;
        auto light = [&](int i) {
            const uint8_t* e = map.Entry(i);
            return e[2] * 299 + e[1] * 587 + e[0] * 114 >= 128 * 1000;
        };
        const bool zeroWhite = page.Photometric == PHOTOMETRIC_PALETTE ? light(0) : minIsWhite;
        const bool oneWhite = page.Photometric == PHOTOMETRIC_PALETTE ? light(1) : !minIsWhite;
        const size_t bytes = (static_cast<size_t>(w) + 7) / 8;
        if (!ReadRawRows(tif, page, [&](uint32_t y, const uint8_t* s) {
                uint8_t* d = image.Row(static_cast<int32_t>(y));
                for (size_t i = 0; i < bytes; ++i) {
                    uint8_t v = 0;
                    for (int bit = 0; bit < 8; ++bit) {
                        const bool set = (s[i] >> (7 - bit)) & 1;
                        if (set ? oneWhite : zeroWhite) v = static_cast<uint8_t>(v | (0x80 >> bit));
                    }
                    d[i] = v;
                }
            }))
            return false;
        // The block's palette stays white at entry 0 and black at 1, as
        // CreateNewImage made it: inverting the bits brings the decoder's
        // convention to it.
        for (int32_t y = 0; y < h; ++y) {
            uint8_t* d = image.Row(y);
            for (int32_t i = 0; i < image.Stride(); ++i)
                d[i] = static_cast<uint8_t>(~d[i]);
        }
        return true;
    }
    case PixelFormat4bppIndexed:
    case PixelFormat8bppIndexed: {
        bool ok = true;
        const PaletteData palette = PaletteOfPage(tif, page, ok);
        if (!ok) return false;
        const int maxValue = (1 << page.Bits) - 1;
        // Min-is-white grey is turned round so that its levels rise with the
        // palette, as every other grey picture's do.
        const bool invert = minIsWhite;
        if (!ReadRawRows(tif, page, [&](uint32_t y, const uint8_t* s) {
                uint8_t* d = image.Row(static_cast<int32_t>(y));
                for (int32_t x = 0; x < w; ++x) {
                    int v = 0;
                    switch (page.Bits) {
                    case 2:
                        v = (s[x >> 2] >> (6 - 2 * (x & 3))) & 3;
                        break;
                    case 4:
                        v = (x & 1) ? (s[x >> 1] & 15) : (s[x >> 1] >> 4);
                        break;
                    default:
                        v = s[x];
                        break;
                    }
                    if (invert) v = maxValue - v;
                    if (mapping.Depth == 8)
                        d[x] = static_cast<uint8_t>(v);
                    else if (x & 1)
                        d[x >> 1] = static_cast<uint8_t>(d[x >> 1] | v);
                    else
                        d[x >> 1] = static_cast<uint8_t>(v << 4);
                }
            }))
            return false;
        image.SetPaletteData(palette);
        // Grey is an 8-bit format: a 1- or 4-bit block whose few entries happen to
        // rise like a ramp stays indexed.
        if (mapping.Depth == 8)
            image.PixelFormat = IsGrayRamp(palette) ? PixelFormat8bppGray : PixelFormat8bppIndexed;
        return true;
    }
    case LibraryFormat16bppGrayScale:
        return ReadRawRows(tif, page, [&](uint32_t y, const uint8_t* s) {
            uint8_t* d = image.Row(static_cast<int32_t>(y));
            for (int32_t x = 0; x < w; ++x) {
                uint16_t v = 0;
                std::memcpy(&v, s + 2 * x, 2); // libtiff hands samples over in host order
                uint8_t g = Scale16(minIsWhite ? 65535u - v : v);
                d[3 * x] = d[3 * x + 1] = d[3 * x + 2] = g;
            }
        });
    default:
        break;
    }

    // Eight bits a sample, contiguous: RGB with or without extra samples, or
    // grey with one.
    const int n = page.Samples;
    const bool greyAlpha = page.Photometric != PHOTOMETRIC_RGB;
    return ReadRawRows(tif, page, [&](uint32_t y, const uint8_t* s) {
        uint8_t* d = image.Row(static_cast<int32_t>(y));
        for (int32_t x = 0; x < w; ++x) {
            const uint8_t* p = s + static_cast<size_t>(x) * n;
            uint8_t r, g, b;
            if (greyAlpha)
                r = g = b = minIsWhite ? static_cast<uint8_t>(255 - p[0]) : p[0];
            else {
                r = p[0];
                g = p[1];
                b = p[2];
            }
            if (mapping.Depth == 24) {
                d[3 * x] = b;
                d[3 * x + 1] = g;
                d[3 * x + 2] = r;
                continue;
            }
            uint8_t a = greyAlpha ? p[1] : p[3];
            if (page.LibraryFormat == PixelFormat32bppRGB)
                a = 255;
            else if (page.LibraryFormat == PixelFormat32bppPARGB) {
                r = Unpremultiply(r, a);
                g = Unpremultiply(g, a);
                b = Unpremultiply(b, a);
            }
            d[4 * x] = b;
            d[4 * x + 1] = g;
            d[4 * x + 2] = r;
            d[4 * x + 3] = a;
        }
    });
}

float ResolutionOf(TIFF* tif) {
    float x = 0;
    uint16_t unit = RESUNIT_INCH;
    if (!TIFFGetField(tif, TIFFTAG_XRESOLUTION, &x) || !(x > 0)) return LibraryDefaultResolution;
    TIFFGetFieldDefaulted(tif, TIFFTAG_RESOLUTIONUNIT, &unit);
    if (unit == RESUNIT_CENTIMETER) return static_cast<float>(x * 2.54);
    if (unit == RESUNIT_INCH) return x;
    return LibraryDefaultResolution;
}

bool OpenForReading(const QByteArray& bytes, TiffMemory& memory, TiffHandle& handle) {
    memory.Data = reinterpret_cast<const uint8_t*>(bytes.constData());
    memory.Size = static_cast<size_t>(bytes.size());
    return handle.Open(memory, "rm");
}

// "II" or "MM", then 42 and a first directory offset of at least 8, all read
// little-endian: only little-endian files pass.
bool TiffHead(const QByteArray& bytes) {
    if (bytes.size() < 8) return false;
    ByteReader r(bytes);
    const uint16_t order = r.U16();
    const uint16_t magic = r.U16();
    const uint32_t first = r.U32();
    return (order == 0x4949 || order == 0x4D4D) && magic == 42 && first >= 8;
}

int32_t TiffPages(const QByteArray& bytes) {
    TiffMemory memory;
    TiffHandle handle;
    if (!OpenForReading(bytes, memory, handle)) return 0;
    return static_cast<int32_t>(std::min<tdir_t>(TIFFNumberOfDirectories(handle.Get()), INT32_MAX));
}

bool LoadTif(const QByteArray& bytes, CImage& image, LoadOptions& options) {
    int32_t& frame = options.Frame;
    auto fail = [&image] {
        image.DisposeResource();
        return false;
    };
    TiffMemory memory;
    TiffHandle handle;
    if (!OpenForReading(bytes, memory, handle)) return fail();
    TIFF* tif = handle.Get();
    const int64_t count = TIFFNumberOfDirectories(tif);
    if (count < 1) return fail();
    if (frame < 0 || frame >= count) frame = static_cast<int32_t>(std::min<int64_t>(count - 1, INT32_MAX));
    if (!TIFFSetDirectory(tif, static_cast<tdir_t>(frame))) return fail();

    const PageLayout page = LayoutOf(tif);
    if (page.Way == Route::Refuse) return fail();
    // An uncompressed page stores every byte of its pixels: a file shorter
    // than that is refused before the page's block is allocated.
    uint16_t compression = COMPRESSION_NONE;
    TIFFGetFieldDefaulted(tif, TIFFTAG_COMPRESSION, &compression);
    if (compression == COMPRESSION_NONE) {
        const uint64_t planes = page.Planar == PLANARCONFIG_SEPARATE ? page.Samples : 1;
        const uint64_t stored = TIFFScanlineSize64(tif) * page.Height * planes;
        if (TIFFScanlineSize64(tif) == 0 || stored > static_cast<uint64_t>(bytes.size())) return fail();
    }
    if (!DecodePage(tif, page, image)) return fail();

    image.Resolution = ResolutionOf(tif);
    image.SetPropertyBuffer(QByteArray());
    image.PropertyCount = 0;
    image.RawPixelFormat = image.PixelFormat;
    return true;
}

bool SaveTif(const CImage& image, const SaveOptions& options, QByteArray& out, QString& error) {
    const int32_t compression = options.Int(QStringLiteral("Compression"));
    const uint32_t format = image.PixelFormat;
    int colourDepth = 32;
    switch (format) {
    case PixelFormat1bppIndexed:
        colourDepth = 1;
        break;
    case PixelFormat4bppIndexed:
        colourDepth = 4;
        break;
    case PixelFormat8bppIndexed:
    case PixelFormat8bppGray:
        colourDepth = 8;
        break;
    case PixelFormat24bppRGB:
        colourDepth = 24;
        break;
    default:
        colourDepth = 32;
        break;
    }
    uint16_t scheme = COMPRESSION_LZW;
    switch (compression) {
    case TiffCompressionDefault:
    case TiffCompressionLzw:
        scheme = COMPRESSION_LZW;
        break;
    case TiffCompressionCcitt3:
        scheme = COMPRESSION_CCITTFAX3;
        break;
    case TiffCompressionCcitt4:
        scheme = COMPRESSION_CCITTFAX4;
        break;
    case TiffCompressionRle:
        scheme = COMPRESSION_CCITTRLE;
        break;
    case TiffCompressionNone:
        scheme = COMPRESSION_NONE;
        break;
    default:
        error = QStringLiteral("TIFF 文件没有这种压缩方式: %1").arg(compression);
        return false;
    }
    const bool fax =
        scheme == COMPRESSION_CCITTFAX3 || scheme == COMPRESSION_CCITTFAX4 || scheme == COMPRESSION_CCITTRLE;
    if (fax && colourDepth != 1) {
        error = QStringLiteral("传真压缩只能用于黑白 (1 位) 图像。");
        return false;
    }

    std::vector<uint8_t> encoded;
    TiffMemory memory;
    memory.Out = &encoded;
    TiffHandle handle;
    if (!handle.Open(memory, "w")) return false;
    TIFF* tif = handle.Get();
    const int32_t w = image.Width(), h = image.Height();
    const PaletteData& pal = image.Palette();

    uint16_t photometric = PHOTOMETRIC_RGB, bits = 8, samples = 3;
    switch (colourDepth) {
    case 1: {
        // Two-colour pictures are stored as bilevel: the lighter entry is white.
        auto lum = [&](int i) {
            const uint8_t* e = pal.Entry(i);
            return e[2] * 299 + e[1] * 587 + e[0] * 114;
        };
        photometric = lum(0) >= lum(1) ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK;
        bits = 1;
        samples = 1;
        break;
    }
    case 4:
    case 8:
        photometric = format == PixelFormat8bppGray ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_PALETTE;
        bits = static_cast<uint16_t>(colourDepth);
        samples = 1;
        break;
    case 24:
        break;
    default:
        samples = 4;
        break;
    }

    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(w));
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(h));
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, bits);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, samples);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, photometric);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, scheme);
    TIFFSetField(tif, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tif, TIFFTAG_XRESOLUTION, image.Resolution);
    TIFFSetField(tif, TIFFTAG_YRESOLUTION, image.Resolution);
    TIFFSetField(tif, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    if (samples == 4) {
        uint16_t extra[1] = {EXTRASAMPLE_UNASSALPHA};
        TIFFSetField(tif, TIFFTAG_EXTRASAMPLES, 1, extra);
    }
    if (photometric == PHOTOMETRIC_PALETTE) {
        const int count = 1 << bits;
        std::vector<uint16_t> r(static_cast<size_t>(count)), g(r.size()), b(r.size());
        for (int i = 0; i < count; ++i) {
            const uint8_t* e = pal.Entry(i);
            b[i] = static_cast<uint16_t>(e[0] * 257);
            g[i] = static_cast<uint16_t>(e[1] * 257);
            r[i] = static_cast<uint16_t>(e[2] * 257);
        }
        TIFFSetField(tif, TIFFTAG_COLORMAP, r.data(), g.data(), b.data());
    }
    TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tif, 0));

    std::vector<uint8_t> row(
        static_cast<size_t>(std::max<int64_t>(image.Stride(), static_cast<int64_t>(w) * 4)));
    for (int32_t y = 0; y < h; ++y) {
        switch (colourDepth) {
        case 1:
        case 4:
        case 8:
            std::memcpy(row.data(), image.Row(y), static_cast<size_t>(image.Stride()));
            break;
        case 24:
            RowToBgr(image, y, row.data());
            for (int32_t x = 0; x < w; ++x)
                std::swap(row[3 * x], row[3 * x + 2]);
            break;
        default:
            RowToBgra(image, y, row.data());
            for (int32_t x = 0; x < w; ++x)
                std::swap(row[4 * x], row[4 * x + 2]);
            break;
        }
        if (TIFFWriteScanline(tif, row.data(), static_cast<uint32_t>(y), 0) < 0) return false;
    }
    if (!TIFFWriteDirectory(tif)) return false;
    handle.Close();

    out = QByteArray(reinterpret_cast<const char*>(encoded.data()), static_cast<qsizetype>(encoded.size()));
    return true;
}

} // namespace

const FileFamily& TifFamily() {
    static const FileFamily family = [] {
        FileFamily f;
        f.Code = RawTiff;
        f.Name = "TifParser";
        f.Signature = [](const QByteArray& bytes) { return TiffHead(bytes); };
        f.Load = LoadTif;
        f.Save = SaveTif;
        f.FrameCount = TiffPages;
        f.Options = {{.Key = QStringLiteral("Compression"),
                      .Label = QStringLiteral("压缩"),
                      .Type = SaveOptionSpec::Choice,
                      .Default = TiffCompressionDefault,
                      .Choices = {{TiffCompressionDefault, QStringLiteral("默认 (LZW)")},
                                  {TiffCompressionLzw, QStringLiteral("LZW")},
                                  {TiffCompressionNone, QStringLiteral("不压缩")},
                                  {TiffCompressionCcitt3, QStringLiteral("CCITT 3 组传真")},
                                  {TiffCompressionCcitt4, QStringLiteral("CCITT 4 组传真")},
                                  {TiffCompressionRle, QStringLiteral("CCITT 游程编码")}},
                      .SettingKey = QStringLiteral("TiffCompression"),
                      // The fax codings exist for black and white only.
                      .Fits = [](int32_t value, const CImage& image) {
                          return value < TiffCompressionCcitt3 || value > TiffCompressionRle ||
                                 image.PixelFormat == PixelFormat1bppIndexed;
                      }}};
        return f;
    }();
    return family;
}

bool TifParser::IsTif(const QString& file) {
    return FamilyRecognises(TifFamily(), file);
}

bool TifParser::LoadPictureFromFile(const QString& file, CImage& image, int32_t& frame) {
    return LoadFamilyFile(TifFamily(), file, image, frame);
}

int32_t TifParser::GetFrameCount(const QString& file) {
    return FamilyFrameCount(TifFamily(), file);
}

bool TifParser::SavePictureToFile(const QString& file, CImage& image, int32_t compression) {
    SaveOptions options;
    options.Set(QStringLiteral("Compression"), compression);
    return SaveFamilyFile(TifFamily(), file, image, options);
}

bool TifParser::GetImageThumbAndInfo(const QString& file, QPainter* graphics, int32_t& width, int32_t& height,
                                     int32_t& bitDepth) {
    return FamilyThumbAndInfo(TifFamily(), file, graphics, width, height, bitDepth);
}

} // namespace vm
