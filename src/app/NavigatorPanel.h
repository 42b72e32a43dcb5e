#pragma once
// The navigator: the whole picture small, with a frame round the part the
// canvas shows. Dragging in the picture scrolls the canvas; the slider and
// the two small buttons zoom it, the buttons repeating while held.
#include <QImage>
#include <QTimer>
#include <QWidget>

#include <cstdint>

class QSlider;
class QToolButton;

namespace vm {

class Canvas;

class NavigatorView;

class NavigatorPanel : public QWidget {
    Q_OBJECT
  public:
    explicit NavigatorPanel(QWidget* Parent = nullptr);

    void SetCanvas(Canvas* Target);
    Canvas* Target() const { return canvas_; }

    // Recomputes the small picture for the panel's size, then the frame.
    void UpdatePlacementAndBuffer();
    // Lays the frame of the visible rectangle over the small picture.
    void UpdateBlendImage();
    // The slider and the buttons follow the canvas' zoom.
    void UpdateStandardZoomControlState();

    // Scrolls the canvas so that the frame's centre lands on a point of the
    // small picture (view coordinates of the picture widget).
    void ScrollTo(const QPoint& At);
    // The slider's position for a zoom factor and back: logarithmic over the
    // zoom table's range.
    static int SliderValueOf(double Factor);
    static double FactorOfSlider(int Value);

    const QImage& Composed() const { return composed_; }
    QRect PicturePlace() const { return place_; }
    QRect FrameRect() const { return frame_; }
    QSlider* ZoomSlider() const { return slider_; }
    QToolButton* ZoomInButton() const { return zoomIn_; }
    QToolButton* ZoomOutButton() const { return zoomOut_; }

  private:
    void StepZoom(int Mode);
    void StartRepeat(int Mode);
    void StopRepeat();

    Canvas* canvas_ = nullptr;
    NavigatorView* view_;
    QSlider* slider_;
    QToolButton* zoomIn_;
    QToolButton* zoomOut_;
    QTimer repeat_;
    int repeatMode_ = 1;
    QImage small_;    // the picture at the preview's size
    QImage composed_; // the small picture with the frame
    QRect place_;     // where the small picture stands in the view
    QRect frame_;     // the frame, in view coordinates
    bool syncing_ = false;
    friend class NavigatorView;
};

} // namespace vm
