// The one fuzz target of every file family, built once a family with
// VELLUMARK_FUZZ_FAMILY set to its code. Whatever the family's loader takes
// must load every frame it reports, and whatever loads must save with every
// declared option value the writer accepts, and load back at the same size.
// Headers that declare huge pictures are not filtered here: the parsers must
// refuse or survive them.
#include "FuzzSupport.h"
#include "formats/ParserRegistry.h"

#include <new>

using namespace vm;

namespace {

// Loads Bytes; an allocation failure counts as a refusal, as the open's
// boundary reports it.
bool Load(const FileFamily& family, const QByteArray& bytes, CImage& image, int32_t& frame) {
    LoadOptions options;
    options.Frame = frame;
    try {
        if (!family.Load(bytes, image, options)) return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
    frame = options.Frame;
    return true;
}

// The options to try: the defaults, then each declared value of each option
// alone.
std::vector<SaveOptions> Variations(const FileFamily& family) {
    std::vector<SaveOptions> list{SaveOptions()};
    for (const SaveOptionSpec& declared : family.Options) {
        std::vector<int32_t> values;
        if (declared.Type == SaveOptionSpec::Choice)
            for (const SaveOptionChoice& c : declared.Choices)
                values.push_back(c.Value);
        else
            values = {declared.Min, declared.Max};
        for (int32_t v : values) {
            SaveOptions o;
            o.Set(declared.Key, v);
            list.push_back(o);
        }
    }
    return list;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vmfuzz::EnsureGuiApplication();
    static const FileFamily* family = ParserFor(VELLUMARK_FUZZ_FAMILY);
    vmfuzz::Check(family != nullptr);
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (!family->Signature(bytes)) return 0;

    CImage image;
    int32_t frame = -1;
    if (!Load(*family, bytes, image, frame)) return 0;
    if (family->FrameCount) {
        const int32_t frames = family->FrameCount(bytes);
        vmfuzz::Check(frame >= 0 && frame < frames);
        for (int32_t k = 0; k < frames && k < 8; ++k) {
            CImage other;
            int32_t f = k;
            if (Load(*family, bytes, other, f)) vmfuzz::Check(f == k);
        }
    }
    if (!family->Save) return 0;
    for (const SaveOptions& given : Variations(*family)) {
        const SaveOptions options = ResolveSaveOptions(*family, image, given, false);
        QByteArray out;
        QString error;
        bool saved = false;
        try {
            saved = family->Save(image, options, out, error);
        } catch (const std::bad_alloc&) {
            continue;
        }
        if (!saved) continue;
        CImage back;
        int32_t first = 0;
        vmfuzz::Check(family->Signature(out) && Load(*family, out, back, first));
        vmfuzz::Check(back.Width() == image.Width() && back.Height() == image.Height());
    }
    return 0;
}
