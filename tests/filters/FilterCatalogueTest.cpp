// The filter rows of the catalogue against the settings store: what the
// dialogs load and store, what the repeat command reads with all its quirks;
// and every row that runs, on every format, with and without a selection.
#include "FilterTestSupport.h"

#include "core/MessageBox.h"
#include "core/OperationSettings.h"
#include "core/ProcessingFrame.h"
#include "core/SettingsStore.h"

#include <QTemporaryDir>

using namespace vm;
using namespace ftest;

namespace {

class FilterSettings : public ::testing::Test {
  protected:
    static const Operation& Op(const char* key) {
        const Operation* op = FindOperation(QString::fromUtf8(key));
        EXPECT_TRUE(op) << key;
        return *op;
    }
    static void Put(const char* section, const char* key, const QString& value) {
        SaveSetting(SettingsRoot, QString::fromUtf8(section), QString::fromUtf8(key), value);
    }
    static QString Get(const char* section, const char* key) {
        return GetSetting(SettingsRoot, QString::fromUtf8(section), QString::fromUtf8(key),
                          QStringLiteral("<none>"));
    }
    int Repeat(const char* op, const char* key) const {
        return ReadRepeatParams(Op(op), *picture).Int(QString::fromUtf8(key));
    }

    vmtest::ConfigHome home;
    std::unique_ptr<CImage> picture = Picture(40, 30, 24, 1);
};

} // namespace

TEST_F(FilterSettings, RepeatReadsWhatTheQuirksSay) {
    // The Gaussian blur's repeat reads the box blur's radius, default 1.
    StoreParams(Op("GuassBlur"), Params({{"Radius", "7"}}));
    EXPECT_EQ(Get("GuassBlur", "Radius"), "7");
    EXPECT_EQ(Repeat("GuassBlur", "Radius"), 1);
    Put("BoxBlur", "Radius", "12");
    EXPECT_EQ(Repeat("GuassBlur", "Radius"), 12);

    // Wave's phase is read under a key nobody writes; Tile reads Wave's angle.
    EXPECT_EQ(Repeat("Tile", "Angle"), 30);
    StoreParams(Op("Wave"), Params({{"Angle", "90"}}));
    EXPECT_EQ(Repeat("Wave", "Angle"), 0);
    EXPECT_EQ(Repeat("Tile", "Angle"), 90);
    StoreParams(Op("Tile"), Params({{"Angle", "-45"}}));
    EXPECT_EQ(Repeat("Tile", "Angle"), 90);

    // VariableBlur's vertical radius comes from a section named RadiusY.
    StoreParams(Op("VariableBlur"),
                Params({{"RadiusX", "40"}, {"RadiusY", "60"}, {"FileName", "/x/map.bmp"}}));
    EXPECT_EQ(Repeat("VariableBlur", "RadiusX"), 40);
    EXPECT_EQ(Repeat("VariableBlur", "RadiusY"), 100);
    EXPECT_EQ(ReadRepeatParams(Op("VariableBlur"), *picture).Text("FileName"), "/x/map.bmp");
    Put("RadiusY", "Vertical", "33");
    EXPECT_EQ(Repeat("VariableBlur", "RadiusY"), 33);

    // Renamed keys: the dialog's value never reaches the repeat.
    const struct {
        const char *Op, *Key, *Read;
        int Default;
    } renamed[] = {{"Illusion", "Radius", "Division", 10},
                   {"SoftenPortrait", "Radius", "Softness", 5},
                   {"SmearIt", "Distance", " Distance", 32},
                   {"InkSketch", "Coloring", " Coloring", 10},
                   {"PencilSketch", "Range", " PencilSketch", 0}};
    for (const auto& r : renamed) {
        StoreParams(Op(r.Op), Params({{QString::fromUtf8(r.Key), "3"}}));
        EXPECT_EQ(Repeat(r.Op, r.Key), r.Default) << r.Op;
        Put(r.Op, r.Read, "4");
        EXPECT_EQ(Repeat(r.Op, r.Key), 4) << r.Op;
    }

    // Defaults of the repeat's own, and the stored value winning over them.
    const struct {
        const char *Op, *Key;
        int Dialog, Repeat;
    } defaults[] = {{"Polar", "CirDepth", 10, 100},       {"Median", "Percentile", 50, 50},
                    {"SharpByHistGram", "Radius", 5, 50}, {"ReduceNoise", "Radius", 5, 50},
                    {"AddNoise", "Amount", 12, 50},       {"RemoveRedEye", "NewSaturation", 10, 50},
                    {"Checkerboard", "ScaleX", 40, 50},   {"Checkerboard", "ScaleY", 40, 50},
                    {"Cloud", "Power", 50, 250}};
    for (const auto& d : defaults) {
        EXPECT_EQ(LoadStoredParams(Op(d.Op), *picture).Int(QString::fromUtf8(d.Key)), d.Dialog) << d.Op;
        EXPECT_EQ(Repeat(d.Op, d.Key), d.Repeat) << d.Op << " " << d.Key;
        Put(d.Op, d.Key, "9");
        EXPECT_EQ(Repeat(d.Op, d.Key), 9) << d.Op;
    }

    // The repeat holds nothing to a range; the dialog shows the nearest end.
    Put("BoxBlur", "Radius", "5000");
    EXPECT_EQ(Repeat("BoxBlur", "Radius"), 5000);
    EXPECT_EQ(LoadStoredParams(Op("BoxBlur"), *picture).Int("Radius"), 999);
    auto rgba = Picture(10, 10, 32, 1);
    EXPECT_EQ(LoadStoredParams(Op("BoxBlur"), *rgba).Int("Radius"), 90);
    Put("SurfaceBlur", "Threshold", "-4");
    EXPECT_EQ(LoadStoredParams(Op("SurfaceBlur"), *picture).Int("Threshold"), 2);
}

