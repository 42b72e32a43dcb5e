// The rows of the blur family and of the menu "其他".
#include "core/MessageBox.h"
#include "core/OperationSettings.h"
#include "filters/Blur.h"
#include "filters/CatalogueRows.h"
#include "filters/OtherFilters.h"

namespace vm {

using namespace rows;

namespace {

// The centre a row runs with: the given one, else the selection's middle.
QPoint CentreOf(const CImage& image, const Params& p) {
    QPoint c = SelectionCentre(image);
    if (p.Has(QStringLiteral("CentreX"))) c.setX(p.Int(QStringLiteral("CentreX")));
    if (p.Has(QStringLiteral("CentreY"))) c.setY(p.Int(QStringLiteral("CentreY")));
    return c;
}

// The map of a filter that reads a picture file; false with a message when
// the file cannot be read.
bool LoadMap(const QString& file, CImage& map) {
    if (!file.isEmpty() && map.LoadPictureFromFile(file)) return true;
    MessageBox(QStringLiteral("无法读取文件: ") + file);
    return false;
}

bool Readable(const QString& file) {
    CImage probe;
    return !file.trimmed().isEmpty() && probe.LoadPictureFromFile(file);
}

} // namespace

void AddBlurRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("模糊");
    {
        Operation op = Row("AverageBlur", "AverageBlur", "均值", family);
        op.Run = [](CImage& img, const Params&) { return AverageBlur(img); };
        r.push_back(op);
    }
    {
        Operation op = Row("BoxBlur", "BoxBlur", "方框模糊", family);
        op.Sliders = {Rgba(S("Radius", "半径", Pixels, 1, 999, 10), 90)};
        op.Run = [](CImage& img, const Params& p) { return BoxBlur(img, p.Int("Radius")); };
        r.push_back(op);
    }
    {
        Operation op = Row("GuassBlur", "GaussianBlur", "高斯模糊", family);
        op.Sliders = {Rgba(S("Radius", "半径", Pixels, 1, 250, 1), 180)};
        op.RepeatReads = {Repeat("Radius", "BoxBlur", "", 1)};
        op.Run = [](CImage& img, const Params& p) { return GaussianBlur(img, p.Int("Radius")); };
        r.push_back(op);
    }
    {
        Operation op = Row("SelectiveGuassBlur", "SelectiveGaussianBlur", "选择性模糊", family);
        op.Sliders = {Reset(S("Radius", "半径", Pixels, 1, 10, 2), 5),
                      S("Threshold", "阈值", Levels, 0, 255, 10)};
        op.Run = [](CImage& img, const Params& p) {
            return SelectiveGaussianBlur(img, p.Int("Radius"), p.Int("Threshold"));
        };
        r.push_back(op);
    }
    {
        Operation op = Row("RadialBlur", "RadialBlur", "径向模糊", family);
        op.Sliders = {S("SampleRadius", "取样数", 1, 200, 20)};
        op.Dial = Dial(45);
        op.HasCentre = true;
        op.Run = [](CImage& img, const Params& p) {
            const QPoint c = CentreOf(img, p);
            return RadialBlur(img, p.Int("Angle"), p.Int("SampleRadius"), c.x(), c.y());
        };
        r.push_back(op);
    }
    {
        Operation op = Row("ZoomBlur", "ZoomBlur", "缩放模糊", family);
        op.Sliders = {S("Amount", "数量", 1, 200, 50), S("SampleRadius", "取样数", 1, 200, 50)};
        op.HasCentre = true;
        op.Run = [](CImage& img, const Params& p) {
            const QPoint c = CentreOf(img, p);
            return ZoomBlur(img, p.Int("Amount"), p.Int("SampleRadius"), c.x(), c.y());
        };
        r.push_back(op);
    }
    {
        Operation op = Row("MotionBlur", "MotionBlur", "运动模糊", family);
        op.Sliders = {S("Distance", "距离", 1, 999, 10)};
        op.Dial = Dial(0);
        op.Run = [](CImage& img, const Params& p) {
            return MotionBlur(img, p.Int("Angle"), p.Int("Distance"));
        };
        r.push_back(op);
    }
    {
        Operation op = Row("SurfaceBlur", "SurfaceBlur", "表面模糊", family);
        op.Sliders = {Reset(S("Radius", "半径", Pixels, 1, 10, 2), 5),
                      Reset(S("Threshold", "阈值", Levels, 2, 255, 10), 15)};
        op.Run = [](CImage& img, const Params& p) {
            return SurfaceBlur(img, p.Int("Radius"), p.Int("Threshold"));
        };
        r.push_back(op);
    }
    {
        Operation op = Row("FarBlur", "FarBlur", "远景模糊", family);
        op.Sliders = {Rgba(S("Radius", "半径", Pixels, 1, 250, 10), 180)};
        op.Run = [](CImage& img, const Params& p) { return FarBlur(img, p.Int("Radius")); };
        r.push_back(op);
    }
    {
        Operation op = Row("Unfocus", "Unfocus", "失焦模糊", family);
        op.Sliders = {S("Radius", "半径", Pixels, 1, 20, 5)};
        // OK stores the value of a slider the dialog does not show, which never
        // moves: the stored radius does not follow the one the user chose.
        op.KeptOnStore = {QStringLiteral("Radius")};
        op.Run = [](CImage& img, const Params& p) { return Unfocus(img, p.Int("Radius")); };
        r.push_back(op);
    }
    {
        Operation op = Row("VariableBlur", "VariableBlur", "变径模糊", family);
        op.NoPreview = true;
        op.Sliders = {S("RadiusX", "水平半径", Percent, 0, 1000, 100),
                      S("RadiusY", "垂直半径", Percent, 0, 1000, 100)};
        op.Checks = {Check("Stretch", "拉伸", false)};
        op.Texts = {{QStringLiteral("FileName"), QStringLiteral("文件"), QString(), Readable,
                     QStringLiteral("应为一个能读取的图像文件")}};
        op.RepeatReads = {Repeat("RadiusY", "RadiusY", "Vertical", std::nullopt)};
        op.Run = [](CImage& img, const Params& p) {
            CImage map;
            if (!LoadMap(p.Text("FileName"), map)) return false;
            return VariableBlur(img, map, p.Int("RadiusX"), p.Int("RadiusY"), p.Bool("Stretch"));
        };
        r.push_back(op);
    }
}

void AddOtherRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("其他");
    {
        Operation op = Row("HighPass", "HighPass", "高反差保留", family);
        op.Sliders = {Rgba(S("Radius", "半径", Pixels, 1, 250, 10), 180)};
        op.Run = [](CImage& img, const Params& p) { return HighPass(img, p.Int("Radius")); };
        r.push_back(op);
    }
    {
        Operation op = Row("Offset", "Offset", "位移", family);
        op.Section = QStringLiteral("OffSet");
        op.NoPreview = true;
        SliderSpec h = S("Horization", "水平", Pixels, -32767, 32767, 50);
        h.RangeByPicture = SliderSpec::WidthRange;
        SliderSpec v = S("Vertical", "垂直", Pixels, -32767, 32767, 50);
        v.RangeByPicture = SliderSpec::HeightRange;
        op.Sliders = {h, v};
        op.Choices = {Options("Edge", "未定义区域", {"保持不变", "重复边缘像素", "折回"}, 1)};
        op.Run = [](CImage& img, const Params& p) {
            return Offset(img, p.Int("Horization"), p.Int("Vertical"), p.Int("Edge"));
        };
        r.push_back(op);
    }
    // The two rank filters keep the dialog captions they have always shown:
    // both say "最大值", and the sub-captions name the opposite operations.
    {
        Operation op = Row("MaxFilter", "MaxFilters", "最大值", family);
        op.DialogNote = QStringLiteral("腐蚀");
        op.Sliders = {S("RadiusX", "水平半径", Pixels, 1, 100, 5),
                      S("RadiusY", "垂直半径", Pixels, 1, 100, 5)};
        op.Run = [](CImage& img, const Params& p) {
            return MaxFilters(img, p.Int("RadiusX"), p.Int("RadiusY"));
        };
        r.push_back(op);
    }
    {
        Operation op = Row("MinFilter", "MinFilters", "最小值", family);
        op.DialogTitle = QStringLiteral("最大值");
        op.DialogNote = QStringLiteral("膨胀");
        op.Sliders = {S("RadiusX", "水平半径", Pixels, 1, 100, 5),
                      S("RadiusY", "垂直半径", Pixels, 1, 100, 5)};
        op.Run = [](CImage& img, const Params& p) {
            return MinFilters(img, p.Int("RadiusX"), p.Int("RadiusY"));
        };
        r.push_back(op);
    }
    {
        Operation op = Row("ShowMeanSquareError", "ShowMeanSquareError", "均方差", family);
        op.Sliders = {S("Radius", "半径", Pixels, 1, 100, 5)};
        op.Run = [](CImage& img, const Params& p) { return ShowMeanSquareError(img, p.Int("Radius")); };
        r.push_back(op);
    }
    {
        Operation op = Row("Convolute", "Convolute", "自定义", family);
        op.NoPreview = true;
        // The grid starts as the 5 x 5 mean, which the divider's default of 25 fits.
        for (int i = 0; i < 25; ++i)
            op.Texts.push_back(IntText(QStringLiteral("Matrix%1").arg(i),
                                       QStringLiteral("第%1行第%2列").arg(i / 5 + 1).arg(i % 5 + 1),
                                       QStringLiteral("1"), true));
        TextSpec divider = IntText(QStringLiteral("Divider"), QStringLiteral("缩放"), QStringLiteral("25"));
        divider.Check = [](const QString& t) {
            bool ok = false;
            return t.trimmed().toInt(&ok) != 0 && ok;
        };
        divider.Expected = QStringLiteral("应为不等于 0 的整数");
        op.Texts.push_back(divider);
        op.Texts.push_back(IntText(QStringLiteral("Offset"), QStringLiteral("位移"), QStringLiteral("0")));
        op.Run = [](CImage& img, const Params& p) {
            std::array<int32_t, 25> m{};
            for (int i = 0; i < 25; ++i)
                m[static_cast<size_t>(i)] = p.Int(QStringLiteral("Matrix%1").arg(i));
            return Convolute(img, m, p.Int("Offset"), p.Int("Divider"));
        };
        r.push_back(op);
    }
}

} // namespace vm
