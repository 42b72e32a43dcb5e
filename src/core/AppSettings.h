#pragma once
// The settings held for the whole run, one field a key, loaded at start-up
// and written back at exit. Defaults stand in the member initialisers; each
// field carries the name of its stored key (with the section in front where
// two sections share a key name).
#include "core/StartUpTables.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace vm {

struct AppSettings {
    // "ToolbarSetting": one group per selection tool.
    int32_t RectCombineMode = 0;
    int32_t RectFeatherRadius = 32;
    int32_t RectStyle = 0;
    int32_t FixedRatioRectWidth = 1;
    int32_t FixedRatioRectHeight = 1;
    int32_t FixedRectWidth = 64;
    int32_t FixedRectHeight = 64;

    int32_t EllicptCombineMode = 0;
    int32_t EllicptFeatherRadius = 32;
    bool EllicptAntiAlias = true;
    int32_t EllicptStyle = 0;
    int32_t FixedRatioEllicptWidth = 1;
    int32_t FixedRatioEllicptHeight = 1;
    int32_t FixedEllicptWidth = 64;
    // Written under "m_FixedEllicptHeight" but read as "FixedEllicptHeight",
    // so every run starts from 64 again.
    int32_t FixedEllicptHeight = 64;

    int32_t PolyCombineMode = 0;
    int32_t PolyFeatherRadius = 32;
    bool PolyAntiAlias = true;
    int32_t PolyFillMode = 0;

    int32_t LassoCombineMode = 0;
    int32_t LassoFeatherRadius = 32;
    bool LassoAntiAlias = true;
    int32_t LassoFillMode = 0;

    int32_t RowAndColCombineMode = 0;
    int32_t RowColShape = 1;

    int32_t MagicWandCombineMode = 0;
    int32_t MagicWandFeatherRadius = 32;
    bool MagicWandAntiAlias = true;
    int32_t MagicWandTorlance = 32;
    bool MagicWandContious = true;
    bool MagicSampleFormAllLayer = false;

    // "SystemOutLook"
    int32_t LastSelectedTool = 0;
    int32_t LastSelectedTabOne = 0;
    int32_t LastSelectedTabTwo = 0;

    // "ToolbarSetting": zoom, sampling, gradient and paint bucket options.
    int32_t ZoomMode = 0;
    bool AdjustWindow = false;
    bool IgnorePanel = false;
    int32_t SampleSize = 0;
    int32_t GradientMode = 0;
    int32_t GradientBlendMode = 0;
    int32_t GradientOpacity = 100;
    bool GradientInvert = false;
    bool GradientDither = false;
    bool GradientUseTransparent = true;
    int32_t GradientEdges = 4;
    int32_t PaintBucketFillContent = 0; // in its own section of the same name
    int32_t PaintBucketBlendMode = 0;
    int32_t PaintBuckerOpacity = 100;
    int32_t PaintBucketTorlance = 32;
    bool PaintBucketContious = true;
    bool PaintSampleFormAllLayer = false;

    // "SystemColor", as COLORREF.
    int32_t SystemBackColor = 0xFFFFFF;
    int32_t SystemForeColor = 0;

    // "CommonDialog"
    int32_t OpenFileViewMode = 28715;
    int32_t OpenFileFormatIndex = 0;

    // "InfoPanel"
    int32_t SelectedModeOne = 1;
    int32_t SelectedModeTwo = 4;

    // "ColorPanel"
    int32_t ColorPanelColorType = 1;
    int32_t ColorPanelSpectrumType = 0;
    bool ColorPanelForeColorSelected = true;

    // "ActiveTab" of "Color" and of "PanAndInfo".
    int32_t ColorActiveTab = 0;
    int32_t PanAndInfoActiveTab = 0;

    // "Navigator"
    int32_t BorderColor = 255;

    // "HistGram"
    bool ShowStatistics = true;
    int32_t HistViewMode = 0;
    bool UseOriginalColor = false;

    // "SystemSetting"
    int32_t MaxHistoryStep = 20;
    int32_t MaxOpenFileCount = 8;
    int32_t MaxHistoryListCount = 8; // in "HistoryDocument"
    bool ShowPromptSaveNotSupported = false;
    bool ShowPromptChangeToGrayMode = true;
    int32_t CheckBoardFirstColor = 0xFFFFFF;
    int32_t CheckBoardSecondColor = 0xC0C0C0;
    int32_t CheckBoardGridType = 2;
    int32_t CheckBoardGridSize = 2;
    int32_t CheckBoradSize = 8;
    int32_t MarchingAntStartPos = 0;
    int32_t MarchingAntColorOne = 0xFFFFFF;
    int32_t MarchingAntColorTwo = 0;
    int32_t RGBWorkingSpace = 0;
    bool IgnoreExif = false;
    bool UseUpperCase = false;
    // Read by the start-up under "m_CheckBmp32or16Alpha" but written as
    // "CheckBmp32or16Alpha" (which the settings dialog reads), so the start-up
    // sees True in every run.
    bool CheckBmp32or16Alpha = true;

    // "ColorPatch": the swatch lists. "ColorCount" is their length.
    int32_t ViewStyle = 0;
    std::vector<int32_t> ColorList; // COLORREF
    std::vector<QString> ColorName;

    // "HistoryDocument": the recent files, newest first.
    QStringList HistoryFiles;

    // "GradientEditor": the current gradient, comma-separated COLORREF values
    // and stop positions. The gradient editor writes them itself.
    QString StrColor = QStringLiteral("16777215,0");
    QString StrPosition = QStringLiteral("0,1");

    bool operator==(const AppSettings&) const = default;
};

// The process-wide settings object. Start-up fills it; the logic reads it.
AppSettings& Globals();

// Reads every key once into Settings; missing or unreadable keys take their
// defaults. "ColorCount" decides where the swatches come from: the stored
// lists when it is above 0, the default swatch book otherwise.
void LoadSettings(AppSettings& Settings);
// Writes every key back, then the recent files and the swatch lists.
void SaveSettings(const AppSettings& Settings);

// More entries than this in a swatch list are not read: a damaged count must
// not make the start-up read keys for ever.
inline constexpr int32_t MaxSwatchCount = 4096;
// The recent-file menu has this many entries.
inline constexpr int32_t MaxHistoryFiles = 16;

// The shared swatch loader: replaces both lists by the entries of Source.
void LoadSwatches(const std::vector<NamedColor>& Source, std::vector<int32_t>& Colors,
                  std::vector<QString>& Names);

// Swatch list files: UTF-8 text, the line "VelluMark swatches" and then one
// "COLORREF,name" a line (the name runs to the end of the line). A file that
// does not read cleanly, or holds no swatch, leaves the lists untouched and
// answers false.
bool LoadSwatchFile(const QString& Path, std::vector<int32_t>& Colors, std::vector<QString>& Names);
// Colours are written without their high byte; line breaks in names become
// blanks. False when the lists are empty or differ in length, or when the file
// cannot be written.
bool SaveSwatchFile(const QString& Path, const std::vector<int32_t>& Colors,
                    const std::vector<QString>& Names);

} // namespace vm
