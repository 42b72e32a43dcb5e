#pragma once
// The parameter dialog of a catalogue operation that has no dialog of its
// own: the row's controls from the one panel builder (ParamPanel),
// with the effect shown on the canvas while the values change. OK hands the
// result to the document as one command; Cancel leaves it untouched.
#include "core/Catalogue.h"

#include <QDialog>
#include <QMap>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

class QCheckBox;

namespace vm {

class Canvas;
class ParamPanel;

class FrmOperation : public QDialog {
    Q_OBJECT
  public:
    FrmOperation(const Operation& Op, Canvas& Target, QWidget* Parent = nullptr);
    ~FrmOperation() override;

    // The values the controls hold now.
    Params CurrentParams() const;
    // Puts a value into the control of a parameter (as text).
    bool SetParam(const QString& Key, const QString& Value);
    // Runs the operation on the working copy now and shows it.
    void Refresh();
    // The working copy the preview shows.
    const CImage* Preview() const { return work_.get(); }

    void accept() override;
    void reject() override;

  private:
    void ArmRefresh();

    const Operation& op_;
    Canvas& canvas_;
    std::unique_ptr<CImage> source_;
    std::unique_ptr<CImage> work_;
    ParamPanel* panel_ = nullptr;
    // Values without a control of their own (a filter's centre), as loaded.
    Params fixed_;
    QCheckBox* preview_ = nullptr;
    QTimer timer_;
    bool dirty_ = true;
};

} // namespace vm
