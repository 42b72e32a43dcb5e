#include "formats/GifParser.h"

#include "formats/CodecCommon.h"
#include "formats/ParserCommon.h"
#include "formats/ParserRegistry.h"

#include <QPainter>

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <vector>

#include <gif_lib.h>

namespace vm {

namespace {

struct GifInput {
    const uint8_t* Data = nullptr;
    size_t Size = 0;
    size_t Position = 0;
};

int ReadGifBytes(GifFileType* gif, GifByteType* out, int count) {
    auto* in = static_cast<GifInput*>(gif->UserData);
    const size_t n = std::min(static_cast<size_t>(std::max(count, 0)), in->Size - in->Position);
    std::memcpy(out, in->Data + in->Position, n);
    in->Position += n;
    return static_cast<int>(n);
}

int WriteGifBytes(GifFileType* gif, const GifByteType* data, int count) {
    static_cast<QByteArray*>(gif->UserData)->append(reinterpret_cast<const char*>(data), count);
    return count;
}

// A whole file decoded by giflib, released with it.
class GifDecoder {
  public:
    ~GifDecoder() {
        int error = 0;
        if (gif_) DGifCloseFile(gif_, &error);
    }
    bool Open(const QByteArray& bytes) {
        input_ = {reinterpret_cast<const uint8_t*>(bytes.constData()), static_cast<size_t>(bytes.size()), 0};
        int error = 0;
        gif_ = DGifOpen(&input_, ReadGifBytes, &error);
        return gif_ && DGifSlurp(gif_) == GIF_OK && gif_->ImageCount > 0;
    }
    GifFileType* File() const { return gif_; }

