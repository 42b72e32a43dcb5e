// The rows of the 渲染 (render) filters. Their parameters are declared ahead of the
// operations, so that the dialogs, the repeat command, the menus and
// `vellumark-cli list` know them; the family's Run comes with its kernels.
#include "filters/CatalogueRows.h"

namespace vm {

using namespace rows;

namespace {

// The blend list of the render panels, in the option bar's order.
ChoiceSpec BlendOption() {
    return Options("BlendMode", "混合模式",
                   {"溶解",   "变暗",     "正片叠底", "颜色加深", "线性加深", "深色", "变亮",
                    "滤色",   "颜色减淡", "线性减淡", "浅色",     "叠加",     "柔光", "亮光",
                    "线性光", "点光",     "实色混合", "差值",     "排除",     "减去", "划分",
                    "色相",   "饱和度",   "颜色",     "明度",     "纹理"},
                   0);
}

// The stored seed of the render panels: "CmdSeed" draws one in 0..255.
TextSpec SeedText() {
    return IntText(QStringLiteral("Seed"), QStringLiteral("种子"), QStringLiteral("0"));
}

} // namespace

void AddRenderRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("渲染");
    r.push_back(Row("DifferentClouds", "DifferentClouds", "分层云彩", family));
    {
        Operation op = Row("Fractal", "Fractal", "分形图", family);
        op.DialogTitle = QStringLiteral("分形");
        op.NoPreview = true;
        // The start view is ours: the whole of the standard set on a square.
        op.Texts = {RealText("StartR", "起始实部", "-2.5"), RealText("StartI", "起始虚部", "-1.75"),
                    RealText("Radius", "半径", "1.75")};
        op.Choices = {Options("Type", "类型",
                              {"标准Mandelbrot集合", "扩展Mandelbrot集合(3次方)", "扩展Mandelbrot集合(4次方)",
                               "Julia集合", "标准Spider集合"},
                              0)};
        r.push_back(op);
    }
    {
        Operation op = Row("Cloud", "Clouds", "云", family);
        op.NoPreview = true;
        op.Sliders = {S("ScaleFactor", "缩放", 2, 1000, 250), S("Power", "强度", 0, 100, 50),
                      S("Opacity", "不透明度", Percent, 0, 100, 100)};
        op.Choices = {BlendOption()};
        op.Texts = {SeedText()};
        op.RepeatReads = {Repeat("Power", "", "", 250)};
        r.push_back(op);
    }
    {
        Operation op = Row("Plasma", "Plasma", "五彩缤纷", family);
        op.NoPreview = true;
        op.Sliders = {S("Turbulence", "弥散度", 1, 500, 200), S("Opacity", "不透明度", Percent, 0, 100, 100)};
        op.Choices = {BlendOption()};
        op.Texts = {SeedText()};
        r.push_back(op);
    }
    {
        Operation op = Row("2DTerrain", "Generator2DTerrain", "2D地形", family);
        op.NoPreview = true;
        op.Sliders = {S("Slope", "坡度", 1, 25, 16), S("Opacity", "不透明度", Percent, 0, 100, 100)};
        op.Checks = {Check("UseRealColor", "真实色彩", false)};
        op.Choices = {BlendOption()};
        op.Texts = {SeedText()};
        r.push_back(op);
    }
    {
        Operation op = Row("LenFlares", "LenFlares", "镜头光晕", family);
        op.Formats = ColourFormats();
        op.Sliders = {S("ScaleXY", "比例", 10, 200, 100)};
        op.HasCentre = true;
        r.push_back(op);
    }
    {
        Operation op = Row("Nova", "Nova", "超新星", family);
        op.Formats = ColourFormats();
        // The dialog's default hue of 0 lies below the slider, which shows 1;
        // the repeat reads an unset hue as the 0 itself.
        op.Sliders = {S("Radius", "半径", 1, 100, 20), S("SpokeAmount", "幅条", 1, 1024, 100),
                      Reset(S("RandomHue", "随机色调", 1, 360, 1), 1)};
        op.RepeatReads = {Repeat("RandomHue", "", "", 0)};
        op.HasCentre = true;
        r.push_back(op);
    }
}

} // namespace vm
