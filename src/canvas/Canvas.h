#pragma once
// Canvas: the control one document lives in. It holds the document (image,
// selection, history) and what belongs to this view of it: the marching ants,
// the zoom, the scroll position, the rulers, the zoom box, the status strip and
// the strokes of the tools under way. Everything visible is composed into one
// off-screen picture that reaches the screen in a single draw.
#include "document/CanvasGeometry.h"
#include "document/Document.h"
#include "document/History.h"
#include "document/Tools.h"
#include "selection/MarchingAnt.h"

#include <QBrush>
#include <QImage>
#include <QPoint>
#include <QTimer>
#include <QWidget>

#include <memory>

class QLabel;
class QLineEdit;
class QMouseEvent;
class QScrollBar;

namespace vm {

class CanvasView;
class CanvasRuler;

// The menus of the main window that a change of the document concerns.
enum CanvasMenus : int {
    CanvasMenuFile = 1,
    CanvasMenuEdit = 2,
    CanvasMenuMake = 4,
    CanvasMenuBeautify = 8,
    CanvasMenuAll = 0xFFFF,
};

class Canvas : public QWidget, public IDocumentListener {
    Q_OBJECT
    // First: the members below refer to it.
    Document document_;

  public:
    // Depth of a ruler and height of the strip below the view, in pixels.
    static constexpr int RulerDepth = 17;
    static constexpr int StripHeight = 24;
    // Period of the marching ants.
    static constexpr int AntInterval = 150;

    explicit Canvas(QWidget* Parent = nullptr);
    ~Canvas() override;

    // ---- the document
    Document& GetDocument() { return document_; }
    const Document& GetDocument() const { return document_; }
    CImage* Image() const { return document_.Image(); }
    CSelection* Selection() const { return document_.Selection(); }
    const CMarchingAnt* MarchingAnt() const { return ant_.get(); }
    bool HasImage() const { return document_.HasImage(); }
    int32_t CanvasWidth() const { return canvasWidth_; }
    int32_t CanvasHeight() const { return canvasHeight_; }
    // The document's flag, under the name the window has always used.
    bool& ImageChanged = document_.ImageChanged;

    bool LoadPictureFromFile(const QString& FileName, int32_t FrameIndex = 0);
    bool LoadPictureFormStdPicture(const QImage& Picture);
    bool CopyFormCanvas(const Canvas& Other);
    void DisposeAll();

    // ---- the view
    double ZoomFactor() const { return zoom_; }
    double HoriScrollValue() const { return hScroll_; }
    double VertScrollValue() const { return vScroll_; }
    double HoriScrollMax() const { return hMax_; }
    double VertScrollMax() const { return vMax_; }
    int32_t BufferWidth() const { return bufferWidth_; }
    int32_t BufferHeight() const { return bufferHeight_; }
    int32_t ShowLeft() const { return showLeft_; }
    int32_t ShowTop() const { return showTop_; }
    int32_t ShowWidth() const { return showWidth_; }
    int32_t ShowHeight() const { return showHeight_; }
    bool ShowRuler() const { return showRuler_; }
    void SetShowRuler(bool Value);
    // The tools' state, one for the whole program (document/Tools.h).
    static int32_t WorkingMode() { return vm::WorkingMode(); }
    static void SetWorkingMode(int32_t Mode) { vm::SetWorkingMode(Mode); }
    static int32_t SelectionStyle() { return vm::SelectionStyle(); }
    static void SetSelectionStyle(int32_t Style) { vm::SetSelectionStyle(Style); }
    static const QImage& BucketPattern() { return vm::BucketPattern(); }
    static void SetBucketPattern(const QImage& Pattern) { vm::SetBucketPattern(Pattern); }

    // Mode 0 zooms out a step, 1 in a step, 2 sets Factor. False when refused.
    bool SetZoomFactor(int Mode, double Factor = 0);
    bool IsImageAllVisible() const { return hMax_ == 0 && vMax_ == 0; }
    void GetVisibleRect(int32_t& Left, int32_t& Top, int32_t& Right, int32_t& Bottom) const;
    void GetBestFitInfo(int32_t MaxWidth, int32_t MaxHeight, int32_t& Width, int32_t& Height, int32_t& X,
                        int32_t& Y) const;
    void SetHoriVertPos(double X, double Y);
    void ShowImageAtBestPosition();
    void ShowImageAtItsOriginalSize();
    void ShowImageAtFitToScreen();
    void ShowImageAtFillScreen();
    // The image pixel under a view position.
    QPoint ViewToImagePoint(const QPoint& ViewPos) const;
    // A drag of the zoom tool: the box (image pixels, right and bottom
    // exclusive) fills the view and its centre goes to the view's centre.
    bool ZoomInMouseUp(int32_t Left, int32_t Top, int32_t Right, int32_t Bottom);