  private:
    GifInput input_;
    GifFileType* gif_ = nullptr;
};

struct FrameInfo {
    const ColorMapObject* Map = nullptr;
    int Transparent = NO_TRANSPARENT_COLOR;
    int Disposal = DISPOSAL_UNSPECIFIED;
};

FrameInfo InfoOf(GifFileType* gif, int frame) {
    FrameInfo info;
    const SavedImage& image = gif->SavedImages[frame];
    info.Map = image.ImageDesc.ColorMap ? image.ImageDesc.ColorMap : gif->SColorMap;
    GraphicsControlBlock gcb;
    if (DGifSavedExtensionToGCB(gif, frame, &gcb) == GIF_OK) {
        info.Transparent = gcb.TransparentColor;
        info.Disposal = gcb.DisposalMode;
    }
    return info;
}

// The frame's colour table as a palette; the transparent entry has alpha 0.
PaletteData PaletteOf(const FrameInfo& info) {
    PaletteData palette;
    palette.Flags = 0;
    if (!info.Map || !info.Map->Colors) return palette;
    const int count = std::clamp(info.Map->ColorCount, 0, 256);
    palette.Count = static_cast<uint32_t>(count);
    for (int i = 0; i < count; ++i) {
        const GifColorType& c = info.Map->Colors[i];
        palette.SetEntry(i, c.Red, c.Green, c.Blue, i == info.Transparent ? 0 : 255);
    }
    if (info.Transparent >= 0 && info.Transparent < count) palette.Flags |= 1;
    return palette;
}

struct Canvas {
    int32_t Width = 0, Height = 0;
};

// The largest side a GIF can state.
constexpr int32_t GifMaxSide = 65535;

// The picture is the logical screen, and frames are clipped to it, as
// browsers show them. A screen of 0 x 0 (some writers leave it empty) is the
// union of the frames' extents, cut to what a GIF can state: a frame placed
// beyond that lies outside any picture the format can describe, and the
// picture must survive its own save and reload.
Canvas CanvasOf(GifFileType* gif) {
    Canvas c{gif->SWidth, gif->SHeight};
    if (c.Width > 0 && c.Height > 0) return c;
    c = {};
    for (int i = 0; i < gif->ImageCount; ++i) {
        const GifImageDesc& d = gif->SavedImages[i].ImageDesc;
        c.Width = std::max(c.Width, d.Left + d.Width);
        c.Height = std::max(c.Height, d.Top + d.Height);
    }
    c.Width = std::min(c.Width, GifMaxSide);
    c.Height = std::min(c.Height, GifMaxSide);
    return c;
}

int32_t GifFrames(const QByteArray& bytes) {
    GifDecoder decoder;
    if (!decoder.Open(bytes)) return 0;
    return decoder.File()->ImageCount;
}

// Calls Visit(x, y, index) for every pixel of the frame that lies on the canvas.
template <typename Visit> void ForFramePixels(const SavedImage& image, const Canvas& canvas, Visit&& visit) {
    const GifImageDesc& d = image.ImageDesc;
    if (!image.RasterBits) return;
    for (int32_t fy = 0; fy < d.Height; ++fy) {
        const int32_t y = d.Top + fy;
        if (y < 0 || y >= canvas.Height) continue;
        const GifByteType* row = image.RasterBits + static_cast<size_t>(fy) * static_cast<size_t>(d.Width);
        for (int32_t fx = 0; fx < d.Width; ++fx) {
            const int32_t x = d.Left + fx;
            if (x >= 0 && x < canvas.Width) visit(x, y, row[fx]);
        }
    }
}

void ClearRect(std::vector<uint32_t>& argb, const Canvas& canvas, const GifImageDesc& d) {
    for (int32_t y = std::max(d.Top, 0); y < std::min(d.Top + d.Height, canvas.Height); ++y)
        for (int32_t x = std::max(d.Left, 0); x < std::min(d.Left + d.Width, canvas.Width); ++x)
            argb[static_cast<size_t>(y) * canvas.Width + x] = 0;
}

// Frames 0 .. Last played as an animation shows them, into straight ARGB.
// An index the colour table does not hold paints black.
std::vector<uint32_t> ComposeFrames(GifFileType* gif, const Canvas& canvas, int last) {
    std::vector<uint32_t> argb(static_cast<size_t>(canvas.Width) * static_cast<size_t>(canvas.Height), 0);
    std::vector<uint32_t> saved;
    for (int i = 0; i <= last; ++i) {
        if (i > 0) {
            const FrameInfo before = InfoOf(gif, i - 1);
            if (before.Disposal == DISPOSE_BACKGROUND)
                ClearRect(argb, canvas, gif->SavedImages[i - 1].ImageDesc);
            else if (before.Disposal == DISPOSE_PREVIOUS && !saved.empty())
                argb = saved;
        }
        const FrameInfo info = InfoOf(gif, i);
        if (info.Disposal == DISPOSE_PREVIOUS) saved = argb;
        const int count = info.Map ? info.Map->ColorCount : 0;
        ForFramePixels(gif->SavedImages[i], canvas, [&](int32_t x, int32_t y, int index) {
            if (index == info.Transparent) return;
            uint32_t colour = 0xFF000000u;
            if (index < count) {
                const GifColorType& c = info.Map->Colors[index];
                colour |=
                    (static_cast<uint32_t>(c.Red) << 16) | (static_cast<uint32_t>(c.Green) << 8) | c.Blue;
            }
            argb[static_cast<size_t>(y) * canvas.Width + x] = colour;
        });
    }
    return argb;
}

uint32_t NextPowerOfTwo(uint32_t n) {
    uint32_t p = 2;
    while (p < n)
        p <<= 1;
    return p;
}

// Writes one frame with the low-level calls, so that a failure half way
// still closes the file and frees what giflib holds.
bool EncodeGif(int32_t width, int32_t height, const std::vector<GifColorType>& colours, int transparent,
               const std::vector<uint8_t>& indices, QByteArray& out) {
    int error = 0;
    GifFileType* gif = EGifOpen(&out, WriteGifBytes, &error);
    if (!gif) return false;
    ColorMapObject* map = GifMakeMapObject(static_cast<int>(colours.size()), colours.data());
    bool ok = map != nullptr;
    EGifSetGifVersion(gif, transparent >= 0);
    ok = ok && EGifPutScreenDesc(gif, width, height, map->BitsPerPixel, 0, map) == GIF_OK;
    if (ok && transparent >= 0) {
        GraphicsControlBlock gcb{};
        gcb.DisposalMode = DISPOSAL_UNSPECIFIED;
        gcb.UserInputFlag = false;
        gcb.DelayTime = 0;
        gcb.TransparentColor = transparent;
        GifByteType ext[4];
        const size_t n = EGifGCBToExtension(&gcb, ext);
        ok = EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, static_cast<int>(n), ext) == GIF_OK;
    }
    ok = ok && EGifPutImageDesc(gif, 0, 0, width, height, false, nullptr) == GIF_OK;
    for (int32_t y = 0; ok && y < height; ++y)
        ok = EGifPutLine(gif, const_cast<GifPixelType*>(indices.data() + static_cast<size_t>(y) * width),
                         width) == GIF_OK;
    if (map) GifFreeMapObject(map);
    if (EGifCloseFile(gif, &error) != GIF_OK) ok = false;
    return ok;
}

bool LoadGif(const QByteArray& bytes, CImage& image, LoadOptions& options) {
    int32_t& frame = options.Frame;
    auto fail = [&image] {
        image.DisposeResource();
        return false;
    };
    GifDecoder decoder;
    if (!decoder.Open(bytes)) return fail();
    GifFileType* gif = decoder.File();
    const int32_t count = gif->ImageCount;
    if (frame < 0 || frame >= count) frame = count - 1;

    const Canvas canvas = CanvasOf(gif);
    if (canvas.Width < 1 || canvas.Height < 1 ||
        static_cast<int64_t>(canvas.Width) * canvas.Height * 4 > MaxBlockBytes)
        return fail();
    const FrameInfo info = InfoOf(gif, frame);
    const PaletteData palette = PaletteOf(info);
    // A frame of several is composed by the decoder and reported as ARGB.
    const bool composed = count > 1;

    if (8 + 4 * palette.Count < 13) {
        // At most one colour: the frame is taken as ARGB.
        if (!NewBlock(image, canvas.Width, canvas.Height, 32, 0)) return fail();
        const std::vector<uint32_t> argb = ComposeFrames(gif, canvas, frame);
        for (int32_t y = 0; y < canvas.Height; ++y)
            std::memcpy(image.Row(y), argb.data() + static_cast<size_t>(y) * canvas.Width,
                        static_cast<size_t>(canvas.Width) * 4);
        image.PixelFormat = PixelFormat32bppARGB;
    } else {
        if (!NewBlock(image, canvas.Width, canvas.Height, 8, 0)) return fail();
        image.SetPaletteData(palette);
        if (composed) {
            // Drawn into the indexed block: each pixel takes the nearest entry,
            // and what the frames leave transparent keeps the block's index 0.
            const std::vector<uint32_t> argb = ComposeFrames(gif, canvas, frame);
            std::unordered_map<uint32_t, uint8_t> nearest;
            for (int32_t y = 0; y < canvas.Height; ++y) {
                uint8_t* d = image.Row(y);
                const uint32_t* s = argb.data() + static_cast<size_t>(y) * canvas.Width;
                for (int32_t x = 0; x < canvas.Width; ++x) {
                    if ((s[x] >> 24) == 0) continue;
                    const uint32_t rgb = s[x] & 0xFFFFFF;
                    auto it = nearest.find(rgb);
                    if (it == nearest.end())
                        it = nearest
                                 .emplace(rgb, static_cast<uint8_t>(NearestPaletteIndex(
                                                   palette, (rgb >> 16) & 255, (rgb >> 8) & 255, rgb & 255)))
                                 .first;
                    d[x] = it->second;
                }
            }
        } else {
            // Around a frame smaller than the screen lies the transparent
            // colour, or the background colour when there is none.
            const int fill = info.Transparent >= 0 ? info.Transparent : gif->SBackGroundColor;
            image.FillSolidColor(static_cast<uint8_t>(std::clamp(fill, 0, 255)));
            ForFramePixels(gif->SavedImages[frame], canvas, [&](int32_t x, int32_t y, int index) {
                image.Row(y)[x] = static_cast<uint8_t>(index);
            });
        }
        image.PixelFormat = PixelFormat8bppIndexed;
    }

    image.Resolution = LibraryDefaultResolution;
    image.SetPropertyBuffer(QByteArray());
    image.PropertyCount = 0;
    image.RawPixelFormat = image.PixelFormat;
    return true;
}

bool SaveGif(const CImage& image, const SaveOptions& options, QByteArray& out, QString& error) {
    (void)options;
    const int32_t w = image.Width(), h = image.Height();
    if (w > GifMaxSide || h > GifMaxSide) {
        error = TooLargeMessage(QStringLiteral("GIF"), GifMaxSide);
        return false;
    }
    std::vector<uint8_t> indices(static_cast<size_t>(w) * static_cast<size_t>(h));
    std::vector<GifColorType> colours;
    int transparent = -1;

    const uint32_t format = image.PixelFormat;
    if (format == PixelFormat1bppIndexed || format == PixelFormat4bppIndexed ||
        format == PixelFormat8bppIndexed || format == PixelFormat8bppGray) {
        int maxIndex = 0;
        for (int32_t y = 0; y < h; ++y) {
            const uint8_t* s = image.Row(y);
            uint8_t* d = indices.data() + static_cast<size_t>(y) * w;
            for (int32_t x = 0; x < w; ++x) {
                d[x] = static_cast<uint8_t>(IndexInRow(s, x, BitsPerPixel(format)));
                maxIndex = std::max<int>(maxIndex, d[x]);
            }
        }
        PaletteData palette = image.Palette();
        if (format == PixelFormat8bppGray) {
            palette.Count = 256;
            for (int i = 0; i < 256; ++i)
                palette.SetEntry(i, i, i, i, 255);
        }
        const uint32_t count =
            NextPowerOfTwo(std::max<uint32_t>(std::min<uint32_t>(palette.Count, 256), maxIndex + 1));
        colours.resize(count);
        for (uint32_t i = 0; i < count; ++i) {
            const uint8_t* e = palette.Entry(static_cast<int>(i));
            colours[i] = {e[2], e[1], e[0]};
            if (transparent < 0 && i < palette.Count && e[3] == 0) transparent = static_cast<int>(i);
        }
    } else {
        // Colour pixels are reduced to 256 colours by median cut; with pixels
        // of alpha below one half, one entry is kept back for them.
        const size_t n = indices.size();
        std::vector<GifByteType> r(n), g(n), b(n);
        std::vector<uint8_t> row(static_cast<size_t>(w) * 4);
        bool anyTransparent = false;
        for (int32_t y = 0; y < h; ++y) {
            RowToBgra(image, y, row.data());
            for (int32_t x = 0; x < w; ++x) {
                const size_t i = static_cast<size_t>(y) * w + x;
                b[i] = row[4 * x];
                g[i] = row[4 * x + 1];
                r[i] = row[4 * x + 2];
                if (row[4 * x + 3] < 128) anyTransparent = true;
            }
        }
        int mapSize = anyTransparent ? 255 : 256;
        colours.assign(256, GifColorType{0, 0, 0});
        if (GifQuantizeBuffer(static_cast<unsigned>(w), static_cast<unsigned>(h), &mapSize, r.data(),
                              g.data(), b.data(), indices.data(), colours.data()) != GIF_OK)
            return false;
        if (anyTransparent) {
            transparent = 255;
            for (int32_t y = 0; y < h; ++y) {
                RowToBgra(image, y, row.data());
                for (int32_t x = 0; x < w; ++x)
                    if (row[4 * x + 3] < 128) indices[static_cast<size_t>(y) * w + x] = 255;
            }
        }
    }

    out.clear();
    if (!EncodeGif(w, h, colours, transparent, indices, out)) return false;
    return true;
}

} // namespace

