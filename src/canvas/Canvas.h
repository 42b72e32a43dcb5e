#pragma once
// Canvas: the control one document lives in. It owns the document's image,
// its selection, the marching ants and the undo history, and shows the image
// at a zoom factor in a scrolling view with two rulers, a zoom box and a
// status strip. Everything visible is composed into one off-screen picture
// that reaches the screen in a single draw.
#include "canvas/CanvasGeometry.h"
#include "canvas/History.h"
#include "core/Image.h"
#include "core/ImageListener.h"
#include "selection/MarchingAnt.h"
#include "selection/Selection.h"

#include <QBrush>
#include <QImage>
#include <QPoint>
#include <QTimer>
#include <QWidget>

#include <memory>

class QLabel;
class QLineEdit;
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

class Canvas : public QWidget, public IImageListener, public ISelectionListener {
    Q_OBJECT
  public:
    // Depth of a ruler and height of the strip below the view, in pixels.
    static constexpr int RulerDepth = 17;
    static constexpr int StripHeight = 24;
    // Period of the marching ants.
    static constexpr int AntInterval = 150;

    explicit Canvas(QWidget* Parent = nullptr);
    ~Canvas() override;

    // ---- the document
    CImage* Image() const { return image_.get(); }
    CSelection* Selection() const { return selection_.get(); }
    const CMarchingAnt* MarchingAnt() const { return ant_.get(); }
    bool HasImage() const { return image_ && image_->Handle(); }
    int32_t CanvasWidth() const { return canvasWidth_; }
    int32_t CanvasHeight() const { return canvasHeight_; }
    bool ImageChanged = false;

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
    // The current tool, one for all canvases.
    static int32_t WorkingMode();
    static void SetWorkingMode(int32_t Mode);

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
    History& GetHistory() { return history_; }
    const History& GetHistory() const { return history_; }
    bool NeedWriteToHistory() const { return history_.NeedWriteToHistory; }
    void SetNeedWriteToHistory(bool Value) { history_.NeedWriteToHistory = Value; }
    bool Undo();
    bool Redo();
    bool GetUndoState() const { return history_.GetUndoState(); }
    bool GetRedoState() const { return history_.GetRedoState(); }
    void PurgeHistory() { history_.PurgeHistory(); }

    // ---- events of the image and the selection
    void ProgressStart(bool Restrain, const QString& Name, int Kind) override;
    void ProgressEnd(bool Restrain, const QString& Name, int Kind, const QString& Extra) override;
    void BeforeSelectionChanged(bool Nested) override;
    void SelectionChanged(bool Nested) override;

    // Called by the view.
    void ViewMouse(QEvent* Event);
    void ViewWheel(int Delta, bool Horizontal);
    QPoint PointerPosition() const { return pointer_; }

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

  protected:
    void resizeEvent(QResizeEvent* Event) override;
    void keyPressEvent(QKeyEvent* Event) override;

  private:
    // Takes a new document: the image (listened to), its selection (a new one
    // of "everything" when null), the ants, and the best position.
    void AttachDocument(std::unique_ptr<CImage> Image, std::unique_ptr<CSelection> Selection);
    void RenewOutline();
    void ApplyZoom(double Factor, bool KeepCentre);
    void Compose(const CImage* Picture);
    void SyncScrollBars();
    void OnAntTick();
    void RestoreCursor();

    std::unique_ptr<CImage> image_;
    std::unique_ptr<CSelection> selection_;
    std::unique_ptr<CMarchingAnt> ant_;
    History history_;
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

    double progressStartTime_ = 0;
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
