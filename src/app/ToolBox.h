#pragma once
// ToolBox: the column of tool buttons at the left of the main window. The two
// marquees share a button, as do the polygon and the lasso; the one used last
// shows, and pressing the button a moment longer (or the right button) offers
// the other. Choosing a tool sets the canvas' working mode and style word,
// keeps the choice for the next run and tells the option bar and the status
// line.
#include <QToolBar>

#include <cstdint>
#include <map>

class QButtonGroup;
class QToolButton;

namespace vm {

class ToolBox : public QToolBar {
    Q_OBJECT
  public:
    explicit ToolBox(QWidget* Parent = nullptr);

    // Chooses the tool of an index (0..8, 11, 12); other indices are ignored.
    void ToolButton_Click(int32_t Index);
    int32_t CurrentTool() const { return current_; }
    // The button of a slot, named by the index of its first tool; null for
    // an index that has no button of its own (the ellipse, the lasso).
    QToolButton* SlotButton(int32_t Slot) const;
    // The tool a slot shows at present.
    int32_t SlotTool(int32_t Slot) const;
    QString Hint() const { return hint_; }

  signals:
    void ToolChanged(int32_t Index);
    void HintChanged(const QString& Hint);

  private:
    void ShowSlotTool(int32_t Slot, int32_t Tool);

    std::map<int32_t, QToolButton*> buttons_;
    std::map<int32_t, int32_t> slotTools_;
    QButtonGroup* group_;
    int32_t current_ = -1;
    QString hint_;
};

} // namespace vm