TEST_F(FilterSettings, CentresComeFromTheSelectionsBound) {
    Put("RadialBlur", "CentreX", "3");
    Params p = ReadRepeatParams(Op("RadialBlur"), *picture);
    EXPECT_EQ(p.Int("CentreX"), 20);
    EXPECT_EQ(p.Int("CentreY"), 15);
    EXPECT_EQ(p.Int("Angle"), 45);
    EXPECT_EQ(p.Int("SampleRadius"), 20);
    CSelection sel;
    SetMask(sel, 40, 30, [](int x, int y) { return x >= 10 && x <= 29 && y >= 4 && y <= 13 ? 255 : 0; });
    picture->SetSelection(&sel);
    p = ReadRepeatParams(Op("ZoomBlur"), *picture);
    EXPECT_EQ(p.Int("CentreX"), 19);
    EXPECT_EQ(p.Int("CentreY"), 8);
    EXPECT_EQ(LoadStoredParams(Op("ZoomBlur"), *picture).Int("CentreX"), 19);
    EXPECT_FALSE(ReadRepeatParams(Op("BoxBlur"), *picture).Has("CentreX"));
    // Centres are never stored.
    StoreParams(Op("ZoomBlur"), p);
    EXPECT_EQ(Get("ZoomBlur", "CentreX"), "<none>");
    picture->SetSelection(nullptr);
}

TEST_F(FilterSettings, OkStoresWholeNumbersUnderTheSectionsWithTheirExceptions) {
    Params offset;
    offset.Set("Horization", -12);
    offset.Set("Vertical", 8);
    StoreParams(Op("Offset"), offset);
    EXPECT_EQ(Get("OffSet", "Horization"), "-12");
    EXPECT_EQ(Get("OffSet", "Vertical"), "8");
    EXPECT_EQ(Get("OffSet", "Edge"), "1");
    EXPECT_EQ(Get("Offset", "Horization"), "<none>");
    StoreParams(Op("DisPlace"), Params({{"Horization", "30"}, {"Stretch", "1"}}));
    EXPECT_EQ(Get("Displace", "Horization"), "30");
    EXPECT_EQ(Get("Displace", "Stretch"), "1");
    EXPECT_EQ(Get("Displace", "Repeat"), "0");
    StoreParams(Op("RadialBlur"), Params({{"Angle", "-90"}, {"SampleRadius", "7"}}));
    EXPECT_EQ(Get("RadialBlur", "Angle"), "-90");
    EXPECT_EQ(Repeat("RadialBlur", "SampleRadius"), 7);
    StoreParams(Op("Convolute"), Params({{"Matrix12", "-3"}, {"Divider", "4"}}));
    EXPECT_EQ(Get("Convolute", "Matrix12"), "-3");
    EXPECT_EQ(Get("Convolute", "Matrix0"), "1");
    EXPECT_EQ(Get("Convolute", "Divider"), "4");

    // Unfocus stores the radius of a slider that does not move: what was
    // stored (or the default) stays, whatever the dialog showed.
    StoreParams(Op("Unfocus"), Params({{"Radius", "17"}}));
    EXPECT_EQ(Get("Unfocus", "Radius"), "5");
    Put("Unfocus", "Radius", "9");
    StoreParams(Op("Unfocus"), Params({{"Radius", "2"}}));
    EXPECT_EQ(Repeat("Unfocus", "Radius"), 9);
}

