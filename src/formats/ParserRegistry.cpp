#include "formats/ParserRegistry.h"

#include "formats/BmpParser.h"
#include "formats/EmfParser.h"
#include "formats/GifParser.h"
#include "formats/JpgParser.h"
#include "formats/PngParser.h"
#include "formats/TifParser.h"
#include "formats/WmfParser.h"

namespace vm {

const std::vector<ParserEntry>& Parsers() {
    static const std::vector<ParserEntry> parsers = [] {
        std::vector<ParserEntry> list;
        {
            ParserEntry e;
            e.Code = RawBmp;
            e.Name = "BmpParser";
            e.Is = [](const QString& f) { return BmpParser().IsBmp(f); };
            e.Load = [](const QString& f, CImage& img, int32_t) { return BmpParser().LoadPictureFromFile(f, img); };
            e.Save = [](const QString& f, CImage& img, const SaveOptions& o) {
                return BmpParser().SavePictureToFile(f, img, o.FileSystem, o.FlipRow, o.Compress, o.Bmp16Format);
            };
            list.push_back(e);
        }
        {
            ParserEntry e;
            e.Code = RawJpeg;
            e.Name = "JpgParser";
            e.Is = [](const QString& f) { return JpgParser().IsJpg(f); };
            e.Load = [](const QString& f, CImage& img, int32_t) {
                return JpgParser().LoadPictureFromFile(f, img);
            };
            e.Save = [](const QString& f, CImage& img, const SaveOptions& o) {
                return JpgParser().SavePictureToFile(f, img, o.Quality);
            };
            list.push_back(e);
        }
        {
            ParserEntry e;
            e.Code = RawPng;
            e.Name = "PngParser";
            e.Is = [](const QString& f) { return PngParser().IsPng(f); };
            e.Load = [](const QString& f, CImage& img, int32_t) {
                return PngParser().LoadPictureFromFile(f, img);
            };
            e.Save = [](const QString& f, CImage& img, const SaveOptions&) {
                return PngParser().SavePictureToFile(f, img);
            };
            list.push_back(e);
        }
        {
            ParserEntry e;
            e.Code = RawGif;
            e.Name = "GifParser";
            e.Is = [](const QString& f) { return GifParser().IsGif(f); };
            e.Load = [](const QString& f, CImage& img, int32_t frame) {
                return GifParser().LoadPictureFromFile(f, img, frame);
            };
            e.Save = [](const QString& f, CImage& img, const SaveOptions&) {
                return GifParser().SavePictureToFile(f, img);
            };
            e.FrameCount = [](const QString& f) { return GifParser().GetFrameCount(f); };
            list.push_back(e);
        }
        {
            ParserEntry e;
            e.Code = RawTiff;
            e.Name = "TifParser";
            e.Is = [](const QString& f) { return TifParser().IsTif(f); };
            e.Load = [](const QString& f, CImage& img, int32_t frame) {
                return TifParser().LoadPictureFromFile(f, img, frame);
            };
            e.Save = [](const QString& f, CImage& img, const SaveOptions& o) {
                return TifParser().SavePictureToFile(f, img, o.Compression);
            };
            e.FrameCount = [](const QString& f) { return TifParser().GetFrameCount(f); };
            list.push_back(e);
        }
        {
            ParserEntry e;
            e.Code = RawWmf;
            e.Name = "WmfParser";
            e.Is = [](const QString& f) { return WmfParser().IsWmf(f); };
            e.Load = [](const QString& f, CImage& img, int32_t) {
                return WmfParser().LoadPictureFromFile(f, img);
            };
            e.Save = [](const QString& f, CImage& img, const SaveOptions&) {
                return WmfParser().SavePictureToFile(f, img);
            };
            list.push_back(e);
        }
        {
            ParserEntry e;
            e.Code = RawEmf;
            e.Name = "EmfParser";
            e.Is = [](const QString& f) { return EmfParser().IsEmf(f); };
            e.Load = [](const QString& f, CImage& img, int32_t) {
                return EmfParser().LoadPictureFromFile(f, img);
            };
            e.Save = [](const QString& f, CImage& img, const SaveOptions&) {
                return EmfParser().SavePictureToFile(f, img);
            };
            list.push_back(e);
        }
        return list;
    }();
    return parsers;
}

const ParserEntry* ParserFor(int32_t code) {
    for (const auto& p : Parsers())
        if (p.Code == code) return &p;
    return nullptr;
}

const ParserEntry* ParserOf(const QString& file) {
    for (const auto& p : Parsers())
        if (p.Is(file)) return &p;
    return nullptr;
}

} // namespace vm
