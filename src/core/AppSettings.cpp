#include "core/AppSettings.h"

#include "core/SettingsStore.h"

#include <QFile>
#include <QSaveFile>

#include <algorithm>

namespace vm {

AppSettings& Globals() {
    static AppSettings settings;
    return settings;
}

namespace {

// One row per stored key. SaveKey differs from Key for the two keys that have
// always been written under another name than the one they are read from.
template <typename T> struct KeyRow {
    const char* Section;
    const char* Key;
    const char* SaveKey;
    T AppSettings::*Field;
};

using IntRow = KeyRow<int32_t>;
using BoolRow = KeyRow<bool>;

#define VM_INT(section, key)                                                                                 \
    IntRow {                                                                                                 \
        section, #key, #key, &AppSettings::key                                                               \
    }
#define VM_BOOL(section, key)                                                                                \
    BoolRow {                                                                                                \
        section, #key, #key, &AppSettings::key                                                               \
    }

const IntRow IntRows[] = {
    VM_INT("ToolbarSetting", RectCombineMode),
    VM_INT("ToolbarSetting", RectFeatherRadius),
    VM_INT("ToolbarSetting", RectStyle),
    VM_INT("ToolbarSetting", FixedRatioRectWidth),
    VM_INT("ToolbarSetting", FixedRatioRectHeight),
    VM_INT("ToolbarSetting", FixedRectWidth),
    VM_INT("ToolbarSetting", FixedRectHeight),
    VM_INT("ToolbarSetting", EllicptCombineMode),
    VM_INT("ToolbarSetting", EllicptFeatherRadius),
    VM_INT("ToolbarSetting", EllicptStyle),
    VM_INT("ToolbarSetting", FixedRatioEllicptWidth),
    VM_INT("ToolbarSetting", FixedRatioEllicptHeight),
    VM_INT("ToolbarSetting", FixedEllicptWidth),
    IntRow{"ToolbarSetting", "FixedEllicptHeight", "m_FixedEllicptHeight", &AppSettings::FixedEllicptHeight},
    VM_INT("ToolbarSetting", PolyCombineMode),
    VM_INT("ToolbarSetting", PolyFeatherRadius),
    VM_INT("ToolbarSetting", PolyFillMode),
    VM_INT("ToolbarSetting", LassoCombineMode),
    VM_INT("ToolbarSetting", LassoFeatherRadius),
    VM_INT("ToolbarSetting", LassoFillMode),
    VM_INT("ToolbarSetting", RowAndColCombineMode),
    VM_INT("ToolbarSetting", RowColShape),
    VM_INT("ToolbarSetting", MagicWandCombineMode),
    VM_INT("ToolbarSetting", MagicWandFeatherRadius),
    VM_INT("ToolbarSetting", MagicWandTorlance),
    VM_INT("SystemOutLook", LastSelectedTool),
    VM_INT("SystemOutLook", LastSelectedTabOne),
    VM_INT("SystemOutLook", LastSelectedTabTwo),
    VM_INT("ToolbarSetting", ZoomMode),
    VM_INT("ToolbarSetting", SampleSize),
    VM_INT("ToolbarSetting", GradientMode),
    VM_INT("ToolbarSetting", GradientBlendMode),
    VM_INT("ToolbarSetting", GradientOpacity),
    VM_INT("ToolbarSetting", GradientEdges),
    VM_INT("PaintBucketFillContent", PaintBucketFillContent),
    VM_INT("ToolbarSetting", PaintBucketBlendMode),
    VM_INT("ToolbarSetting", PaintBuckerOpacity),
    VM_INT("ToolbarSetting", PaintBucketTorlance),
    VM_INT("SystemColor", SystemBackColor),
    VM_INT("SystemColor", SystemForeColor),
    VM_INT("CommonDialog", OpenFileViewMode),
    VM_INT("CommonDialog", OpenFileFormatIndex),
    VM_INT("InfoPanel", SelectedModeOne),
    VM_INT("InfoPanel", SelectedModeTwo),
    VM_INT("ColorPanel", ColorPanelColorType),
    VM_INT("ColorPanel", ColorPanelSpectrumType),
    IntRow{"Color", "ActiveTab", "ActiveTab", &AppSettings::ColorActiveTab},
    IntRow{"PanAndInfo", "ActiveTab", "ActiveTab", &AppSettings::PanAndInfoActiveTab},
    VM_INT("Navigator", BorderColor),
    VM_INT("HistGram", HistViewMode),
    VM_INT("SystemSetting", MaxHistoryStep),
    VM_INT("SystemSetting", MaxOpenFileCount),
    VM_INT("HistoryDocument", MaxHistoryListCount),
    VM_INT("SystemSetting", CheckBoardFirstColor),
    VM_INT("SystemSetting", CheckBoardSecondColor),
    VM_INT("SystemSetting", CheckBoardGridType),
    VM_INT("SystemSetting", CheckBoardGridSize),
    VM_INT("SystemSetting", CheckBoradSize),
    VM_INT("SystemSetting", MarchingAntStartPos),
    VM_INT("SystemSetting", MarchingAntColorOne),
    VM_INT("SystemSetting", MarchingAntColorTwo),
    VM_INT("SystemSetting", RGBWorkingSpace),
    VM_INT("ColorPatch", ViewStyle),
};

const BoolRow BoolRows[] = {
    VM_BOOL("ToolbarSetting", EllicptAntiAlias),
    VM_BOOL("ToolbarSetting", PolyAntiAlias),
    VM_BOOL("ToolbarSetting", LassoAntiAlias),
    VM_BOOL("ToolbarSetting", MagicWandAntiAlias),
    VM_BOOL("ToolbarSetting", MagicWandContious),
    VM_BOOL("ToolbarSetting", MagicSampleFormAllLayer),
    VM_BOOL("ToolbarSetting", AdjustWindow),
    VM_BOOL("ToolbarSetting", IgnorePanel),
    VM_BOOL("ToolbarSetting", GradientInvert),
    VM_BOOL("ToolbarSetting", GradientDither),
    VM_BOOL("ToolbarSetting", GradientUseTransparent),
    VM_BOOL("ToolbarSetting", PaintBucketContious),
    VM_BOOL("ToolbarSetting", PaintSampleFormAllLayer),
    VM_BOOL("ColorPanel", ColorPanelForeColorSelected),
    VM_BOOL("HistGram", ShowStatistics),
    VM_BOOL("HistGram", UseOriginalColor),
    VM_BOOL("SystemSetting", ShowPromptSaveNotSupported),
    VM_BOOL("SystemSetting", ShowPromptChangeToGrayMode),
    VM_BOOL("SystemSetting", IgnoreExif),
    VM_BOOL("SystemSetting", UseUpperCase),
    BoolRow{"SystemSetting", "m_CheckBmp32or16Alpha", "CheckBmp32or16Alpha",
            &AppSettings::CheckBmp32or16Alpha},
};

#undef VM_INT
#undef VM_BOOL

const QString ColorPatch = QStringLiteral("ColorPatch");
const QString HistoryDocument = QStringLiteral("HistoryDocument");
const QString GradientEditor = QStringLiteral("GradientEditor");

QString Indexed(const char* key, int32_t i) {
    return QString::fromLatin1(key) + QString::number(i);
}

const QString SwatchFileHeader = QStringLiteral("VelluMark swatches");
constexpr qint64 MaxSwatchFileSize = 4 << 20;

} // namespace

void LoadSwatches(const std::vector<NamedColor>& Source, std::vector<int32_t>& Colors,
                  std::vector<QString>& Names) {
    Colors.clear();
    Names.clear();
    Colors.reserve(Source.size());
    Names.reserve(Source.size());
    for (const NamedColor& c : Source) {
        Colors.push_back(c.Color);
        Names.push_back(c.Name);
    }
}

void LoadSettings(AppSettings& Settings) {
    SettingsBatch batch;
    const AppSettings defaults;
    for (const IntRow& r : IntRows)
        Settings.*r.Field = GetSettingInt(SettingsRoot, QString::fromLatin1(r.Section),
                                          QString::fromLatin1(r.Key), defaults.*r.Field);
    for (const BoolRow& r : BoolRows)
        Settings.*r.Field = GetSettingBool(SettingsRoot, QString::fromLatin1(r.Section),
                                           QString::fromLatin1(r.Key), defaults.*r.Field);

    // The count first: it decides whether the stored lists are read at all.
    const int32_t count = GetSettingInt(SettingsRoot, ColorPatch, QStringLiteral("ColorCount"), 0);
    if (count > 0) {
        const int32_t n = std::min(count, MaxSwatchCount);
        Settings.ColorList.assign(static_cast<size_t>(n), 0);
        Settings.ColorName.assign(static_cast<size_t>(n), QString());
        for (int32_t i = 0; i < n; ++i) {
            Settings.ColorList[i] = GetSettingInt(SettingsRoot, ColorPatch, Indexed("ColorList", i), 0);
            Settings.ColorName[i] =
                GetSetting(SettingsRoot, ColorPatch, Indexed("ColorName", i), QStringLiteral("颜色"));
        }
    } else {
        LoadSwatches(DefaultSwatchTable(), Settings.ColorList, Settings.ColorName);
    }

    Settings.HistoryFiles.clear();
    const int32_t files = std::clamp(
        GetSettingInt(SettingsRoot, HistoryDocument, QStringLiteral("FileCount"), 0), 0, MaxHistoryFiles);
    for (int32_t i = 0; i < files; ++i) {
        const QString name = GetSetting(SettingsRoot, HistoryDocument, Indexed("FileName", i), QString());
        if (!name.isEmpty()) Settings.HistoryFiles.append(name);
    }

    Settings.StrColor =
        GetSetting(SettingsRoot, GradientEditor, QStringLiteral("StrColor"), defaults.StrColor);
    Settings.StrPosition =
        GetSetting(SettingsRoot, GradientEditor, QStringLiteral("StrPosition"), defaults.StrPosition);
}

void SaveSettings(const AppSettings& Settings) {
    SettingsBatch batch;
    for (const IntRow& r : IntRows)
        SaveSettingInt(SettingsRoot, QString::fromLatin1(r.Section), QString::fromLatin1(r.SaveKey),
                       Settings.*r.Field);
    for (const BoolRow& r : BoolRows)
        SaveSettingBool(SettingsRoot, QString::fromLatin1(r.Section), QString::fromLatin1(r.SaveKey),
                        Settings.*r.Field);
    // StrColor and StrPosition are not written here: the gradient editor keeps
    // them current in the store itself, and writing the start-up copy back
    // would undo its changes.

    const int32_t files =
        static_cast<int32_t>(std::min<qsizetype>(Settings.HistoryFiles.size(), MaxHistoryFiles));
    SaveSettingInt(SettingsRoot, HistoryDocument, QStringLiteral("FileCount"), files);
    for (int32_t i = 0; i < files; ++i)
        SaveSetting(SettingsRoot, HistoryDocument, Indexed("FileName", i), Settings.HistoryFiles[i]);

    const int32_t count = static_cast<int32_t>(std::min<size_t>(Settings.ColorList.size(), MaxSwatchCount));
    SaveSettingInt(SettingsRoot, ColorPatch, QStringLiteral("ColorCount"), count);
    for (int32_t i = 0; i < count; ++i) {
        SaveSettingInt(SettingsRoot, ColorPatch, Indexed("ColorList", i), Settings.ColorList[i]);
        const QString name = static_cast<size_t>(i) < Settings.ColorName.size() ? Settings.ColorName[i]
                                                                                : QStringLiteral("颜色");
        SaveSetting(SettingsRoot, ColorPatch, Indexed("ColorName", i), name);
    }
}

bool LoadSwatchFile(const QString& Path, std::vector<int32_t>& Colors, std::vector<QString>& Names) {
    QFile file(Path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > MaxSwatchFileSize) return false;
    QString text = QString::fromUtf8(file.readAll());
    if (text.startsWith(QChar(0xFEFF))) text.remove(0, 1); // byte order mark of some editors
    const QStringList lines = text.split(u'\n');

    std::vector<NamedColor> entries;
    bool headerSeen = false;
    for (QString line : lines) {
        if (line.endsWith(u'\r')) line.chop(1);
        if (line.trimmed().isEmpty()) continue;
        if (!headerSeen) {
            if (line.trimmed() != SwatchFileHeader) return false;
            headerSeen = true;
            continue;
        }
        const qsizetype comma = line.indexOf(u',');
        if (comma < 0) return false;
        bool ok = false;
        const qlonglong color = line.left(comma).trimmed().toLongLong(&ok, 10);
        if (!ok || color < 0 || color > 0xFFFFFF) return false;
        if (static_cast<int32_t>(entries.size()) >= MaxSwatchCount) return false;
        entries.push_back({static_cast<int32_t>(color), line.mid(comma + 1)});
    }
    if (entries.empty()) return false;
    LoadSwatches(entries, Colors, Names);
    return true;
}

bool SaveSwatchFile(const QString& Path, const std::vector<int32_t>& Colors,
                    const std::vector<QString>& Names) {
    // An empty list would make a file that cannot be loaded again.
    if (Colors.empty() || Colors.size() != Names.size() ||
        Colors.size() > static_cast<size_t>(MaxSwatchCount))
        return false;
    QString text = SwatchFileHeader + u'\n';
    for (size_t i = 0; i < Colors.size(); ++i) {
        QString name = Names[i];
        name.replace(u'\r', u' ').replace(u'\n', u' ');
        text += QString::number(Colors[i] & 0xFFFFFF) + u',' + name + u'\n';
    }
    QSaveFile file(Path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    const QByteArray bytes = text.toUtf8();
    if (file.write(bytes) != bytes.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

} // namespace vm
