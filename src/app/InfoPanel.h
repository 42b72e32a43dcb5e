#pragma once
// The information panel: the colour under the pointer in two colour spaces of
// the user's choice, the pointer's position and the size of the selection.
#include <QStringList>
#include <QWidget>

#include <cstdint>

class QLabel;
class QToolButton;

namespace vm {

class CImage;
class Canvas;

// The spaces a readout column can show, in the order of its menu.
enum InfoMode : int32_t {
    InfoActualColor = 0,
    InfoRgb = 1,
    InfoHsb = 2,
    InfoGrey = 3,
    InfoCmyk = 4,
    InfoLab = 5,
    InfoWeb = 6,
    InfoModeCount = 7,
};
QStringList InfoModeNames();

// One readout column: rows of "label value" for the pixel at (X, Y), read
// with the picker's sample size. Outside the picture the values are empty.
QStringList InfoReadout(const CImage* Image, int32_t X, int32_t Y, int32_t Mode, int32_t SampleSize);

class InfoPanel : public QWidget {
    Q_OBJECT
  public:
    explicit InfoPanel(QWidget* Parent = nullptr);

    void SetCanvas(Canvas* Target);
    // The rows for the pointer at an image position (-1, -1 when away).
    void AdjustInfoPosition(const QPoint& ImagePos);
    void SetSelectionSize(int Width, int Height);
    void SetMode(int Column, int32_t Mode);

    QString ColumnText(int Column) const;
    QString PositionText() const;
    QString SizeText() const;

  private:
    void Redraw();

    Canvas* canvas_ = nullptr;
    QPoint pointer_{-1, -1};
    QLabel* columns_[2];
    QToolButton* modeButtons_[2];
    QLabel* position_;
    QLabel* size_;
};

} // namespace vm