TEST_F(FilterSettings, RangesFollowTheFormatThePictureAndTheOptions) {
    QString error;
    const Operation& box = Op("BoxBlur");
    auto rgba = Picture(10, 10, 32, 1);
    EXPECT_TRUE(box.Validate(Params({{"Radius", "95"}}), *picture, error));
    EXPECT_FALSE(box.Validate(Params({{"Radius", "95"}}), *rgba, error));
    for (const char* key : {"BoxBlur", "GuassBlur", "FarBlur", "HighPass", "UnsharpMask"}) {
        const Operation& op = Op(key);
        const SliderSpec* radius = nullptr;
        for (const auto& s : op.Sliders)
            if (s.Key == "Radius") radius = &s;
        ASSERT_TRUE(radius && radius->MaxOnRgba32) << key;
        EXPECT_LT(op.SliderLimits(*radius, Params(), PixelFormat32bppARGB).second,
                  op.SliderLimits(*radius, Params(), PixelFormat24bppRGB).second);
    }
    // The smear's sliders narrow with its round and square types.
    const Operation& smear = Op("SmearIt");
    EXPECT_TRUE(smear.Validate(Params({{"Amount", "500"}, {"SmearType", "3"}}), *picture, error));
    EXPECT_FALSE(smear.Validate(Params({{"Amount", "500"}, {"SmearType", "1"}}), *picture, error));
    EXPECT_FALSE(smear.Validate(Params({{"Distance", "60"}, {"SmearType", "2"}}), *picture, error));
    Put("SmearIt", "SmearType", "2");
    Put("SmearIt", "Amount", "700");
    EXPECT_EQ(LoadStoredParams(smear, *picture).Int("Amount"), 100);
    // The offset runs over the picture's own size.
    const Operation& offset = Op("Offset");
    EXPECT_TRUE(offset.Validate(Params({{"Horization", "-40"}, {"Vertical", "30"}}), *picture, error));
    EXPECT_FALSE(offset.Validate(Params({{"Horization", "41"}}), *picture, error));
    EXPECT_FALSE(offset.Validate(Params({{"Vertical", "-31"}}), *picture, error));
    // Centres are parameters of the rows that have one only.
    EXPECT_TRUE(Op("RadialBlur").Validate(Params({{"CentreX", "4"}}), *picture, error));
    EXPECT_FALSE(Op("BoxBlur").Validate(Params({{"CentreX", "4"}}), *picture, error));
    EXPECT_FALSE(Op("Convolute").Validate(Params({{"Divider", "0"}}), *picture, error));
}

TEST_F(FilterSettings, RefusalsNameTheParameterByItsLabelInChinese) {
    // What the user reads names the command and the parameter as the dialog
    // shows them, never the stored keys.
    struct Case {
        const char* Op;
        Params Given;
        QStringList Words;
    };
    const std::vector<Case> cases = {
        {"VariableBlur", Params({{"FileName", ""}}), {"“变径模糊”", "“文件”", "不能为空"}},
        {"VariableBlur", Params({{"FileName", "/nowhere/map.bmp"}}), {"“文件”", "“/nowhere/map.bmp”"}},
        {"Convolute", Params({{"Divider", "0"}}), {"“自定义”", "“缩放”", "不等于 0", "“0”"}},
        {"Convolute", Params({{"Matrix7", "x"}}), {"“第2行第3列”", "整数"}},
        {"GuassBlur", Params({{"Radius", "999"}}), {"“高斯模糊”", "“半径”", "1 到 250", "“999”"}},
        {"Posterize", Params({{"Levels", "1"}}), {"“色调分离”", "“色阶”", "2 到 255"}},
        {"Ripple", Params({{"Edge", "5"}}), {"“边缘”", "0 折回、1 重复边缘"}},
        {"Wave", Params({{"Reflective", "2"}}), {"“反射”", "0 或 1"}},
        {"BoxBlur", Params({{"Bogus", "1"}}), {"“方框模糊”", "Bogus"}},
    };
    for (const Case& k : cases) {
        QString error;
        EXPECT_FALSE(Op(k.Op).Validate(k.Given, *picture, error)) << k.Op;
        for (const QString& word : k.Words)
            EXPECT_TRUE(error.contains(word))
                << k.Op << ": " << error.toStdString() << " lacks " << word.toStdString();
        // No stored key but the one the user typed and did not exist.
        for (const QString& key : k.Given.Values().keys())
            if (key != QLatin1String("Bogus")) {
                EXPECT_FALSE(error.contains(key)) << error.toStdString();
            }
        EXPECT_FALSE(error.contains(QLatin1String(k.Op))) << error.toStdString();
    }
}