const FileFamily& GifFamily() {
    static const FileFamily family = [] {
        FileFamily f;
        f.Code = RawGif;
        f.Name = "GifParser";
        f.Signature = [](const QByteArray& bytes) {
            return bytes.startsWith("GIF89a") || bytes.startsWith("GIF87a");
        };
        f.Load = LoadGif;
        f.Save = SaveGif;
        f.FrameCount = GifFrames;
        return f;
    }();
    return family;
}

bool GifParser::IsGif(const QString& file) {
    return FamilyRecognises(GifFamily(), file);
}

bool GifParser::LoadPictureFromFile(const QString& file, CImage& image, int32_t& frame) {
    return LoadFamilyFile(GifFamily(), file, image, frame);
}

int32_t GifParser::GetFrameCount(const QString& file) {
    return FamilyFrameCount(GifFamily(), file);
}

bool GifParser::SavePictureToFile(const QString& file, CImage& image) {
    return SaveFamilyFile(GifFamily(), file, image, SaveOptions());
}

bool GifParser::GetImageThumbAndInfo(const QString& file, QPainter* graphics, int32_t& width, int32_t& height,
                                     int32_t& bitDepth) {
    return FamilyThumbAndInfo(GifFamily(), file, graphics, width, height, bitDepth);
}

} // namespace vm
