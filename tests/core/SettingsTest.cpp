#include "core/AppSettings.h"
#include "core/SettingsStore.h"
#include "core/StartUpTables.h"
#include "support/TestSupport.h"

#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <tuple>

using namespace vm;

namespace {

// Every test gets a store of its own, in a fresh configuration folder.
class SettingsTest : public ::testing::Test {
  protected:
    QString Get(const QString& section, const QString& key, const QString& def = QStringLiteral("<none>")) {
        return GetSetting(SettingsRoot, section, key, def);
    }
    void Put(const QString& section, const QString& key, const QString& value) {
        SaveSetting(SettingsRoot, section, key, value);
    }
    QByteArray FileText(const QString& root) {
        QFile file(SettingsFilePath(root));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    vmtest::ConfigHome home;
};

using SettingsStoreTest = SettingsTest;
using AppSettingsTest = SettingsTest;
using SwatchFileTest = SettingsTest;

} // namespace

TEST_F(SettingsStoreTest, OneIniFilePerRootAndAutoOptionAlwaysUnderAlder) {
    EXPECT_EQ(Get("S", "K", "dflt"), "dflt");
    Put("S", "K", "v");
    const QString path = SettingsFilePath(SettingsRoot);
    EXPECT_TRUE(path.startsWith(home.Dir.path())) << path.toStdString();
    EXPECT_TRUE(QFileInfo::exists(path));
    // The same address under the other root is another value.
    EXPECT_EQ(GetSetting(AutoOptionRoot, "S", "K", "none"), "none");
    SaveSetting(AutoOptionRoot, "S", "K", "w");
    EXPECT_EQ(Get("S", "K"), "v");
    EXPECT_EQ(GetSetting(AutoOptionRoot, "S", "K", "none"), "w");
    EXPECT_NE(SettingsFilePath(AutoOptionRoot), path);

    // The auto option section goes to its own root whoever names it.
    SaveSetting(SettingsRoot, AutoOptionSection, "Clip", "0.1");
    EXPECT_EQ(GetSetting("Anything", AutoOptionSection, "Clip", "x"), "0.1");
    EXPECT_FALSE(FileText(SettingsRoot).contains("Clip"));
    EXPECT_TRUE(FileText(AutoOptionRoot).contains("Clip"));
    // Only that exact section name moves.
    SaveSetting(SettingsRoot, "autooption", "Clip", "0.2");
    EXPECT_EQ(GetSetting(AutoOptionRoot, "autooption", "Clip", "x"), "x");
}

TEST_F(SettingsStoreTest, BatchesReadTheirOwnWritesAndKeepThem) {
    {
        SettingsBatch outer;
        Put("B", "one", "1");
        {
            SettingsBatch inner;
            Put("B", "two", "2");
            SaveSetting(SettingsRoot, AutoOptionSection, "three", "3");
        }
        EXPECT_EQ(Get("B", "two"), "2");
        EXPECT_EQ(GetSetting(AutoOptionRoot, AutoOptionSection, "three", "x"), "3");
        Put("B", "one", "uno");
    }
    const QByteArray text = FileText(SettingsRoot);
    EXPECT_TRUE(text.contains("one=uno")) << text.toStdString();
    EXPECT_TRUE(text.contains("two=2")) << text.toStdString();
    EXPECT_EQ(GetSetting(AutoOptionRoot, AutoOptionSection, "three", "x"), "3");
}

TEST_F(SettingsStoreTest, KeysAndValuesAreCaseSensitiveFreeText) {
    Put("Sec", "Key", "upper");
    Put("Sec", "key", "lower");
    Put("sec", "Key", "other section");
    EXPECT_EQ(Get("Sec", "Key"), "upper");
    EXPECT_EQ(Get("Sec", "key"), "lower");
    EXPECT_EQ(Get("sec", "Key"), "other section");

    // Characters that mean something to an INI file or to QSettings, in keys
    // and in values.
    const char* const keys[] = {"颜色名称", "a/b",   "a\\b",    "a//b",    " lead", "trail ",
                                "100%",     "%002f", "=x;[y]#", "General", "",      "%"};
    const char* const values[] = {"16777215,0", "0,1",        "@Variant(x)", "",  " padded ", "line\nbreak",
                                  "颜色",       "\"quoted\"", "a;b=c",       "%", "\\",       "[x]"};
    const QString section = QString::fromUtf8("区段/一");
    for (int i = 0; i < 12; ++i)
        Put(section, keys[i], values[i]);
    for (int i = 0; i < 12; ++i)
        EXPECT_EQ(Get(section, keys[i]), values[i]) << keys[i];
    EXPECT_EQ(Get(QString::fromUtf8("区段"), "一/a/b"), "<none>");
    EXPECT_EQ(Get("Sec", "a"), "<none>");
}

TEST_F(SettingsStoreTest, TypedValuesBadTextAndHandEditedFiles) {
    SaveSettingInt(SettingsRoot, "T", "I", -123456);
    SaveSettingBool(SettingsRoot, "T", "B", true);
    SaveSettingBool(SettingsRoot, "T", "F", false);
    SaveSettingDouble(SettingsRoot, "T", "D", 0.1);
    EXPECT_EQ(Get("T", "I") + Get("T", "B") + Get("T", "F"), "-123456TrueFalse");
    EXPECT_EQ(GetSettingDouble(SettingsRoot, "T", "D", 2.0), 0.1);
    EXPECT_EQ(GetSettingInt(SettingsRoot, "T", "missing", 7), 7);

    // {text, read with default false, read with default true}: text that
    // does not convert leaves the default standing.
    const std::tuple<const char*, bool, bool> bools[] = {
        {"TRUE", true, true},    {" True ", true, true}, {"-1", true, true},   {"1", true, true},
        {"false", false, false}, {"0", false, false},    {"yes", false, true}, {"2", false, true},
        {"", false, true},       {"Tru", false, true},   {"1.0", false, true}};
    for (const auto& [text, withFalse, withTrue] : bools) {
        Put("T", "b", text);
        EXPECT_EQ(GetSettingBool(SettingsRoot, "T", "b", false), withFalse) << text;
        EXPECT_EQ(GetSettingBool(SettingsRoot, "T", "b", true), withTrue) << text;
    }
    for (const char* text : {"abc", "12abc", "0x10", "2147483648", "-2147483649", "", "1.5"}) {
        Put("T", "i", text);
        EXPECT_EQ(GetSettingInt(SettingsRoot, "T", "i", 42), 42) << text;
    }
    Put("T", "i", " 2147483647 ");
    EXPECT_EQ(GetSettingInt(SettingsRoot, "T", "i", 0), 2147483647);
    Put("T", "i", "-2147483648");
    EXPECT_EQ(GetSettingInt(SettingsRoot, "T", "i", 0), -2147483647 - 1);
    for (const char* text : {"x", "nan", "inf", ""}) {
        Put("T", "d", text);
        EXPECT_EQ(GetSettingDouble(SettingsRoot, "T", "d", 1.25), 1.25) << text;
    }

    // A file written by hand: blanks after a comma and before a number go.
    QFile file(SettingsFilePath(SettingsRoot));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[Grad]\nStrColor=255, 0\nCount=  12\n[SystemSetting]\nMaxHistoryStep=twenty\n");
    file.close();
    EXPECT_EQ(Get("Grad", "StrColor"), "255,0");
    EXPECT_EQ(GetSettingInt(SettingsRoot, "Grad", "Count", 0), 12);
    EXPECT_EQ(GetSettingInt(SettingsRoot, "SystemSetting", "MaxHistoryStep", 20), 20);
}

TEST_F(AppSettingsTest, EmptyStoreGivesEveryDefaultAndTheSwatchBook) {
    AppSettings s;
    s.MaxHistoryStep = -1; // the load must put the defaults back, not keep what was there
    s.GradientInvert = true;
    s.StrColor = "x";
    s.ColorList = {1, 2};
    s.HistoryFiles = {"x"};
    LoadSettings(s);

    AppSettings expected;
    LoadSwatches(DefaultSwatchTable(), expected.ColorList, expected.ColorName);
    EXPECT_TRUE(s == expected);
    EXPECT_EQ(s.ColorList.size(), 121u);
    // Loading read and wrote nothing.
    EXPECT_FALSE(QFileInfo::exists(SettingsFilePath(SettingsRoot)));
}

TEST_F(AppSettingsTest, SaveAndLoadBringEveryKeyBack) {
    // Every field moved off its default, so that a key missing from the load
    // or the save cannot come back unnoticed.
    AppSettings s;
    int32_t next = 1000;
    // clang-format off
    for (int32_t* f : {
             &s.RectCombineMode, &s.RectFeatherRadius, &s.RectStyle, &s.FixedRatioRectWidth,
             &s.FixedRatioRectHeight, &s.FixedRectWidth, &s.FixedRectHeight, &s.EllicptCombineMode,
             &s.EllicptFeatherRadius, &s.EllicptStyle, &s.FixedRatioEllicptWidth, &s.FixedRatioEllicptHeight,
             &s.FixedEllicptWidth, &s.FixedEllicptHeight, &s.PolyCombineMode, &s.PolyFeatherRadius,
             &s.PolyFillMode, &s.LassoCombineMode, &s.LassoFeatherRadius, &s.LassoFillMode,
             &s.RowAndColCombineMode, &s.RowColShape, &s.MagicWandCombineMode, &s.MagicWandFeatherRadius,
             &s.MagicWandTorlance, &s.LastSelectedTool, &s.LastSelectedTabOne, &s.LastSelectedTabTwo,
             &s.ZoomMode, &s.SampleSize, &s.GradientMode, &s.GradientBlendMode, &s.GradientOpacity,
             &s.GradientEdges, &s.PaintBucketFillContent, &s.PaintBucketBlendMode, &s.PaintBuckerOpacity,
             &s.PaintBucketTorlance, &s.SystemBackColor, &s.SystemForeColor, &s.OpenFileViewMode,
             &s.OpenFileFormatIndex, &s.SelectedModeOne, &s.SelectedModeTwo, &s.ColorPanelColorType,
             &s.ColorPanelSpectrumType, &s.ColorActiveTab, &s.PanAndInfoActiveTab, &s.BorderColor,
             &s.HistViewMode, &s.MaxHistoryStep, &s.MaxOpenFileCount, &s.MaxHistoryListCount,
             &s.CheckBoardFirstColor, &s.CheckBoardSecondColor, &s.CheckBoardGridType, &s.CheckBoardGridSize,
             &s.CheckBoradSize, &s.MarchingAntStartPos, &s.MarchingAntColorOne, &s.MarchingAntColorTwo,
             &s.RGBWorkingSpace, &s.ViewStyle})
        *f = next++;
    s.SystemForeColor = -5; // negative values too
    for (bool* f : {
             &s.EllicptAntiAlias, &s.PolyAntiAlias, &s.LassoAntiAlias, &s.MagicWandAntiAlias,
             &s.MagicWandContious, &s.MagicSampleFormAllLayer, &s.AdjustWindow, &s.IgnorePanel,
             &s.GradientInvert, &s.GradientDither, &s.GradientUseTransparent, &s.PaintBucketContious,
             &s.PaintSampleFormAllLayer, &s.ColorPanelForeColorSelected, &s.ShowStatistics,
             &s.UseOriginalColor, &s.ShowPromptSaveNotSupported, &s.ShowPromptChangeToGrayMode, &s.IgnoreExif,
             &s.UseUpperCase, &s.CheckBmp32or16Alpha})
        *f = !*f;
    // clang-format on
    s.ColorList = {0x0000FF, 0x123456, 0};
    s.ColorName = {QString::fromUtf8("红"), "a,b", ""};
    s.HistoryFiles = {"/tmp/a b.png", QString::fromUtf8("/图片/照片.jpg"), "/x/y.bmp"};
    SaveSettings(s);
    AppSettings loaded;
    LoadSettings(loaded);

    AppSettings expected = s;
    // The two keys written under another name than they are read from.
    expected.FixedEllicptHeight = 64;
    expected.CheckBmp32or16Alpha = true;
    EXPECT_TRUE(loaded == expected);
    EXPECT_EQ(loaded.ColorName, expected.ColorName);
    EXPECT_EQ(loaded.HistoryFiles, expected.HistoryFiles);
}

TEST_F(AppSettingsTest, StoredNamesAndTheTwoMisKeyedSettings) {
    AppSettings s;
    s.MagicWandTorlance = 45;
    s.ColorActiveTab = 2;
    s.PanAndInfoActiveTab = 1;
    s.PaintBucketFillContent = 3;
    s.ShowStatistics = false;
    s.FixedEllicptHeight = 100;
    s.CheckBmp32or16Alpha = false;
    SaveSettings(s);
    EXPECT_EQ(Get("ToolbarSetting", "MagicWandTorlance"), "45");
    EXPECT_EQ(Get("Color", "ActiveTab"), "2");
    EXPECT_EQ(Get("PanAndInfo", "ActiveTab"), "1");
    EXPECT_EQ(Get("PaintBucketFillContent", "PaintBucketFillContent"), "3");
    EXPECT_EQ(Get("HistGram", "ShowStatistics"), "False");
    // Only at their writer's section: the settings are not spread about.
    EXPECT_EQ(Get("ToolbarSetting", "PaintBucketFillContent"), "<none>");
    // The gradient is the gradient editor's to write.
    EXPECT_EQ(Get("GradientEditor", "StrColor"), "<none>");

    // Written under one name, read under another.
    EXPECT_EQ(Get("ToolbarSetting", "m_FixedEllicptHeight"), "100");
    EXPECT_EQ(Get("ToolbarSetting", "FixedEllicptHeight"), "<none>");
    EXPECT_EQ(Get("SystemSetting", "CheckBmp32or16Alpha"), "False");
    EXPECT_EQ(Get("SystemSetting", "m_CheckBmp32or16Alpha"), "<none>");
    AppSettings loaded;
    Put("ToolbarSetting", "FixedEllicptHeight", "77");
    Put("SystemSetting", "m_CheckBmp32or16Alpha", "False");
    LoadSettings(loaded);
    EXPECT_EQ(loaded.FixedEllicptHeight, 77);
    EXPECT_FALSE(loaded.CheckBmp32or16Alpha);
}

TEST_F(AppSettingsTest, ColorCountDecidesWhereTheSwatchesComeFrom) {
    // Lists present but a count of 0: the default book.
    Put("ColorPatch", "ColorList0", "255");
    Put("ColorPatch", "ColorName0", "x");
    Put("ColorPatch", "ColorCount", "0");
    AppSettings s;
    LoadSettings(s);
    EXPECT_EQ(s.ColorList.size(), 121u);

    // A count reads exactly that many entries; missing ones take 0 and "颜色".
    Put("ColorPatch", "ColorCount", "3");
    Put("ColorPatch", "ColorList2", "65280");
    LoadSettings(s);
    EXPECT_EQ(s.ColorList, (std::vector<int32_t>{255, 0, 65280}));
    EXPECT_EQ(s.ColorName, (std::vector<QString>{"x", QString::fromUtf8("颜色"), QString::fromUtf8("颜色")}));

    // Bad or negative counts fall back on the book.
    for (const char* count : {"-4", "many"}) {
        Put("ColorPatch", "ColorCount", count);
        LoadSettings(s);
        EXPECT_EQ(s.ColorList.size(), 121u) << count;
    }

    // A damaged huge count is bounded and does not hang the start.
    Put("ColorPatch", "ColorCount", "2000000000");
    LoadSettings(s);
    EXPECT_EQ(s.ColorList.size(), static_cast<size_t>(MaxSwatchCount));
    EXPECT_EQ(s.ColorName.size(), static_cast<size_t>(MaxSwatchCount));

    // The save writes the count with the lists, and shorter name lists are padded.
    s.ColorList = {1, 2};
    s.ColorName = {"one"};
    SaveSettings(s);
    EXPECT_EQ(Get("ColorPatch", "ColorCount"), "2");
    EXPECT_EQ(Get("ColorPatch", "ColorName1"), QString::fromUtf8("颜色"));
    LoadSettings(s);
    EXPECT_EQ(s.ColorList, (std::vector<int32_t>{1, 2}));

    // An empty list saves a count of 0, so the next run starts from the book.
    s.ColorList.clear();
    s.ColorName.clear();
    SaveSettings(s);
    LoadSettings(s);
    EXPECT_EQ(s.ColorList.size(), 121u);
}

TEST_F(AppSettingsTest, RecentFilesAndBadText) {
    Put("HistoryDocument", "FileCount", "40");
    for (int i = 0; i < 40; ++i)
        Put("HistoryDocument", QStringLiteral("FileName%1").arg(i), QStringLiteral("f%1").arg(i));
    Put("HistoryDocument", "FileName3", "");
    Put("SystemSetting", "MaxHistoryStep", "abc");
    Put("SystemSetting", "MaxOpenFileCount", "12");
    Put("HistGram", "ShowStatistics", "maybe");
    Put("ToolbarSetting", "GradientInvert", "-1");
    AppSettings s;
    LoadSettings(s);
    // At most the 16 entries of the menu; empty names are dropped.
    ASSERT_EQ(s.HistoryFiles.size(), 15);
    EXPECT_EQ(s.HistoryFiles.front(), "f0");
    EXPECT_EQ(s.HistoryFiles[3], "f4");
    EXPECT_EQ(s.HistoryFiles.back(), "f15");
    EXPECT_EQ(s.MaxHistoryStep, 20);
    EXPECT_EQ(s.MaxOpenFileCount, 12);
    EXPECT_TRUE(s.ShowStatistics);
    EXPECT_TRUE(s.GradientInvert);
}

TEST_F(SwatchFileTest, RoundTripAndDefensiveReading) {
    const QString path = home.Dir.filePath(QStringLiteral("book.txt"));
    const std::vector<int32_t> colors{0x0000FF, 0xFFFFFF, 0x7F123456};
    const std::vector<QString> names{QString::fromUtf8("红"), "a, b", "two\nlines"};
    ASSERT_TRUE(SaveSwatchFile(path, colors, names));
    std::vector<int32_t> c;
    std::vector<QString> n;
    ASSERT_TRUE(LoadSwatchFile(path, c, n));
    EXPECT_EQ(c, (std::vector<int32_t>{0x0000FF, 0xFFFFFF, 0x123456}));
    EXPECT_EQ(n, (std::vector<QString>{QString::fromUtf8("红"), "a, b", "two lines"}));

    EXPECT_FALSE(SaveSwatchFile(path, {1, 2}, {"one"}));
    EXPECT_FALSE(SaveSwatchFile(path, {}, {}));
    EXPECT_FALSE(SaveSwatchFile(home.Dir.filePath("no/such/folder/x.txt"), colors, names));

    auto write = [&](const QByteArray& bytes) {
        QFile f(path);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(bytes);
    };
    // Windows line ends, a byte order mark and blank lines are fine.
    write("\xEF\xBB\xBFVelluMark swatches\r\n\r\n255,red\r\n 65280 ,green\r\n");
    ASSERT_TRUE(LoadSwatchFile(path, c, n));
    EXPECT_EQ(c, (std::vector<int32_t>{255, 65280}));
    EXPECT_EQ(n, (std::vector<QString>{"red", "green"}));

    // Anything else leaves the lists as they were.
    const std::vector<int32_t> before = c;
    for (const char* bad : {"255,red\n", "VelluMark swatches\n", "VelluMark swatches\nred\n",
                            "VelluMark swatches\n16777216,x\n", "VelluMark swatches\n-1,x\n",
                            "VelluMark swatches\n0x10,x\n", "VelluMark swatches\n1,a\n,b\n", ""}) {
        write(bad);
        EXPECT_FALSE(LoadSwatchFile(path, c, n)) << bad;
        EXPECT_EQ(c, before) << bad;
    }
    EXPECT_FALSE(LoadSwatchFile(home.Dir.filePath("missing.txt"), c, n));

    // The shared loader replaces both lists.
    c = {9, 9, 9, 9};
    n = {"old"};
    LoadSwatches(PhotoFilterTable(), c, n);
    ASSERT_EQ(c.size(), 20u);
    ASSERT_EQ(n.size(), 20u);
    EXPECT_EQ(c[15], 255);
    EXPECT_EQ(n[15], QString::fromUtf8("深红"));
}
