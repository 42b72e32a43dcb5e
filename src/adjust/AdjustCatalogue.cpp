// The adjustment rows of the operation catalogue.
#include "adjust/Curves.h"
#include "adjust/PointOps.h"
#include "core/Catalogue.h"

namespace vm {

void AddAdjustRows(std::vector<Operation>& rows) {
    const QString family = QStringLiteral("调整");
    // An adjustment's key is also its function's name.
    auto row = [&family](const QString& key, const QString& title) {
        Operation op;
        op.Key = op.Function = key;
        op.Title = title;
        op.Family = family;
        return op;
    };
    {
        Operation op = row(QStringLiteral("Invert"), QStringLiteral("反相"));
        op.Run = [](CImage& img, const Params&) { return Invert(img); };
        rows.push_back(op);
    }
    {
        Operation op = row(QStringLiteral("Posterize"), QStringLiteral("色调分离"));
        op.Sliders = {Slider(QStringLiteral("Levels"), QStringLiteral("色阶(&L):"), QString(), 2, 255, 4)};
        op.Run = [](CImage& img, const Params& p) { return Posterize(img, p.Int(QStringLiteral("Levels"))); };
        rows.push_back(op);
    }
    {
        Operation op = row(QStringLiteral("Threshold"), QStringLiteral("阈值"));
        op.Sliders = {Slider(QStringLiteral("Level"), QStringLiteral("阈值色阶(&T):"), QString(), 0, 255, 128)};
        op.Run = [](CImage& img, const Params& p) { return Threshold(img, p.Int(QStringLiteral("Level"))); };
        rows.push_back(op);
    }
    {
        Operation op = row(QStringLiteral("Desaturate"), QStringLiteral("去色"));
        op.Run = [](CImage& img, const Params&) { return Desaturate(img); };
        rows.push_back(op);
    }
    {
        Operation op = row(QStringLiteral("Curve"), QStringLiteral("曲线"));
        const QString identity = QStringLiteral("0,0;255,255");
        // Points as "x,y;x,y;...": the composite curve, then one per channel,
        // the channel's curve applied first and the composite second.
        auto points = [](const QString& text) {
            QList<CurvePoint> p;
            return ParseCurvePoints(text, p);
        };
        op.Texts = {{QStringLiteral("Points"), QStringLiteral("RGB"), identity, points},
                    {QStringLiteral("Red"), QStringLiteral("红"), identity, points},
                    {QStringLiteral("Green"), QStringLiteral("绿"), identity, points},
                    {QStringLiteral("Blue"), QStringLiteral("蓝"), identity, points}};
        op.Run = [](CImage& img, const Params& p) {
            QList<CurvePoint> points[4];
            const char* keys[4] = {"Points", "Red", "Green", "Blue"};
            for (int i = 0; i < 4; ++i)
                if (!ParseCurvePoints(p.Text(QLatin1String(keys[i])), points[i])) return false;
            const auto composite = TableFromPoints(points[0]);
            ToneTable tables[3];
            for (int c = 0; c < 3; ++c) {
                const auto channel = TableFromPoints(points[c + 1]);
                for (int i = 0; i < 256; ++i) tables[c][i] = static_cast<uint8_t>(composite[channel[i] & 255]);
            }
            return Curve(img, tables[0], tables[1], tables[2]);
        };
        rows.push_back(op);
    }
}

} // namespace vm
