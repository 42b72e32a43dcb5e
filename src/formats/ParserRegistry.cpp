#include "formats/ParserRegistry.h"

#include <algorithm>

// One line a family, in the order loading tries them: the weak signatures
// come late, so that a format without a magic number cannot take a file of a
// format with one. Each family's entry is defined beside its parser.
#define VELLUMARK_FILE_FAMILIES(X)                                                                           \
    X(BmpFamily)                                                                                             \
    X(JpgFamily)                                                                                             \
    X(PngFamily)                                                                                             \
    X(GifFamily)                                                                                             \
    X(TifFamily)                                                                                             \
    X(WmfFamily)                                                                                             \
    X(EmfFamily)

namespace vm {

#define VELLUMARK_DECLARE_FAMILY(Name) const FileFamily& Name();
VELLUMARK_FILE_FAMILIES(VELLUMARK_DECLARE_FAMILY)
#undef VELLUMARK_DECLARE_FAMILY

bool SaveOptionSpec::Accepts(int32_t value) const {
    switch (Type) {
    case Switch:
        return value == 0 || value == 1;
    case Choice:
        return std::any_of(Choices.begin(), Choices.end(),
                           [value](const SaveOptionChoice& c) { return c.Value == value; });
    default:
        return value >= Min && value <= Max;
    }
}

int32_t SaveOptionSpec::Clamped(int32_t value) const {
    switch (Type) {
    case Switch:
        return value != 0 ? 1 : 0;
    case Choice:
        return Accepts(value) ? value : Default;
    default:
        return std::clamp(value, Min, Max);
    }
}

const SaveOptionSpec* FileFamily::Option(const QString& key) const {
    for (const SaveOptionSpec& o : Options)
        if (o.Key == key) return &o;
    return nullptr;
}

const std::vector<const FileFamily*>& Parsers() {
#define VELLUMARK_LIST_FAMILY(Name) &Name(),
    static const std::vector<const FileFamily*> families{VELLUMARK_FILE_FAMILIES(VELLUMARK_LIST_FAMILY)};
#undef VELLUMARK_LIST_FAMILY
    return families;
}

const FileFamily* ParserFor(int32_t code) {
    for (const FileFamily* f : Parsers())
        if (f->Code == code) return f;
    return nullptr;
}

const FileFamily* ParserOf(const QByteArray& bytes) {
    for (const FileFamily* f : Parsers())
        if (f->Signature(bytes)) return f;
    return nullptr;
}

} // namespace vm
