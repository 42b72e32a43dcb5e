#pragma once
// The paint bucket: one click floods the region the magic wand would pick at
// the clicked pixel (held to the present selection) with a colour or a
// pattern, blended in one of the editor's blend modes. The image's selection
// is the same afterwards as before the click.
#include <QImage>

#include <cstdint>

namespace vm {

class CImage;
class CSelection;

struct BucketOptions {
    int32_t FillContent = 0;         // 0 colour, 1 pattern
    int32_t Color = 0;               // COLORREF 0x00BBGGRR
    const QImage* Pattern = nullptr; // the pattern when FillContent is 1
    int32_t BlendMode =
        0; // a BlendMode (BlendModes.h); for grey pictures map the grey list's row through GreyBlendModes()
    int32_t OpacityPercent = 100; // 1..100
    int32_t Tolerance = 32;       // as the magic wand's
    bool Contiguous = true;       // only the connected region, else every similar pixel
};

// One click of the paint bucket at (X, Y) in image pixels. 1-bit and indexed
// pictures are refused with a message; a click outside a made selection does
// nothing. Selection is the document's selection; it and the image's attached
// selection are as they were afterwards, and no selection event is raised: the
// fill's two progress events are the whole command. False when refused or
// nothing happened.
bool PaintBucketAt(CImage& Image, CSelection& Selection, int32_t X, int32_t Y, const BucketOptions& Options);

} // namespace vm