    void AdjustMemoryBitmap(bool Repaint);
    void AdjustScrollAndShowRange();
    void UpdateBufferImage();
    // The same composition with another picture in place of the document's:
    // previews show their result on the canvas through it.
    void UpdateBufferImageFromImage(const CImage* Other);
    void UpdateGraphics();
    // The composed view, as it reaches the screen.
    const QImage& Buffer() const { return buffer_; }

    // ---- selection commands, forwarded to the selection
    bool SelectAll();
    bool InvertSelect();
    bool CancelSelect();
    bool SelectSimilar(int32_t Tolerance);
    bool AntVisible() const { return ant_ && ant_->Visible; }
    void SetAntVisible(bool Value);
    // Tells whoever shows it the extent of the selection.
    void UpdateSelectionRange();

    // ---- the status strip
    void DrawTextToPic(const QString& Text);
    QString StatusText() const { return statusText_; }
    QString ZoomBoxText() const;
    // What the zoom box does on Enter or when it loses the focus.
    void CommitZoomBox(const QString& Text);

    // ---- history
    History& GetHistory() { return document_.GetHistory(); }
    const History& GetHistory() const { return document_.GetHistory(); }
    bool NeedWriteToHistory() const { return document_.NeedWriteToHistory(); }
    void SetNeedWriteToHistory(bool Value) { document_.SetNeedWriteToHistory(Value); }
    bool Undo();
    bool Redo();
    bool GetUndoState() const { return document_.GetUndoState(); }
    bool GetRedoState() const { return document_.GetRedoState(); }
    void PurgeHistory() { document_.PurgeHistory(); }

    // ---- what the document reports
    void OperationStarted() override;
    void OperationEnded() override;
    void CommandFinished(const QString& Name, int Kind, const QString& Extra, int64_t ElapsedMs) override;
    void SelectionStepFinished(int64_t ElapsedMs) override;
    void StepRestored(int32_t StepKind) override;
    void CommandRolledBack() override;

    // Called by the view.
    void ViewMouse(QEvent* Event);
    void ViewWheel(int Delta, bool Horizontal);
    QPoint PointerPosition() const { return pointer_; }
    // The surface the picture shows on; it carries the tool's cursor.
    QWidget* View() const;

    // ---- tools
    // Sets the view's cursor for the tool, the keys held and what lies under
    // the pointer.
    void UpdateToolCursor(Qt::KeyboardModifiers Keys);
    QString ToolCursorName(Qt::KeyboardModifiers Keys) const;
    // A polygon whose corners are being set; the points in image grid
    // coordinates.
    bool IsPolygonOpen() const;
    const QList<QPoint>& StrokePoints() const { return strokePoints_; }
    // Drops a stroke under way (the polygon being set, a drag).
    void CancelStroke();
    // The gradient tool's drag from Start to End, in image pixels.
    bool FillGradientStroke(QPoint Start, QPoint End);

  signals:
    // The main window refreshes these menus (CanvasMenus flags).
    void MenusNeedUpdate(int Menus);
    // The zoom or the scroll position changed: the navigator follows.
    void ViewChanged();
    // The pixels or the mode changed: panels that show the picture follow.
    void DocumentRefreshed();
    // Delete pressed over the canvas: the Edit menu's "清除".
    void DeleteRequested();
    // A single letter chose a tool (M 0, Q 1, A 2, L 3, W 5, V 6, H 7).
    void ToolKeyPressed(int Tool);
    // The pointer, in image pixels, with the buttons held.
    void PointerMoved(QPoint ImagePos, Qt::MouseButtons Buttons);
    void PointerPressed(QPoint ImagePos, Qt::MouseButton Button);
    void PointerReleased(QPoint ImagePos, Qt::MouseButton Button);
    void SelectionRangeChanged(int Width, int Height);
    // The colour picker chose a foreground (or, with Alt, a background)
    // colour, COLORREF; the setting already holds it.
    void ForeColorPicked(int32_t Color);
    void BackColorPicked(int32_t Color);

