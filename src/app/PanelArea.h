#pragma once
// The two panel groups beside the canvas: navigator, histogram and
// information in one, colour and swatches in the other. They follow the
// active document; a panel counts and draws only while its tab is open.
#include <QWidget>

class QTabWidget;

namespace vm {

class Canvas;
class ColorPanel;
class HistogramPanel;
class InfoPanel;
class NavigatorPanel;
class SwatchPanel;

class PanelArea : public QWidget {
    Q_OBJECT
  public:
    explicit PanelArea(QWidget* Parent = nullptr);

    // The active document's canvas, or null.
    void SetCanvas(Canvas* Target);
    Canvas* Target() const { return canvas_; }
    // The open panels draw again (after a command changed the document).
    void RefreshOpenPanels();
    // The same once the present event is handled, however often asked.
    void ScheduleRefresh();
    // The colours changed elsewhere (the picker): the colour panel follows.
    void ColorsChanged();

    QTabWidget* TabPanOrInfo() const { return panOrInfo_; }
    QTabWidget* TabColorAndPalette() const { return colorAndPalette_; }
    NavigatorPanel* Navigator() const { return navigator_; }
    HistogramPanel* Histogram() const { return histogram_; }
    InfoPanel* Info() const { return info_; }
    ColorPanel* Colors() const { return color_; }
    SwatchPanel* Swatches() const { return swatches_; }

  private:
    Canvas* canvas_ = nullptr;
    bool refreshPending_ = false;
    QTabWidget* panOrInfo_;
    QTabWidget* colorAndPalette_;
    NavigatorPanel* navigator_;
    HistogramPanel* histogram_;
    InfoPanel* info_;
    ColorPanel* color_;
    SwatchPanel* swatches_;
};

} // namespace vm
