#pragma once
// CSelection: the document's selection, an 8-bit mask of exactly the canvas'
// size (0 outside, 255 fully selected, partial values between), with the shape,
// morphology and colour operations that build it, the scan-line region that
// the processing frame and the marching ants read, and the two events by which
// the document keeps its history.
#include <QImage>
#include <QList>
#include <QPoint>
#include <QRegion>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

class QPainter;

namespace vm {

class CImage;

class ISelectionListener {
  public:
    virtual ~ISelectionListener() = default;
    // Nested is true when the change is part of another change of the same
    // selection; a listener that keeps history ignores those.
    virtual void BeforeSelectionChanged(bool Nested) = 0;
    virtual void SelectionChanged(bool Nested) = 0;
};

// How the next shape combines with the mask (SelectionMode).
enum SelectionCombineMode : int32_t {
    SelectionModeNew = 0,
    SelectionModeAdd = 1,
    SelectionModeSubtract = 2,
    SelectionModeIntersect = 3,
};

// AddPolygon's fill rule.
enum SelectionFillMode : int32_t {
    FillModeAlternate = 0,
    FillModeWinding = 1,
};

// AddLine's Kind: any other value selects both the column and the row.
enum SelectionLineKind : int32_t {
    LineColumn = 0,
    LineRow = 1,
    LineBoth = 2,
};

// ColorRange's Mode, the rows of the "Selected" list (2 and 9 are separators).
enum ColorRangeMode : int32_t {
    ColorRangeSampledColor = 0, // "取样颜色": RGB distance
    ColorRangeSampledLab = 1,   // "取样色彩": Lab distance
    ColorRangeReds = 3,         // "红色"
    ColorRangeYellows = 4,      // "黄色"
    ColorRangeGreens = 5,       // "绿色"
    ColorRangeCyans = 6,        // "青色"
    ColorRangeBlues = 7,        // "蓝色"
    ColorRangeMagentas = 8,     // "洋红"
    ColorRangeHighlights = 10,  // "高光"
    ColorRangeMidtones = 11,    // "中间调"
    ColorRangeShadows = 12,     // "暗调"
};

// Magic number of a *.Sel file.
inline constexpr uint32_t SelectionFileMagic = 987654321u;

class CSelection {
  public:
    CSelection();
    ~CSelection();
    CSelection(const CSelection&) = delete;
    CSelection& operator=(const CSelection&) = delete;

    // ---- fields read and written freely
    int32_t Left = 0;
    int32_t Top = 0;
    bool Visible = true;
    int32_t FeatherRadius = 0;
    int32_t SelectionMode = SelectionModeNew;
    bool RestrainEvent = false;

    // Also chooses the rasteriser's smoothing for every shape drawn afterwards.
    bool AntiAlias() const { return antiAlias_; }
    void SetAntiAlias(bool Value) { antiAlias_ = Value; }
    // True: nothing was selected, the whole image counts. Setting it true also
    // makes the mask all 255 at rest, so that the invariant holds whoever sets
    // it. Raises SelectionChanged(false) unless RestrainEvent.
    bool UseDefaultSetting() const { return useDefaultSetting_; }
    void SetUseDefaultSetting(bool Value);

    // ---- the mask (read only)
    int32_t Width() const { return width_; }
    int32_t Height() const { return height_; }
    int32_t Stride() const { return stride_; }
    uint8_t* Pointer() const { return bits_; }
    uint8_t* Row(int32_t y) const { return bits_ + static_cast<ptrdiff_t>(y) * stride_; }
    size_t BufferSize() const { return static_cast<size_t>(stride_) * static_cast<size_t>(height_); }
    // The mask as a raster target: a grey picture over the mask bytes themselves.
    const QImage& Image() const { return view_; }
    // The non-zero pixels, in mask coordinates (see UpdateSelectionRegion).
    const QRegion& Region() const { return region_; }

    // ---- lifetime
    // Disposes of the old mask and makes a zero-filled one. Leaves
    // UseDefaultSetting as DisposeResource left it (true).
    bool CreateNewSelection(int32_t Width, int32_t Height);
    void DisposeResource();

    void AddListener(ISelectionListener* Listener);
    void RemoveListener(ISelectionListener* Listener);

    // Stretches the mask onto a painter, nearest pixel. W or H of 0 mean the
    // mask's size; negative source coordinates become 0; SrcW below 1 and SrcH
    // of 0 mean the mask's size; a negative SrcH turns both heights round,
    // which mirrors the copy.
    bool Render(QPainter& Dest, int32_t X, int32_t Y, int32_t W = 0, int32_t H = 0, int32_t SrcX = 0,
                int32_t SrcY = 0, int32_t SrcW = 0, int32_t SrcH = 0) const;

    // ---- whole-mask commands
    bool SelectAll();
    bool InvertSelect();

