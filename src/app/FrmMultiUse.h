#pragma once
// The shared dialog of the commands that ask a few values before they run,
// chosen by DialogCommand. The guise "Fill" asks what to fill the selection
// with: the foreground colour, the background colour or a chosen one, and at
// what opacity. Its values live in the settings section "Fill".
#include <QDialog>

class QRadioButton;
class QSpinBox;
class QPushButton;

namespace vm {

struct FillChoice {
    int32_t Content = 0; // 0 foreground, 1 background, 2 the chosen colour
    int32_t Color = 0;   // COLORREF of the chosen colour
    int32_t Opacity = 100;
    // The COLORREF the choice fills with.
    int32_t EffectiveColor() const;
    static FillChoice Stored();
    void Store() const;
};

class FrmMultiUse : public QDialog {
    Q_OBJECT
  public:
    FrmMultiUse(const QString& DialogCommand, QWidget* Parent = nullptr);
    FillChoice Fill() const;
    void SetFill(const FillChoice& Choice);
    void accept() override;

  private:
    void ShowColour();
    QString command_;
    int32_t chosen_ = 0;
    QRadioButton* content_[3] = {};
    QPushButton* colourButton_ = nullptr;
    QSpinBox* opacity_ = nullptr;
};

} // namespace vm
