#pragma once
// CImage: the one object that owns pixels. A single top-down block, B G R A
// byte order, every row padded to a multiple of 4 bytes, a 256-entry palette,
// the metadata a file brought, and the options a format keeps for the next save.
#include "core/ImageListener.h"
#include "core/PixelFormat.h"

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

class QPainter;

namespace vm {

class CSelection;

// Same layout as the imaging libraries' colour palette: Flags, Count, then 256
// entries of blue, green, red, alpha. 1032 bytes in all.
struct PaletteData {
    uint32_t Flags = 0;
    uint32_t Count = 0;
    std::array<uint8_t, 1024> Entries{};

    uint8_t* Entry(int i) { return Entries.data() + 4 * i; }
    const uint8_t* Entry(int i) const { return Entries.data() + 4 * i; }
    void SetEntry(int i, int r, int g, int b, int a = 255) {
        uint8_t* e = Entry(i);
        e[0] = static_cast<uint8_t>(b);
        e[1] = static_cast<uint8_t>(g);
        e[2] = static_cast<uint8_t>(r);
        e[3] = static_cast<uint8_t>(a);
    }
};
static_assert(sizeof(PaletteData) == 1032);

// A rectangle of the visiting list: Right and Bottom inclusive.
struct DealRect {
    int32_t Left = 0, Top = 0, Right = 0, Bottom = 0;
    bool operator==(const DealRect&) const = default;
};

// How Render resamples; the codes of the common imaging libraries.
enum InterpolationMode : int {
    InterpolationDefault = 0,
    InterpolationLowQuality = 1,
    InterpolationHighQuality = 2,
    InterpolationBilinear = 3,
    InterpolationBicubic = 4,
    InterpolationNearestNeighbor = 5,
    InterpolationHighQualityBilinear = 6,
    InterpolationHighQualityBicubic = 7,
};
enum PixelOffsetMode : int {
    PixelOffsetDefault = 0,
    PixelOffsetHighSpeed = 1,
    PixelOffsetHighQuality = 2,
    PixelOffsetNone = 3,
    PixelOffsetHalf = 4,
};

// Writer options by key. Each family declares its options (key, label, range
// or choices, default) in its registry entry; a key left unset takes what the
// declaration says when the file is written.
class SaveOptions {
  public:
    void Set(const QString& Key, const QVariant& Value) { values_.insert(Key, Value); }
    bool Has(const QString& Key) const { return values_.contains(Key); }
    int32_t Int(const QString& Key, int32_t Fallback = 0) const {
        const auto it = values_.constFind(Key);
        return it == values_.cend() ? Fallback : it->toInt();
    }
    QString Text(const QString& Key) const { return values_.value(Key).toString(); }
    const QVariantMap& Values() const { return values_; }

  private:
    QVariantMap values_;
};

class CImage {
  public:
    CImage();
    ~CImage();
    CImage(const CImage&) = delete;
    CImage& operator=(const CImage&) = delete;

    // ---- fields with plain get and set
    int32_t Left = 0;
    int32_t Top = 0;
    float Resolution = 72.0f;
    uint32_t PixelFormat = 0;
    QString FileName;
    uint32_t RawPixelFormat = 0;
    int32_t RawImageFormat = 0;
    bool RleCompress = false;
    bool BmpFlipRow = false;
    int32_t BmpFileSystem = 0;
    int32_t Bmp16PixelFormat = 0;
    QString AuthorInformation;
    QString FileComment;
    int32_t RawDdsFileFormat = 0;
    int32_t PnmStoreWay = 0;
    int32_t PropertyCount = 0;
    bool RestrainProgress = false;

    // ---- read-only
    int32_t Width() const { return width_; }
    int32_t Height() const { return height_; }
    int32_t Stride() const { return stride_; }
    uint8_t* Pointer() const { return pixels_; }
    // Non-zero while pixels are held.
    uintptr_t Handle() const { return reinterpret_cast<uintptr_t>(pixels_); }
    // Size of the pixel block in bytes: Stride times Height.
    size_t BlockSize() const { return static_cast<size_t>(stride_) * static_cast<size_t>(height_); }
    uint8_t* Row(int y) const { return pixels_ + static_cast<ptrdiff_t>(y) * stride_; }
    // A QImage made over the pixel block itself (never a copy). Null for 4-bit
    // blocks, which the imaging library has no format for, and when empty.
    const QImage& Image() const { return view_; }

    // ---- construction and lifetime
    bool CreateNewImage(int32_t Width, int32_t Height, int32_t BitCount, int32_t BackColor = 0);
    std::unique_ptr<CImage> CloneImage() const;
    bool CloneToImage(CImage& Dest) const;
    void DisposeResource();

    // ---- palette
    const PaletteData& Palette() const { return palette_; }
    void CopyPaletteTo(CImage& Dest) const;
    void CopyPaletteFrom(const CImage& Source);
    void SetPaletteData(const PaletteData& Palette);
    PaletteData GetPaletteData() const { return palette_; }
    // Writes the palette field by bytes and leaves the view's colour table alone;
    // Render hands the current palette over at every draw.
    void SetPaletteBytes(const PaletteData& Palette) { palette_ = Palette; }

