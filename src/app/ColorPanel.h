#pragma once
// The colour panel (foreground and background colour with sliders in one of
// six colour spaces and a spectrum bar) and the swatch panel (the swatch list
// with its books, loading, saving and replacing).
#include <QStringList>
#include <QWidget>

#include <array>
#include <cstdint>
#include <vector>

class QComboBox;
class QGridLayout;
class QLabel;
class QSpinBox;
class QToolButton;

namespace vm {

struct NamedColor;

// The colour spaces of the panel, in the order of ColorPanelColorType.
enum ColorSpace : int32_t {
    ColorSpaceGrey = 0,
    ColorSpaceRgb = 1,
    ColorSpaceWeb = 2,
    ColorSpaceHsb = 3,
    ColorSpaceCmyk = 4,
    ColorSpaceLab = 5,
    ColorSpaceCount = 6,
};
QStringList ColorSpaceNames();

// The channels of a space: their labels, ranges, and the conversion of a
// COLORREF to channel values and back. Values are whole numbers as the
// panel's boxes show them.
struct ColorChannels {
    QStringList Labels;
    std::vector<int> Min, Max;
};
ColorChannels ChannelsOf(int32_t Space);
std::vector<int> ChannelValues(int32_t Space, int32_t Color);
int32_t ColorOfChannels(int32_t Space, const std::vector<int>& Values);

class ChannelBar;

class ColorPanel : public QWidget {
    Q_OBJECT
  public:
    explicit ColorPanel(QWidget* Parent = nullptr);

    // Redraws the two colours and the sliders from the settings.
    void RefreshColorPanel();
    void SetSpace(int32_t Space);
    int32_t Space() const;
    // Which of the two colours the sliders change.
    void SelectForeColor(bool Fore);
    // Sets a channel as the user would with the slider or the box.
    void SetChannel(int Index, int Value);
    int ChannelCount() const;
    int Channel(int Index) const;
    // A click on the spectrum bar at a fraction (0..1) of its width and height.
    void PickFromSpectrum(double X, double Y);

  signals:
    void ColorsChanged();

  private:
    void SetActiveColor(int32_t Color);
    void DrawForeColor();
    void DrawBackColor();

    QComboBox* space_;
    QGridLayout* grid_;
    QToolButton* fore_;
    QToolButton* back_;
    std::vector<QLabel*> labels_;
    std::vector<ChannelBar*> bars_;
    std::vector<QSpinBox*> boxes_;
    QLabel* spectrum_;
    bool syncing_ = false;
    friend class ChannelBar;
};

class SwatchView;

class SwatchPanel : public QWidget {
    Q_OBJECT
  public:
    explicit SwatchPanel(QWidget* Parent = nullptr);

    // The books of the menu, in order, with their colours.
    static QStringList BookNames();
    static const std::vector<NamedColor>& Book(int Index);

    void ResetSwatches();
    void UseBook(int Index);
    // Appends the file's swatches (Replace: instead of the list). False when
    // the file does not read.
    bool LoadFrom(const QString& Path, bool Replace);
    bool SaveTo(const QString& Path) const;
    void AddColor(int32_t Color);
    void RemoveAt(int Index);
    // A click on a swatch: the foreground colour, or with Ctrl the background.
    void ChooseSwatch(int Index, bool Background);
    void SetViewStyle(int32_t Style);
    void Refresh();
    int SwatchAt(const QPoint& At) const;

  signals:
    void ColorsChanged();

  private:
    SwatchView* view_;
    QToolButton* menuButton_;
};

} // namespace vm
