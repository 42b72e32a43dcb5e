// The rows of the filter families whose operations come later: distort,
// stylize, render, art, noise, sharpen, pixelate and texture. Their parameters
// are declared now, so that the dialogs, the repeat command, the menus and
// `vellumark-cli list` know them; each family's issue adds the Run.
#include "filters/CatalogueRows.h"

namespace vm {

using namespace rows;

namespace {

// Colour-only filters: the menus keep them off for grey pictures.
std::vector<uint32_t> ColourFormats() {
    return {PixelFormat24bppRGB, PixelFormat32bppARGB};
}

// The edge option of the distortions: any value but 1 clamps, 1 wraps.
ChoiceSpec EdgeOption() {
    return Options("Edge", "边缘", {"重复边缘", "折回"}, 0);
}

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

void AddDistortRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("扭曲");
    {
        Operation op = Row("Wave", "Wave", "水波", family);
        op.Sliders = {S("Amplitude", "幅度", 1, 100, 10), S("WaveLength", "波长", Pixels, 1, 50, 10)};
        op.Dial = Dial(0);
        op.Checks = {Check("Reflective", "反射", false)};
        op.HasCentre = true;
        // The repeat reads a key nobody writes: it always runs at phase 0.
        op.RepeatReads = {Repeat("Angle", "", "Phase", 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("Ripple", "Ripple", "涟漪", family);
        op.Sliders = {S("Amplitude", "幅度", 1, 200, 5), S("Period", "周期", 1, 200, 20)};
        op.Dial = Dial(0, "PhaseShift", "相移");
        op.Choices = {Options("Orientation", "方向", {"水平", "垂直"}, 0),
                      Options("WaveForm", "波形", {"锯齿", "正弦"}, 0),
                      Options("Edge", "边缘", {"折回", "重复边缘"}, 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("LookThroughGlass", "LookThroughGlass", "玻璃", family);
        op.DialogTitle = QStringLiteral("玻璃透视");
        op.Sliders = {S("SampleX", "水平取样", Pixels, 1, 200, 10),
                      S("SampleY", "垂直取样", Pixels, 1, 200, 10)};
        r.push_back(op);
    }
    {
        Operation op = Row("Polar", "Polar", "极坐标", family);
        op.Sliders = {Reset(S("CirDepth", "圆形深度", 1, 200, 10), 100)};
        op.Dial = Reset(Dial(0), 0);
        op.Checks = {Check("Inverse", "反向映射", false), Check("Polrec", "平面到极坐标", true),
                     Check("Backwards", "顶端开始映射", true)};
        op.HasCentre = true;
        op.RepeatReads = {Repeat("CirDepth", "", "", 100)};
        r.push_back(op);
    }
    {
        Operation op = Row("Pinch", "Pinch", "挤压", family);
        op.Sliders = {S("Amount", "数量", -200, 200, 45)};
        op.HasCentre = true;
        r.push_back(op);
    }
    {
        Operation op = Row("LensDistortion", "LensDistortion", "镜头形变", family);
        op.Sliders = {S("Square", "主要", -100, 100, 40), S("Quad", "边缘", -100, 100, 30),
                      S("ScaleFactor", "缩放", -100, 100, 4)};
        op.HasCentre = true;
        r.push_back(op);
    }
    {
        Operation op = Row("Twist", "Twist", "旋转扭曲", family);
        op.DialogTitle = QStringLiteral("扭曲");
        op.Sliders = {S("Amount", "数量", -200, 200, 30), S("Size", "尺寸", 1, 200, 100)};
        op.HasCentre = true;
        r.push_back(op);
    }
    {
        Operation op = Row("Tile", "Tile", "玻璃瓦片", family);
        op.DialogTitle = QStringLiteral("瓦片");
        op.Sliders = {S("SquareSize", "瓷砖大小", 1, 800, 40), S("Curvature", "曲率", -100, 100, 8)};
        op.Dial = Dial(30);
        op.RepeatReads = {Repeat("Angle", "Wave", "", 30)};
        r.push_back(op);
    }
    {
        Operation op = Row("PolarInversion", "PolarInversion", "极面倒转", family);
        op.Sliders = {S("Amount", "数量", -200, 200, 100), S("Quality", "质量", 1, 5, 2)};
        op.Choices = {EdgeOption()};
        op.HasCentre = true;
        r.push_back(op);
    }
    {
        Operation op = Row("Shift", "Shift", "滑移", family);
        op.Sliders = {S("Amount", "数量", Pixels, 1, 999, 5)};
        op.Choices = {Options("Direction", "方向", {"水平", "垂直"}, 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("DisPlace", "Displace", "置换", family);
        op.Section = QStringLiteral("Displace");
        op.NoPreview = true;
        op.Sliders = {S("Horization", "水平比例", Percent, -999, 999, 10),
                      S("Vertical", "垂直比例", Percent, -999, 999, 10)};
        op.Checks = {Check("Stretch", "伸展以适合", false), Check("Repeat", "拼贴", false)};
        op.Texts = {{QStringLiteral("FileName"), QStringLiteral("置换图"), QString(), {}, QString()}};
        r.push_back(op);
    }
    {
        Operation op = Row("Kaleidoscope", "Kaleidoscope", "万花筒", family);
        op.Sliders = {S("Sides", "边数", 2, 200, 5), S("Radius", "半径", 0, 200, 0)};
        op.Dial = Dial(45);
        op.Choices = {EdgeOption()};
        op.HasCentre = true;
        r.push_back(op);
    }
}

void AddStylizeRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("风格化");
    // The two without parameters run straight from their entries.
    r.push_back(Row("FindEdges", "FindEdges", "查找边缘", family));
    r.push_back(Row("Solarize", "Solarize", "曝光过度", family));
    {
        Operation op = Row("Emboss", "Emboss", "浮雕", family);
        op.Sliders = {S("Radius", "高度", Pixels, 1, 100, 3), S("Amount", "数量", Percent, 1, 500, 100)};
        op.Dial = Dial(135);
        r.push_back(op);
    }
    {
        Operation op = Row("Relief", "Relief", "浮凸", family);
        op.DialogTitle = QStringLiteral("浮雕");
        op.Sliders = {S("Radius", "高度", Pixels, 1, 100, 3)};
        op.Dial = Dial(135);
        r.push_back(op);
    }
    {
        Operation op = Row("Splash", "Splash", "喷溅", family);
        op.Sliders = {S("Radius", "数量", Pixels, 1, 100, 5)};
        op.Choices = {Options("SplashMode", "模式", {"正常", "变暗优先", "变亮优先", "各向异性"}, 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("EdgeDetectEffects", "EdgeDetectEffects", "边缘强化", family);
        op.Dial = Dial(45);
        r.push_back(op);
    }
    {
        Operation op = Row("Wind", "Wind", "风", family);
        op.Sliders = {S("Threshold", "阈值", 0, 50, 10), S("Strength", "力度", 0, 100, 10)};
        op.Choices = {Options("Type", "方法", {"风", "大风"}, 0),
                      Options("Direction", "方向", {"左侧", "右侧"}, 0),
                      Options("Edge", "边缘", {"头部", "尾部", "两者皆有"}, 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("OutLine", "OutLine", "轮廓", family);
        op.Sliders = {S("Thickness", "厚度", 1, 20, 3), S("Intensity", "强度", 0, 100, 50)};
        r.push_back(op);
    }
    {
        Operation op = Row("Video", "Video", "视频", family);
        op.NoPreview = true;
        op.Texts = {IntText(QStringLiteral("PatternMode"), QStringLiteral("图案"), QStringLiteral("0")),
                    IntText(QStringLiteral("Additive"), QStringLiteral("叠加"), QStringLiteral("0")),
                    IntText(QStringLiteral("Rotated"), QStringLiteral("旋转"), QStringLiteral("3"))};
        r.push_back(op);
    }
}

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

void AddArtRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("艺术");
    {
        Operation op = Row("OilPainting", "OilPainting", "油画", family);
        op.Sliders = {S("BrushSize", "刷子", 1, 20, 3), S("Smoothness", "平滑度", 0, 255, 100)};
        r.push_back(op);
    }
    {
        Operation op = Row("SoftGlow", "SoftGlow", "柔光", family);
        op.Sliders = {S("Radius", "半径", Pixels, 0, 100, 10), S("Brightness", "亮度", -100, 100, 0),
                      S("Contrast", "对比度", -100, 100, 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("SoftenPortrait", "SoftenPortrait", "柔和处理", family);
        op.Formats = ColourFormats();
        op.Sliders = {S("Radius", "柔化", Pixels, 0, 100, 5), S("Lighting", "亮度", -20, 20, 0),
                      S("Warmth", "温暖", 0, 20, 10)};
        op.RepeatReads = {Repeat("Radius", "", "Softness", std::nullopt)};
        r.push_back(op);
    }
    {
        Operation op = Row("Illusion", "Illusion", "幻影", family);
        op.Sliders = {S("Radius", "数量", Pixels, 2, 100, 10)};
        op.RepeatReads = {Repeat("Radius", "", "Division", std::nullopt)};
        r.push_back(op);
    }
    {
        Operation op = Row("SmearIt", "SmearIt", "涂污", family);
        op.Sliders = {S("Amount", "数量", 2, 2000, 100), Reset(S("Distance", "距离", 1, 200, 32), 50)};
        op.Choices = {Options("SmearType", "类型", {"十字交叉", "圆形", "矩形", "直线"}, 0)};
        op.Dial = Dial(0);
        for (int type : {1, 2}) {
            op.ChoiceRanges.push_back({QStringLiteral("SmearType"), type, QStringLiteral("Amount"), 2, 100});
            op.ChoiceRanges.push_back({QStringLiteral("SmearType"), type, QStringLiteral("Distance"), 1, 50});
        }
        op.RepeatReads = {Repeat("Distance", "", " Distance", std::nullopt)};
        r.push_back(op);
    }
    {
        Operation op = Row("InkSketch", "InkSketch", "素描", family);
        op.Sliders = {S("InkOutline", "轮廓", 0, 100, 10), S("Coloring", "色彩", 0, 100, 10)};
        op.RepeatReads = {Repeat("Coloring", "", " Coloring", std::nullopt)};
        r.push_back(op);
    }
    {
        Operation op = Row("PencilSketch", "PencilSketch", "铅笔勾画", family);
        op.Sliders = {S("PencilTipSize", "铅笔尖尺寸", 1, 20, 2), S("Range", "范围", -20, 20, 0)};
        op.RepeatReads = {Repeat("Range", "", " PencilSketch", std::nullopt)};
        r.push_back(op);
    }
}

void AddNoiseAndSharpenRows(std::vector<Operation>& r) {
    const QString noise = QStringLiteral("杂色");
    {
        Operation op = Row("AddNoise", "AddNoise", "添加噪音", noise);
        op.Sliders = {S("Amount", "数量", Percent, 1, 400, 12)};
        op.Choices = {Options("Type", "分布", {"平均分布", "高斯分布"}, 0)};
        op.Checks = {Check("Homochromy", "单色", false)};
        op.RepeatReads = {Repeat("Amount", "", "", 50)};
        r.push_back(op);
    }
    {
        Operation op = Row("ReduceNoise", "ReduceNoise", "减少噪音", noise);
        op.Sliders = {S("Radius", "半径", Pixels, 1, 50, 5), S("Strength", "强度", 1, 200, 50)};
        op.RepeatReads = {Repeat("Radius", "", "", 50)};
        r.push_back(op);
    }
    {
        Operation op = Row("Median", "Median", "中间值", noise);
        op.Sliders = {S("Radius", "半径", Pixels, 1, 50, 5), S("Percentile", "百分比", 1, 100, 50)};
        op.RepeatReads = {Repeat("Percentile", "", "", 50)};
        r.push_back(op);
    }
    {
        Operation op = Row("RemoveRedEye", "RemoveRedEye", "去除红眼", noise);
        op.Formats = ColourFormats();
        op.Sliders = {S("Tolerence", "容限", 0, 100, 5), S("NewSaturation", "饱和度", 0, 100, 10)};
        op.RepeatReads = {Repeat("NewSaturation", "", "", 50)};
        r.push_back(op);
    }
    const QString sharpen = QStringLiteral("锐化");
    r.push_back(Row("Sharpen", "Sharpen", "普通锐化", sharpen));
    r.push_back(Row("SharpenMore", "SharpenMore", "进一步锐化", sharpen));
    {
        Operation op = Row("SharpByHistGram", "SharpByHistGram", "高级锐化", sharpen);
        op.Sliders = {S("Radius", "半径", 1, 50, 5)};
        op.RepeatReads = {Repeat("Radius", "", "", 50)};
        r.push_back(op);
    }
    {
        Operation op = Row("UnsharpMask", "UnsharpMask", "USM锐化", sharpen);
        op.Sliders = {S("Amount", "数量", 1, 500, 50), Rgba(S("Radius", "半径", Pixels, 1, 250, 1), 180),
                      S("Threshold", "阈值", Levels, 0, 255, 0)};
        r.push_back(op);
    }
}

void AddPixelizeRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("像素化");
    const ChoiceSpec gridType = Options("GridType", "网格", {"矩形", "三角形", "六边形", "八边形"}, 2);
    {
        Operation op = Row("Fragment", "Fragment", "碎片", family);
        op.Sliders = {S("Fragments", "碎片数", 2, 50, 4), S("Distance", "距离", 0, 100, 8)};
        op.Dial = Dial(0);
        r.push_back(op);
    }
    {
        Operation op = Row("Mosaic", "Mosaic", "马赛克", family);
        op.Sliders = {S("CellWidth", "半径", Pixels, 2, 200, 4), S("GapX", "间隙", Pixels, 0, 100, 0)};
        op.Checks = {Check("FillMode", "用前景色填充间隙", false)};
        r.push_back(op);
    }
    {
        Operation op = Row("Cubism", "Cubism", "立体主义", family);
        op.Sliders = {S("TileSize", "方块大小", Pixels, 1, 100, 5),
                      S("TileSaturation", "方块饱和度", 0, 100, 50)};
        r.push_back(op);
    }
    {
        Operation op = Row("Crystallize", "Crystallize", "晶格化", family);
        op.Sliders = {S("CellSize", "晶格大小", Pixels, 5, 200, 32),
                      S("EdgeThickNess", "边缘", Percent, 1, 100, 10),
                      S("RandomNess", "变形", Percent, 0, 100, 0)};
        op.Dial = Dial(0);
        op.Checks = {Check("FadeEdge", "平滑边缘", true)};
        op.Choices = {gridType};
        r.push_back(op);
    }
    {
        Operation op = Row("Pointillize", "Pointillize", "点状化", family);
        op.Sliders = {S("CellSize", "晶格大小", Pixels, 5, 200, 32),
                      S("EdgeThickNess", "边缘", Percent, 1, 50, 10),
                      S("RandomNess", "模糊度", Percent, 0, 50, 10)};
        op.Dial = Dial(0);
        op.Checks = {Check("FadeEdge", "平滑边缘", false)};
        op.Choices = {gridType};
        r.push_back(op);
    }
    {
        Operation op = Row("ColorHalftone", "ColorHalftone", "彩色半调", family);
        op.Formats = ColourFormats();
        op.Sliders = {S("CyanScreenAngle", "Cyan网角", 0, 360, 108),
                      S("MagentaScreenAngle", "Magenta网角", 0, 360, 162),
                      S("YellowScreenAngle", "Yellow网角", 0, 360, 90)};
        op.Texts = {IntText(QStringLiteral("DotRadius"), QStringLiteral("半径："), QStringLiteral("8"))};
        r.push_back(op);
    }
}

void AddTextureRows(std::vector<Operation>& r) {
    const QString family = QStringLiteral("纹理");
    {
        Operation op = Row("FillGrid", "FillGrid", "网格", family);
        op.Sliders = {S("GridSize", "网格大小", Pixels, 1, 256, 20), S("Depth", "深度", 1, 200, 100)};
        op.Choices = {Options("GridType", "类型", {"3D网格", "平面网格"}, 0)};
        r.push_back(op);
    }
    {
        Operation op = Row("Weave", "Weave", "编织", family);
        op.Sliders = {S("Dist", "宽度", Pixels, 1, 100, 32), S("Gap", "间隙", Pixels, 1, 100, 16)};
        op.Checks = {Check("ShadeCrossings", "阴影交替", true), Check("RoundThreads", "光滑圆角", true)};
        r.push_back(op);
    }
    {
        Operation op = Row("BrushedMetal", "BrushedMetal", "磨光金属", family);
        op.Sliders = {S("Radius", "半径", Pixels, 1, 200, 40), S("Amount", "数量", Percent, 0, 400, 30),
                      S("Shine", "光亮", Percent, 0, 200, 100)};
        op.Checks = {Check("Homochromy", "单色", false)};
        r.push_back(op);
    }
    {
        Operation op = Row("Wood", "Wood", "木质断面", family);
        op.Sliders = {Reset(S("ScaleXY", "缩放", Percent, 1, 200, 100), 50),
                      Reset(S("Stretch", "水平拉伸", 1, 15, 3), 1), Reset(S("Rings", "环", 1, 100, 50), 10)};
        op.Dial = Dial(90);
        r.push_back(op);
    }
    {
        Operation op = Row("Texture", "Texture", "柏林纹理", family);
        op.Sliders = {S("ScaleXY", "缩放", Percent, 1, 200, 50), S("Stretch", "水平拉伸", 1, 15, 1),
                      Reset(S("Octaves", "倍频", 1, 10, 2), 10)};
        op.Dial = Dial(45);
        r.push_back(op);
    }
    {
        Operation op = Row("Marble", "Marble", "凸痕", family);
        op.Sliders = {S("ScaleXY", "比例", 1, 200, 50), S("Turbulence", "粗糙", 1, 20, 10)};
        op.Choices = {EdgeOption()};
        r.push_back(op);
    }
    {
        Operation op = Row("Caustics", "Caustics", "流云飞袖", family);
        op.Sliders = {S("ScaleXY", "缩放", 1, 200, 32), S("Amount", "数量", 0, 100, 50),
                      S("Dispersion", "离散度", 0, 100, 0)};
        // On colour pictures it renders over the whole picture only.
        op.WholePictureOn = ColourFormats();
        r.push_back(op);
    }
    {
        Operation op = Row("Checkerboard", "Checkerboard", "棋盘", family);
        op.Sliders = {Reset(S("ScaleX", "水平", Pixels, 1, 200, 40), 50),
                      Reset(S("ScaleY", "垂直", Pixels, 1, 200, 40), 50),
                      S("Fuzziness", "模糊边缘", Percent, 0, 50, 0)};
        op.Dial = Dial(0);
        op.RepeatReads = {Repeat("ScaleX", "", "", 50), Repeat("ScaleY", "", "", 50)};
        r.push_back(op);
    }
}

} // namespace

void AddPendingFilterRows(std::vector<Operation>& r) {
    AddDistortRows(r);
    AddStylizeRows(r);
    AddRenderRows(r);
    AddArtRows(r);
    AddNoiseAndSharpenRows(r);
    AddPixelizeRows(r);
    AddTextureRows(r);
}

} // namespace vm
