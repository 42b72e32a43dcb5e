#pragma once
// OptionBar: the bar under the menus with the options of the current tool.
// Every control reads its value from the settings when its tool is chosen and
// writes it back the moment it changes, so that the canvas' next stroke uses
// it and the value survives the run. Each control is named after the key it
// keeps ("RectFeatherRadius", "SampleSize", ...).
#include <QImage>
#include <QToolBar>

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

class QStackedWidget;

namespace vm {

class Canvas;

class OptionBar : public QToolBar {
    Q_OBJECT
  public:
    explicit OptionBar(QWidget* Parent = nullptr);

    // Shows the controls of a tool with their present values.
    void ShowTool(int32_t Index);
    int32_t Tool() const { return tool_; }
    // The controls of a tool; null for an index that is no tool.
    QWidget* Page(int32_t Index) const;
    // Reads every control's value from the settings again.
    void LoadValues();

    // The document the view buttons act on.
    std::function<Canvas*()> ActiveCanvas;
    // Asks for the paint bucket's pattern file; an empty answer means
    // cancelled. Replaceable, so that it can be answered without a dialog.
    std::function<QString()> AskPatternFile;
    // Makes a picture file the paint bucket's pattern and remembers it for
    // the next run; false when the file is no picture.
    bool LoadPattern(const QString& File);

  signals:
    // A value changed that the canvas' cursor or stroke depends on.
    void OptionsChanged();

  private:
    QWidget* BuildMarqueePage(int32_t Tool);
    QWidget* BuildLassoPage(int32_t Tool);
    QWidget* BuildRowAndColPage();
    QWidget* BuildMagicWandPage();
    QWidget* BuildPickColorPage();
    QWidget* BuildGradientPage();
    QWidget* BuildPaintBucketPage();
    QWidget* BuildMoveImagePage();
    QWidget* BuildZoomPage();
    void Changed();
    void ShowPatternPicture();
    // The blend lists follow the document: grey pictures offer fewer modes.
    bool GreyDocument() const;
    // The picture of a file, over white; null when the file is no picture.
    static QImage PatternFromFile(const QString& File);

    QStackedWidget* stack_;
    std::map<int32_t, QWidget*> pages_;
    // One per control: puts the setting's value into the control.
    std::vector<std::function<void()>> loaders_;
    int32_t tool_ = -1;
    bool loading_ = false;
};

} // namespace vm