TEST(FilterCatalogue, EveryKeyIsOneRowAndEveryRuleFitsItsFormats) {
    QStringList keys;
    for (const Operation& op : Catalogue()) {
        EXPECT_FALSE(keys.contains(op.Key)) << op.Key.toStdString();
        keys << op.Key;
        EXPECT_EQ(&RowOf(op.Key), &op);
        // A picture can only need to be whole on a format the row takes.
        for (uint32_t f : op.WholePictureOn)
            EXPECT_TRUE(op.Accepts(f)) << op.Key.toStdString();
    }
    // The rules that differ by format, as the rows declare them.
    const Operation& caustics = *FindOperation("Caustics");
    EXPECT_TRUE(caustics.Allows(PixelFormat8bppGray, false, true));
    EXPECT_FALSE(caustics.Allows(PixelFormat24bppRGB, false, true));
    EXPECT_TRUE(caustics.Allows(PixelFormat24bppRGB, true, false));
    const Operation& invert = *FindOperation("Invert");
    EXPECT_FALSE(invert.Allows(PixelFormat8bppIndexed, false, true));
    EXPECT_TRUE(invert.Allows(PixelFormat8bppIndexed, true, false));
    EXPECT_TRUE(invert.Allows(PixelFormat24bppRGB, false, true));
    EXPECT_FALSE(invert.Allows(PixelFormat1bppIndexed, true, false));
}

TEST(FilterCatalogue, EveryTableRowIsThereWithItsDialogAndTitles) {
    const QStringList preview =
        QStringLiteral(
            "BoxBlur GuassBlur SelectiveGuassBlur RadialBlur ZoomBlur MotionBlur SurfaceBlur FarBlur "
            "Unfocus Wave Ripple LookThroughGlass Polar Pinch LensDistortion Twist Tile "
            "PolarInversion Shift Kaleidoscope Emboss Relief Splash EdgeDetectEffects Wind OutLine "
            "LenFlares Nova OilPainting SoftGlow SoftenPortrait Illusion FillGrid Weave SmearIt "
            "InkSketch PencilSketch AddNoise ReduceNoise Median RemoveRedEye SharpByHistGram "
            "UnsharpMask Fragment Mosaic Cubism Crystallize Pointillize ColorHalftone BrushedMetal "
            "Wood Texture Marble Caustics Checkerboard HighPass MinFilter MaxFilter "
            "ShowMeanSquareError")
            .split(' ');
    const QStringList noPreview =
        QStringLiteral("DisPlace VariableBlur Video Cloud Plasma 2DTerrain Offset Convolute Fractal")
            .split(' ');
    for (const QString& key : preview + noPreview) {
        const Operation* op = FindOperation(key);
        ASSERT_TRUE(op) << key.toStdString();
        EXPECT_EQ(op->NoPreview, noPreview.contains(key)) << key.toStdString();
        EXPECT_TRUE(op->NoPreview || !op->Sliders.empty() || op->Dial) << key.toStdString();
    }
    // Every operation of the blur and "其他" menus runs.
    for (const char* key :
         {"AverageBlur", "BoxBlur", "GuassBlur", "SelectiveGuassBlur", "RadialBlur", "ZoomBlur", "MotionBlur",
          "SurfaceBlur", "FarBlur", "Unfocus", "VariableBlur", "HighPass", "Offset", "MaxFilter", "MinFilter",
          "ShowMeanSquareError", "Convolute"})
        EXPECT_TRUE(FindOperation(QString::fromUtf8(key))->Run) << key;
    EXPECT_EQ(FindOperation("GaussianBlur"), FindOperation("GuassBlur"));
    EXPECT_EQ(FindOperation("Displace"), FindOperation("DisPlace"));

    // Both rank filters show "最大值"; a repeat caption of "最大值" finds the
    // maximum, so repeating after the minimum's OK runs the maximum.
    const Operation* min = FindOperation("MinFilter");
    const Operation* max = FindOperation("MaxFilter");
    EXPECT_EQ(min->CaptionOfDialog(), QStringLiteral("最大值"));
    EXPECT_EQ(max->CaptionOfDialog(), QStringLiteral("最大值"));
    EXPECT_EQ(FindOperationByCaption(QStringLiteral(" 最大值 ")), max);
    EXPECT_EQ(FindOperationByCaption(QStringLiteral("最小值")), min);
    EXPECT_EQ(FindOperationByCaption(QStringLiteral("扭曲")), FindOperation("Twist"));
    EXPECT_EQ(FindOperationByCaption(QStringLiteral("高斯模糊")), FindOperation("GuassBlur"));
}

