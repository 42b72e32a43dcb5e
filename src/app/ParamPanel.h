#pragma once
// The one builder of a row's controls, for every generic dialog: a slider
// with its number box and unit per slider, the angle dial with its box, a
// group of option buttons per option, the check boxes and the text boxes (a
// kernel grid, a file with its browse button, plain boxes). The dialogs
// decide what a change does; the panel says which kind of change it was.
#include "core/Catalogue.h"

#include <QWidget>

#include <utility>
#include <vector>

class QCheckBox;
class QLineEdit;
class QRadioButton;
class QSlider;

namespace vm {

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

class ParamPanel : public QWidget {
    Q_OBJECT
  public:
    // The controls of Row holding Start's values, with the ranges a picture
    // of this format and size gives them.
    ParamPanel(const Operation& Row, const Params& Start, uint32_t PixelFormat, int32_t Width, int32_t Height,
               QWidget* Parent = nullptr);

    // Every value the controls hold, by key; texts as typed.
    Params Values() const;
    // Puts a value into the control of a parameter (as text); false for a
    // parameter the panel has no control for.
    bool SetValue(const QString& Key, const QString& Value);
    // The reset values: sliders and dial at their reset value, options and
    // checks at their default. Says nothing of the change.
    void ResetValues();

    QSlider* SliderAt(int Index) const;
    QLineEdit* TextAt(int Index) const;
    AngleDial* Dial() const { return dial_; }
    QLineEdit* AngleText() const { return angleText_; }
    // The box of a text parameter; null for none.
    QLineEdit* TextBox(const QString& Key) const;

  signals:
    // A slider, the dial or one of their boxes moved: a refresh may wait
    // until the values rest.
    void SliderMoved();
    // The user let go of a slider.
    void SliderReleased();
    // An option, a check or a text changed: a refresh can run at once.
    void Chosen();

  protected:
    bool eventFilter(QObject* Watched, QEvent* Event) override;

  private:
    struct SliderRow {
        const SliderSpec* Row;
        QSlider* Slider;
        QLineEdit* Text;
    };
    // The sliders' ranges as the options now chosen set them.
    void ApplyChoiceRanges();

    const Operation& op_;
    uint32_t format_;
    int32_t width_, height_;
    bool busy_ = false;
    std::vector<SliderRow> sliders_;
    std::vector<std::pair<const ChoiceSpec*, std::vector<QRadioButton*>>> options_;
    std::vector<std::pair<const CheckSpec*, QCheckBox*>> checks_;
    std::vector<std::pair<const TextSpec*, QLineEdit*>> texts_;
    AngleDial* dial_ = nullptr;
    QLineEdit* angleText_ = nullptr;
};

} // namespace vm
