#pragma once
// The parsers in the order loading tries them. A family whose parser is not
// built yet is simply absent: loading passes over it, saving answers false.
#include "core/Image.h"

#include <functional>
#include <vector>

namespace vm {

struct ParserEntry {
    int32_t Code = 0;
    const char* Name = "";
    std::function<bool(const QString& File)> Is;
    std::function<bool(const QString& File, CImage& Image, int32_t FrameIndex)> Load;
    // Empty for the families that cannot be written.
    std::function<bool(const QString& File, CImage& Image, const SaveOptions& Options)> Save;
    // Number of frames (pages) in a file; empty for single-picture families.
    std::function<int32_t(const QString& File)> FrameCount;
};

const std::vector<ParserEntry>& Parsers();
const ParserEntry* ParserFor(int32_t Code);
// The first parser whose signature test accepts the file, or null.
const ParserEntry* ParserOf(const QString& File);

} // namespace vm