    // ---- filling and alpha
    void ClearImage();
    void FillSolidColor(uint8_t Value);
    void SetAlphaChannelToMaxValue();
    void CheckAlpha();
    void FillAlpha();

    // ---- reading
    bool GetPixelColor(int32_t X, int32_t Y, int32_t& R, int32_t& G, int32_t& B, int32_t& A,
                       int32_t SampleSize = 0) const;
    int32_t GetGrayK(int32_t X, int32_t Y) const;
    int64_t GetUsedColorAmount() const;
    // Channel 6 fills three rows of 256 one after the other (blue, green, red).
    bool GetHistgramArray(std::vector<uint32_t>& Hist, int32_t Channel, int32_t Step) const;
    std::unique_ptr<CImage> Get4BppIndexedImage() const;
    std::unique_ptr<CImage> Get8BppIndexedImage() const;
    std::unique_ptr<CImage> GetRGB24Image(int32_t BackColor) const;
    std::unique_ptr<CImage> GetRGB32Image() const;

    // ---- property items (raw buffer, header behind header, values behind them)
    void SetPropertyBuffer(const QByteArray& Buffer) { propertyBuffer_ = Buffer; }
    void GetPropertyBuffer(QByteArray& Buffer) const { Buffer = propertyBuffer_; }
    const QByteArray& PropertyBuffer() const { return propertyBuffer_; }

    // ---- drawing
    bool Render(QPainter& Dest, int32_t DestX, int32_t DestY, int32_t DestWidth = 0, int32_t DestHeight = 0,
                int32_t SrcX = 0, int32_t SrcY = 0, int32_t SrcWidth = 0, int32_t SrcHeight = 0,
                int32_t Interpolation = InterpolationNearestNeighbor, int32_t PixelOffset = PixelOffsetHalf,
                int32_t Opacity = 255, bool UseImaging = false) const;

    // ---- load and save by family
    bool LoadPictureFromFile(const QString& FileName, int32_t FrameIndex = 0);
    bool SavePictureToFile(const QString& FileName, int32_t Format, const SaveOptions& Options);
    // Makes the image from a picture handed over by the platform (clipboard,
    // drag and drop): 24 or 32 bits, or 8 bits with its palette.
    bool LoadPictureFromStdPicture(const QImage& Picture);

    // ---- selection and the visiting list
    CSelection* Selection() const { return selection_; }
    // Attaches the document's mask (null detaches it) and rebuilds the list.
    void SetSelection(CSelection* Selection);
    // Rebuilds the list from the attached mask; false when the selection is empty.
    bool UpdateSelectionDealRect();
    // The same work under its older name; answers false whatever happens.
    bool GetSelectionDealRect();
    // The rectangles operations visit. Without an attached selection the whole
    // image is the list; an empty list means the selection is empty.
    const std::vector<DealRect>& SelectionDealRects() const;
    bool IsSelectionEmpty() const { return SelectionDealRects().empty(); }
    // Outer extents of the list; nothing is written when it is empty.
    void GetSelectionRange(int32_t& Width, int32_t& Height) const;
    // A 32-bit copy of the selected part, alpha from the mask.
    std::unique_ptr<CImage> GetSelectionImage() const;
    DealRect GetSelectionClipRect() const;
    DealRect GetSelectionBoundRect() const;
    int64_t GetSelectedPixelCount(int32_t Step) const;
    // Hands over the result of work done on a copy (a dialog's preview) as one
    // command under Name. Answers false; nobody reads it.
    bool VirtualExecute(const CImage& Source, const QString& Name);
    // Whether the mask is read at all: false when everything is selected.
    bool UsesMask() const;
    // Weight of image pixel (x, y) from the attached mask; 255 without one.
    // Offsets as the processing frame uses them.
    const uint8_t* MaskRowFor(int32_t Y) const;

    // ---- events
    void AddListener(IImageListener* Listener);
    void RemoveListener(IImageListener* Listener);
    void RaiseProgressStart(bool Restrain, const QString& Name, int Kind) const;
    void RaiseProgressEnd(bool Restrain, const QString& Name, int Kind,
                          const QString& Extra = QString()) const;

  private:
    void RebuildView();

    int32_t width_ = 0;
    int32_t height_ = 0;
    int32_t stride_ = 0;
    uint8_t* pixels_ = nullptr;
    PaletteData palette_;
    QImage view_;
    QByteArray propertyBuffer_;
    CSelection* selection_ = nullptr;
    std::vector<DealRect> dealRects_;
    mutable std::vector<DealRect> wholeRect_;
    std::vector<IImageListener*> listeners_;
};

// The largest pixel block we allocate: pixel loops address bytes with 32-bit
// offsets, so a block stays below 2 GiB.
constexpr int64_t MaxBlockBytes = 0x7FFFFFFF;

} // namespace vm
