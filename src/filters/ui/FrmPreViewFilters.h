#pragma once
// The two generic filter dialogs, built from a catalogue row.
//
// FrmPreViewFilters runs the filter on the document's own image, in place and
// at full size, each time the parameters rest; Cancel and Esc put the exact
// bytes back, OK hands the result over through VirtualExecute as one history
// step and stores the parameters. FrmNoPreviewFilter serves the rows that need
// a file, a kernel grid or a long render: it runs once, on OK.
//
// The main window opens either with one call:
//   if (ShowFilterDialog(this, *canvas, op)) LastFilterName = op.CaptionOfDialog();
#include "app/ParamPanel.h"
#include "core/Catalogue.h"

#include <QDialog>
#include <QPoint>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSlider;

namespace vm {

class Canvas;

// Shows the row's dialog modally over Parent for the canvas' document.
// True when the user confirmed and the document changed.
bool ShowFilterDialog(QWidget* Parent, Canvas& Target, const Operation& Op);

class FrmPreViewFilters : public QDialog {
    Q_OBJECT
  public:
    FrmPreViewFilters(const Operation& Op, Canvas& Target, QWidget* Parent = nullptr);
    ~FrmPreViewFilters() override;

    const Operation& Row() const { return op_; }
    // The parameters the controls hold, with the centre.
    Params CurrentParams() const;

    // ---- the refresh machinery
    void Refresh();
    void TimerTick();
    int32_t TickCount() const { return tickCount_; }
    int32_t RefreshDelay() const { return refreshDelay_; }
    bool RefreshPending() const { return timer_.isActive(); }
    int RefreshCount() const { return refreshes_; }

    // ---- the preview picture
    int ZoomIndex() const { return static_cast<int>(zoomIndex_); }
    double Zoom() const;
    bool ZoomIn();
    bool ZoomOut();
    QPoint Scroll() const { return {scrollX_, scrollY_}; }
    QPoint ScrollMax() const { return {scrollMaxX_, scrollMaxY_}; }
    QSize ViewSize() const { return {viewWidth_, viewHeight_}; }
    QPoint PictureToImage(const QPoint& At) const;
    // A press of the right button at a point of the picture.
    void PictureRightPress(const QPoint& At);
    QWidget* Picture() const { return picture_; }

    // ---- controls, for the menu of the dialog and the tests
    QSlider* SliderAt(int Index) const;
    QLineEdit* TextAt(int Index) const;
    QLineEdit* AngleText() const;
    AngleDial* Dial() const;
    QPushButton* CancelButton() const { return cancel_; }
    QCheckBox* PreviewCheck() const { return preview_; }
    bool Committed() const { return committed_; }
    // What "复位" does.
    void ResetValues();

    void accept() override;
    void done(int Result) override;

  protected:
    void keyPressEvent(QKeyEvent* Event) override;
    void keyReleaseEvent(QKeyEvent* Event) override;
    bool eventFilter(QObject* Watched, QEvent* Event) override;

  private:
    friend class PreviewPicture;
    void BuildControls(const Params& Start);
    // Moves the zoom index by Step, keeping the view's middle where it is.
    void StepZoom(int Step);
    void ParameterChanged();
    // Hands the last refresh's result to the document as one command.
    void Commit();
    void LayoutPreview(bool KeepMiddle);
    void RestoreSource();
    void PaintPicture(QPainter& Painter) const;

    const Operation& op_;
    Canvas& canvas_;
    CImage& target_;
    std::unique_ptr<CImage> source_;
    bool committed_ = false;
    bool closed_ = false;
    bool busy_ = false;
    bool historyWas_ = true;
    int32_t tickCount_ = 0;
    int32_t refreshDelay_ = 0;
    int refreshes_ = 0;
    double zoomIndex_ = 0;
    int32_t scrollX_ = 0, scrollY_ = 0, scrollMaxX_ = 0, scrollMaxY_ = 0;
    double viewFraction_[4] = {0, 0, 0, 0};
    int32_t viewWidth_ = 0, viewHeight_ = 0, viewLeft_ = 0, viewTop_ = 0;
    QPoint zoomedCentre_;
    bool dragging_ = false;
    QPoint centre_;

    ParamPanel* panel_ = nullptr;
    QWidget* picture_ = nullptr;
    QLabel* zoomLabel_ = nullptr;
    QCheckBox* preview_ = nullptr;
    QPushButton* cancel_ = nullptr;
    QTimer timer_;
};

class FrmNoPreviewFilter : public QDialog {
    Q_OBJECT
  public:
    FrmNoPreviewFilter(const Operation& Op, Canvas& Target, QWidget* Parent = nullptr);
    Params CurrentParams() const;
    // Sets a parameter's control from text.
    bool SetParam(const QString& Key, const QString& Value);
    void accept() override;

  private:
    const Operation& op_;
    Canvas& canvas_;
    ParamPanel* panel_ = nullptr;
};

} // namespace vm
