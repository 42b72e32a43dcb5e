#include "formats/ParserRegistry.h"

#include "formats/BmpParser.h"

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
