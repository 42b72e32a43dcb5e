#pragma once
// JPEG through libjpeg-turbo, its Exif block through libexif.
//
// The property items of a JPEG travel in CImage::PropertyBuffer, PropertyCount
// of them back to back, in the order the file holds them (main image, Exif,
// interoperability, GPS, thumbnail directory, then the thumbnail's own bytes).
// One item:
//
//   offset 0   uint32  Id         the Exif tag; 20507 for the thumbnail's bytes
//   offset 4   uint16  Type       1 byte, 2 ASCII, 3 short, 4 long, 5 rational,
//                                 6 signed byte, 7 undefined, 8 signed short,
//                                 9 signed long, 10 signed rational, 11 float,
//                                 12 double
//   offset 6   uint16  Directory  0 main image, 1 thumbnail, 2 Exif, 3 GPS,
//                                 4 interoperability
//   offset 8   uint32  Length     bytes of the value
//   offset 12  Length bytes       the value; numbers little-endian
//
// All header fields are little-endian.
#include "core/Image.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <vector>

class QPainter;

namespace vm {

struct FileFamily;
const FileFamily& JpgFamily();

// One property item as the buffer holds it.
struct PropertyItem {
    uint32_t Id = 0;
    uint16_t Type = 0;
    uint16_t Directory = 0;
    QByteArray Value;
};

// The item ids and values the writer treats specially.
constexpr uint32_t PropertyTagThumbnailData = 20507;
constexpr uint32_t PropertyTagSoftwareUsed = 305;
constexpr const char* JpegSoftwareName = "Osier Vellumark 2.0";

// Reads a property buffer; items that run past its end are dropped.
std::vector<PropertyItem> ParsePropertyBuffer(const QByteArray& Buffer);
QByteArray BuildPropertyBuffer(const std::vector<PropertyItem>& Items);

class JpgParser {
  public:
    // FF D8 at the start and FF D9 as the very last two bytes: a file with
    // anything behind its end marker is not taken for a JPEG.
    bool IsJpg(const QString& File);
    bool LoadPictureFromFile(const QString& File, CImage& Image);
    // Quality is clamped to 0..100. With four items or more and IgnoreExif off,
    // the items go back into the file with a new thumbnail and this program as
    // the software item.
    bool SavePictureToFile(const QString& File, CImage& Image, int32_t Quality);
    bool GetImageThumbAndInfo(const QString& File, QPainter* Graphics, int32_t& Width, int32_t& Height,
                              int32_t& BitDepth);
    // The size an image takes in a MaxWidth x MaxHeight box, aspect kept; an
    // image that fits keeps its size.
    bool GetBestFitInfo(const CImage& Image, int32_t MaxWidth, int32_t MaxHeight, int32_t& Width,
                        int32_t& Height);
};

} // namespace vm
