// The adjustment rows of the operation catalogue.
#include "adjust/Curves.h"
#include "adjust/PointOps.h"
#include "core/Catalogue.h"

namespace vm {

void AddAdjustRows(std::vector<Operation>& rows) {
    const QString family = QStringLiteral("调整");
    using namespace FormatSet;
    // The tone commands take indexed pictures by their palette, which is the
    // whole picture's; the colour commands need colour pixels.
    const std::vector<uint32_t> tone = Join(Indexed(), Editable());
    const std::vector<uint32_t> hue = Join(Indexed(), Colour());
    // An adjustment's key is also its function's name.
    auto row = [&](const char* key, const char* title, const std::vector<uint32_t>& formats) {
        Operation op;
        op.Key = op.Function = QString::fromUtf8(key);
        op.Title = QString::fromUtf8(title);
        op.Family = family;
        op.Formats = formats;
        for (uint32_t f : Indexed())
            if (op.Accepts(f)) op.WholePictureOn.push_back(f);
        return op;
    };
    // Those still to come: their titles and enabling now, their Run with them.
    rows.push_back(row("AutoLevel", "自动色阶", tone));
    rows.push_back(row("AutoContrast", "自动对比度", tone));
    rows.push_back(row("AutoColor", "自动颜色", tone));
    rows.push_back(row("Level", "色阶", tone));
    rows.push_back(row("BrightAndContrast", "亮度/对比度", tone));
    rows.push_back(row("Exposure", "曝光度", Editable()));
    rows.push_back(row("AdjustHSB", "色相/饱和度", hue));
    rows.push_back(row("ColorBalance", "色彩平衡", Colour()));
    rows.push_back(row("BlackAndWhite", "黑白", Colour()));
    rows.push_back(row("ChannelMixer", "通道混合器", Colour()));
    rows.push_back(row("GradientMap", "渐变映射", Colour()));
    rows.push_back(row("SelectiveColor", "可选颜色", Colour()));
    rows.push_back(row("Equalize", "色调均化", tone));
    {
        Operation op = row("Invert", "反相", tone);
        op.Run = [](CImage& img, const Params&) { return Invert(img); };
        rows.push_back(op);
    }
    {
        Operation op = row("Posterize", "色调分离", tone);
        op.Sliders = {Slider(QStringLiteral("Levels"), QStringLiteral("色阶(&L):"), QString(), 2, 255, 4)};
        op.Run = [](CImage& img, const Params& p) { return Posterize(img, p.Int(QStringLiteral("Levels"))); };
        rows.push_back(op);
    }
    {
        Operation op = row("Threshold", "阈值", tone);
        op.Sliders = {
            Slider(QStringLiteral("Level"), QStringLiteral("阈值色阶(&T):"), QString(), 0, 255, 128)};
        op.Run = [](CImage& img, const Params& p) { return Threshold(img, p.Int(QStringLiteral("Level"))); };
        rows.push_back(op);
    }
    {
        Operation op = row("Desaturate", "去色", hue);
        op.Run = [](CImage& img, const Params&) { return Desaturate(img); };
        rows.push_back(op);
    }
    {
        Operation op = row("Curve", "曲线", tone);
        const QString identity = QStringLiteral("0,0;255,255");
        const QString expected = QStringLiteral("应为“x,y;x,y;...”形式的点列");
        // Points as "x,y;x,y;...": the composite curve, then one per channel,
        // the channel's curve applied first and the composite second.
        auto points = [](const QString& text) {
            QList<CurvePoint> p;
            return ParseCurvePoints(text, p);
        };
        op.Texts = {{QStringLiteral("Points"), QStringLiteral("RGB"), identity, points, expected},
                    {QStringLiteral("Red"), QStringLiteral("红"), identity, points, expected},
                    {QStringLiteral("Green"), QStringLiteral("绿"), identity, points, expected},
                    {QStringLiteral("Blue"), QStringLiteral("蓝"), identity, points, expected}};
        op.Run = [](CImage& img, const Params& p) {
            QList<CurvePoint> points[4];
            const char* keys[4] = {"Points", "Red", "Green", "Blue"};
            for (int i = 0; i < 4; ++i)
                if (!ParseCurvePoints(p.Text(QLatin1String(keys[i])), points[i])) return false;
            const auto composite = TableFromPoints(points[0]);
            ToneTable tables[3];
            for (int c = 0; c < 3; ++c) {
                const auto channel = TableFromPoints(points[c + 1]);
                for (int i = 0; i < 256; ++i)
                    tables[c][i] = static_cast<uint8_t>(composite[channel[i] & 255]);
            }
            return Curve(img, tables[0], tables[1], tables[2]);
        };
        rows.push_back(op);
    }
}

} // namespace vm