    // ---- shapes (combined by SelectionMode, feathered by FeatherRadius)
    bool AddRectangle(int32_t Left, int32_t Top, int32_t Right, int32_t Bottom);
    bool AddEllipse(int32_t Left, int32_t Top, int32_t Right, int32_t Bottom);
    bool AddPolygon(const QList<QPoint>& Points, int32_t FillMode);
    // Points holds Count pairs of x, y.
    bool AddPolygon(const int32_t* Points, int32_t Count, int32_t FillMode);
    bool AddLine(int32_t X, int32_t Y, int32_t Kind);
    bool AddMagicWnd(const CImage& Image, int32_t X, int32_t Y, int32_t Tolerance, bool Contiguous,
                     bool ShowWarning);

    // ---- morphology
    bool Smooth(int32_t Radius);
    bool ExpandRound(int32_t Radius);
    bool ExpandRect(int32_t Radius);
    bool ShrinkRound(int32_t Radius);
    bool ShrinkRect(int32_t Radius);
    bool Border(int32_t Radius, bool Round);
    // Writes the clamped radius back. A radius of 0 does nothing at all.
    bool Feather(int32_t& Radius);

    // ---- colour
    bool SelectedSimilar(const CImage& Image, int32_t Tolerance);
    bool ColorRange(const CImage& Image, int32_t Mode, int32_t X, int32_t Y, int32_t Tolerance, bool Invert,
                    bool Preview);

    // ---- queries
    int32_t GetSelectedPixelCount() const;
    bool IsSelectionValidToCanvas() const;
    bool IsPtInSelection(int32_t X, int32_t Y, int32_t Threshold = 0) const;
    // Right and Bottom are exclusive for a default selection (Width, Height)
    // and inclusive otherwise; no byte above Threshold gives Width, Height, -1, -1.
    void GetSelectionBound(int32_t& Left, int32_t& Top, int32_t& Right, int32_t& Bottom,
                           int32_t Threshold = 0) const;

    // ---- region
    QRegion SelectionToRegion(int32_t Threshold = 0) const;
    void UpdateSelectionRegion();

    // ---- copies and combinations
    std::unique_ptr<CSelection> CloneSelection() const;
    bool CloneToSelection(CSelection& Target) const;
    bool LoadSeletionFromSelection(const CSelection& Other, int32_t Mode);
    bool PaintBucketSelection(const CSelection& Other);
    bool GetSelectionFromAlphaChannel(const CImage& Image);

    // ---- housekeeping
    void ResetSelectionPosoition();
    // Answers whether anything is selected afterwards.
    bool CheckSeletion(bool ShowWarning);

    // ---- files
    // Compressed: the *.Sel run code. Otherwise the mask as an 8-bit grey
    // picture, BMP when Bmp is true, else GIF.
    bool SaveSelctionToFile(const QString& Path, bool Compressed = true, bool Bmp = true) const;
    bool LoadSelctionFromFile(const QString& Path);

    // The *.Sel encoding of the mask (header included) and its reverse; the
    // file functions are these plus the disk.
    QByteArray EncodeSelectionFile() const;
    bool DecodeSelectionFile(const QByteArray& Bytes);

  private:
    enum class ShapeKind { Rectangle, Ellipse, Polygon };
    struct Shape {
        ShapeKind Kind = ShapeKind::Rectangle;
        int64_t Left = 0, Top = 0, Width = 0, Height = 0;
        QList<QPoint> Points;
        int32_t FillMode = FillModeAlternate;
    };

    void RaiseBefore() const;
    void RaiseChanged() const;
    void RebuildView();
    void FillBuffer(uint8_t Value);
    // Paints the shape in full white (or black) with this mask's smoothing.
    void FillShape(const Shape& S, uint8_t Grey);
    void SnapEllipseGreys();
    bool AddShape(const Shape& S);
    // Combines Other's bytes (of this size) into the mask: 1 max, 2 saturating
    // difference, 3 min.
    void CombineWith(const uint8_t* Other, int32_t OtherStride, int32_t Mode);
    // The pixel work of the public operations, without events or checks, so that
    // temporaries can run it as plain buffers.
    void FeatherPixels(int32_t Radius);
    bool SmoothPixels(int32_t Radius);
    bool RectMorphologyPixels(int32_t Radius, bool Expand);
    bool RoundMorphologyPixels(int32_t Radius, bool Expand);
    // Runs the flood of the wand into this mask.
    void FloodFromImage(const CImage& Image, int32_t X, int32_t Y, int32_t Tolerance, bool Contiguous);
    // The frame shared by the morphology commands.
    template <typename Work> bool MorphologyFrame(Work&& work);
    bool LoadPictureAsSelection(const QString& Path);

    int32_t width_ = 0;
    int32_t height_ = 0;
    int32_t stride_ = 0;
    uint8_t* bits_ = nullptr;
    QImage view_;
    QRegion region_;
    bool antiAlias_ = true;
    bool useDefaultSetting_ = true;
    bool nestedChange_ = false;
    std::vector<ISelectionListener*> listeners_;
};

} // namespace vm