  protected:
    void resizeEvent(QResizeEvent* Event) override;
    void keyPressEvent(QKeyEvent* Event) override;
    void keyReleaseEvent(QKeyEvent* Event) override;

  private:
    // Shows the picture the document has just taken: the ants and the best
    // position.
    void ShowNewDocument();
    // The size may have changed: the ants and the layout follow.
    void FollowSize();
    void RenewOutline();
    void ApplyZoom(double Factor, bool KeepCentre);
    void Compose(const CImage* Picture);
    void SyncScrollBars();
    void OnAntTick();
    void RestoreCursor();

    // The strokes of the tools (CanvasTools.cpp).
    enum class Stroke {
        None,
        Marquee,
        Polygon,
        Lasso,
        Click,
        MoveSelection,
        MoveView,
        ZoomBox,
        Gradient,
        Pick
    };
    void ToolPress(QMouseEvent* Event);
    void ToolMove(QMouseEvent* Event);
    void ToolRelease(QMouseEvent* Event);
    void ToolDoubleClick(QMouseEvent* Event);
    // Image positions of a view position: the nearest pixel corner (what
    // shapes are drawn between) and the pixel under it.
    QPoint GridPointAt(QPointF ViewPos) const;
    QPoint PixelAt(QPointF ViewPos) const;
    QPointF ImageToView(QPointF Image) const;
    bool InsideImage(QPoint Pixel) const;
    // Whether a press at the pixel would drag the selection with this tool
    // and combine mode.
    bool WouldMoveSelection(int32_t Tool, int32_t Mode, Qt::KeyboardModifiers Keys, QPoint Pixel) const;
    MarqueeBox CurrentMarquee() const;
    void PrepareSelection(int32_t Tool, int32_t Mode);
    void FinishMarquee();
    void FinishPolygon();
    void FinishClick();
    void FinishMoveSelection();
    // A click that drew no shape: in the new mode it lets go of the selection.
    void EmptyShapeClick();
    void PickColorAt(QPoint Pixel, bool Background);
    void PaintBucketClick(QPoint Pixel);
    void ZoomClick(QPointF ViewPos, bool Out);
    // Where the gradient's drag ends, held to 45 degrees with Shift.
    QPoint GradientEnd() const;
    void DrawStroke(QPainter& Painter) const;
    void RefreshStroke();

    Stroke stroke_ = Stroke::None;
    int32_t strokeTool_ = 0;
    int32_t strokeMode_ = 0;
    Qt::MouseButton strokeButton_ = Qt::NoButton;
    bool strokeDragged_ = false;
    bool shiftArmed_ = false; // a Shift pressed from now on constrains the shape
    bool constrain_ = false;
    bool zoomOut_ = false;
    bool pickBackground_ = false;
    QPoint gridStart_, gridEnd_;
    QPoint pixelStart_;
    QPointF viewStart_, viewEnd_;
    QPoint polygonPointer_;
    QList<QPoint> strokePoints_;
    double scrollStartH_ = 0, scrollStartV_ = 0;
    std::unique_ptr<CImage> pickSource_;
    QString cursorName_;

    std::unique_ptr<CMarchingAnt> ant_;
    int32_t canvasWidth_ = 0;
    int32_t canvasHeight_ = 0;

    double zoom_ = 1.0;
    double hScroll_ = 0, vScroll_ = 0;
    double hMax_ = 0, vMax_ = 0;
    int32_t bufferWidth_ = 0, bufferHeight_ = 0;
    int32_t showLeft_ = 0, showTop_ = 0, showWidth_ = 0, showHeight_ = 0;
    bool showRuler_ = true;
    QImage buffer_;
    QBrush checker_;
    QColor background_;

    int busyDepth_ = 0;
    QString statusText_;
    QPoint pointer_{-1, -1};
    bool committingZoom_ = false;

    CanvasView* view_;
    CanvasRuler* hRuler_;
    CanvasRuler* vRuler_;
    QWidget* corner_;
    QScrollBar* hBar_;
    QScrollBar* vBar_;
    QWidget* strip_;
    QLineEdit* zoomBox_;
    QLabel* status_;
    QTimer antTimer_;
};

} // namespace vm