// Every row that runs: an empty selection is refused with the row's title and
// no event; formats the filters do not handle pass unchanged with one step.
TEST(FilterCatalogue, EveryRowThatRunsSurvivesEveryFormatAndSelection) {
    // A map file for the rows that read one.
    QTemporaryDir dir;
    const QString mapFile = dir.filePath("map.bmp");
    auto map = Picture(9, 6, 24, 4);
    ASSERT_TRUE(map->SavePictureToFile(mapFile, RawBmp, SaveOptions()));

    for (const Operation& op : Catalogue()) {
        if (!op.Run) continue;
        Params p = op.WithDefaults(Params());
        if (p.Has("FileName")) p.Set("FileName", mapFile);
        // The high pass announces itself under the blur's name.
        const QString announced = op.Key == "HighPass" ? RowOf("GuassBlur").Title : op.Title;
        for (int bits : {1, 4, 8, 16, 24, 32, -8}) {
            for (int selection : {0, 1, 2}) {
                auto img = bits == -8 ? Picture(23, 17, 8, 9) : vmtest::RandomImage(23, 17, bits, 9);
                const QByteArray before(reinterpret_cast<const char*>(img->Pointer()),
                                        static_cast<qsizetype>(img->BlockSize()));
                CSelection sel;
                if (selection == 1) {
                    sel.CreateNewSelection(23, 17);
                    sel.FeatherRadius = 2;
                    sel.AddEllipse(2, 3, 15, 16);
                } else if (selection == 2) {
                    SetMask(sel, 23, 17, [](int, int) { return 0; });
                }
                if (selection) img->SetSelection(&sel);
                EventLog log;
                img->AddListener(&log);
                MessageRecorder rec;
                const bool done = op.Run(*img, p);
                img->SetSelection(nullptr);
                const std::string what = op.Key.toStdString() + " bits " + std::to_string(bits) +
                                         " selection " + std::to_string(selection);
                const QByteArray after(reinterpret_cast<const char*>(img->Pointer()), before.size());
                if (selection == 2) {
                    EXPECT_FALSE(done) << what;
                    EXPECT_TRUE(log.Lines.isEmpty()) << what;
                    EXPECT_EQ(rec.LastText(), EmptySelectionMessage(op.Title)) << what;
                    EXPECT_EQ(after, before) << what;
                    continue;
                }
                EXPECT_TRUE(done) << what;
                ASSERT_GE(log.Lines.size(), 2) << what;
                EXPECT_EQ(log.Lines.first(), QStringLiteral("start 0 %1 0").arg(announced)) << what;
                EXPECT_TRUE(log.Lines.last().startsWith("end 0 " + announced)) << what;
                if (op.Family != QStringLiteral("调整") && (bits == 1 || bits == 4 || bits == 16)) {
                    EXPECT_EQ(log.Lines.size(), 2) << what;
                    EXPECT_EQ(after, before) << what;
                }
            }
        }
    }
}

TEST(FilterCatalogue, CommandLineRunsRowsByKeyOrFunctionWithTheSameResult) {
    QTemporaryDir dir;
    const QString in = dir.filePath("in.bmp");
    auto src = Picture(37, 29, 24, 12);
    ASSERT_TRUE(src->SavePictureToFile(in, RawBmp, SaveOptions()));
    // Every blur and "其他" row with its defaults: the command line and the
    // operation itself give the same bytes.
    for (const Operation& op : Catalogue()) {
        if (!op.Run || (op.Family != QStringLiteral("模糊") && op.Family != QStringLiteral("其他"))) continue;
        if (op.Key == QStringLiteral("VariableBlur")) continue; // needs a map file, run below
        auto direct = Clone(*src);
        const bool ran = op.Run(*direct, op.WithDefaults(Params()));
        const QString result = dir.filePath(op.Key + QStringLiteral(".bmp"));
        ASSERT_EQ(vmtest::Run(VELLUMARK_CLI, {"apply", in, result, op.Key}), ran ? 0 : 1)
            << op.Key.toStdString();
        if (!ran) continue;
        CImage back;
        ASSERT_TRUE(back.LoadPictureFromFile(result)) << op.Key.toStdString();
        EXPECT_TRUE(SamePixels(back, *direct)) << op.Key.toStdString();
    }
    // A map-reading row through the command line.
    const QString out = dir.filePath("var.bmp");
    EXPECT_EQ(vmtest::Run(VELLUMARK_CLI, {"apply", in, out, "VariableBlur", "FileName=" + in, "RadiusX=50"}),
              0);
}
