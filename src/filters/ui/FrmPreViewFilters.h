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

// The angle dial: a 36 x 36 circle with a hand; a press or a drag sets the
// angle by the quadrant rule.
class AngleDial : public QWidget {
    Q_OBJECT
  public:
    explicit AngleDial(QWidget* Parent = nullptr);
    double AngleRadians() const { return angle_; }
    void SetAngleRadians(double Radians);
    // The angle of (Dx, Dy) from the centre, Dy pointing up, with the
    // system's constants: 0 .. 2 pi but -pi / 2 straight down.
    static double QuadrantAngle(double Dx, double Dy);
  signals:
    void AngleChosen(double Radians);

  protected:
    void paintEvent(QPaintEvent*) override;
    void mousePressEvent(QMouseEvent* Event) override;
    void mouseMoveEvent(QMouseEvent* Event) override;

  private:
    void Choose(const QPoint& At);
    double angle_ = 0;
};

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
    QLineEdit* AngleText() const { return angleText_; }
    AngleDial* Dial() const { return dial_; }
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
    struct SliderRow {
        const SliderSpec* Row;
        QSlider* Slider;
        QLineEdit* Text;
    };
    void BuildControls(const Params& Start);
    void ParameterChanged();
    void ApplyChoiceRanges();
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

    std::vector<SliderRow> sliders_;
    std::vector<std::pair<const ChoiceSpec*, std::vector<QRadioButton*>>> options_;
    std::vector<std::pair<const CheckSpec*, QCheckBox*>> checks_;
    std::vector<std::pair<const TextSpec*, QLineEdit*>> texts_;
    AngleDial* dial_ = nullptr;
    QLineEdit* angleText_ = nullptr;
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
    std::vector<std::pair<QString, std::function<QString()>>> readers_;
    std::vector<std::pair<QString, std::function<void(const QString&)>>> writers_;
};

} // namespace vm
