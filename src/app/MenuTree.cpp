#include "app/MenuTree.h"

#include <QRegularExpression>

namespace vm {

namespace {

MenuItemSpec I(const char* caption, const char* operation = "", const char* submenu = "") {
    return {QString::fromUtf8(caption), QString::fromUtf8(operation), QString::fromUtf8(submenu)};
}
MenuItemSpec Sub(const char* caption, const char* submenu) {
    return I(caption, "", submenu);
}
MenuItemSpec S() {
    return {};
}

std::vector<MenuArraySpec> BuildArrays() {
    std::vector<MenuArraySpec> a;
    // ---- 文件
    a.push_back({"File",
                 {I("打开(&O)..."), I("外部获取... "), Sub("最近打开文件(&T)", "HistoryFileList"), S(),
                  I("保存(&S)"), I("保存为(&A)..."), S(), I("打印(&P)... "), I("打印预览 "), S(), I("关闭"),
                  I("关闭全部"), I("退出(&X)")}});
    // ---- 编辑
    a.push_back({"Edit",
                 {I("取消(&U)"), I("重做(&R)"), I("渐隐(&D) "), S(), I("剪切(&T)"), I("拷贝(&C)"),
                  I("粘帖(&P)"), I("清除(&D)"), S(), I("填充(&L)..."), I("描边(&S)... "), S(),
                  Sub("清理(&P)...", "Purge"), S(), Sub("设置(&S)...", "Setting")}});
    a.push_back({"Purge", {I("剪贴板(&C)"), I("历史记录(&H)"), I("全部(&A)")}});
    a.push_back({"Setting", {I("常规"), I("界面"), I("文件处理"), I("杂项")}});
    // ---- 图像
    a.push_back(
        {"ImageS",
         {Sub("模式(&M)", "ImageMode"), S(), I("图像大小(&I)...", "ImageSize"),
          Sub("图像旋转(&G)", "RotateCanvas"), I("裁剪(&P)", "CropImage"), I("修整(&R)...", "TrimImage"), S(),
          I("复制(&D)..."), I("应用图像(&Y)... "), I("计算(&C)... "), S(), I("图像属性")}});
    a.push_back({"ImageMode",
                 {I("位图(&B)", "ChangeToBitMap"), I("灰度(&G)", "ChangeToGrayMode"),
                  I("索引颜色(&I)", "ChangeToIndexMode"), I("RGB颜色(&R)", "ChangeToRGB24Mode"),
                  I("RGBA颜色(&A)", "ChangeToRGBA32Mode"), S(), I("颜色表(&T)... ")}});
    a.push_back(
        {"RotateCanvas",
         {I("180度(&1)", "Rotate180"), I("顺时针90度(&9)", "Rotate270"), I("逆时针90度(&0)", "Rotate90"),
          I("任意角度(&A)...", "Rotate"), S(), I("水平翻转画布", "FlipVertical"),
          I("垂直翻转画布", "FlipHorizontal"), S(), I("水平左镜像", "MirrorXLeft"),
          I("水平右镜像", "MirrorXRight"), I("垂直上镜像", "MirrorYTop"), I("垂直下镜像", "MirrorYBottom")}});
    // ---- 调整
    a.push_back({"Adjust",
                 {I("自动色阶(&N)", "AutoLevel"),
                  I("自动对比度(&U)", "AutoContrast"),
                  I("自动颜色(&O)", "AutoColor"),
                  I("色阶(&L)...", "Level"),
                  I("曲线(&U)...", "Curve"),
                  I("亮度/对比度(&C)...", "BrightAndContrast"),
                  I("曝光度(&E)", "Exposure"),
                  S(),
                  I("色相/饱和度(&H)...", "AdjustHSB"),
                  I("色彩平衡(&B)...", "ColorBalance"),
                  I("黑白(&K)", "BlackAndWhite"),
                  I("通道混合器(&X)", "ChannelMixer"),
                  S(),
                  I("反相(&I)", "Invert"),
                  I("色调分离(&P)...", "Posterize"),
                  I("阈值(&T)...", "Threshold"),
                  I("渐变映射(&G)...", "GradientMap"),
                  I("可选颜色(&S)", "SelectiveColor"),
                  S(),
                  I("去色(&D)", "Desaturate"),
                  I("颜色替换(&R)... "),
                  I("色调均化(&Q)...", "Equalize")}});
    // ---- 选择: the separators put colour range at 4 and feathering at 10,
    // where the enabling rules and the accelerators find them.
    a.push_back(
        {"Selection",
         {I("全选(&A)"), I("取消选择(&D)"), I("反选(&I)"), S(), I("色彩范围(&C)", "ColorRange"), S(),
          I("选区边界(&B)...", "SelectionBorder"), I("平滑选区(&S)", "SelectionSmooth"),
          I("扩展选区(&E)...", "SelectionExpand"), I("收缩选区(&C)...", "SelectionShrink"),
          I("羽化选区(&F)", "SelectionFeather"), I("选取相似"), I("扩大选取 "), I("旋转选区(&R) "),
          I("缩放选区 "), S(), I("储存选区...", "SaveSelection"), I("加载选区(&L)...", "LoadSelection")}});
    // ---- 滤镜
    a.push_back({"Repeat", {I("上次滤镜操作")}});
    a.push_back({"Filter",
                 {Sub("模糊", "Blur"), Sub("扭曲", "Distort"), Sub("风格化", "Stylize"),
                  Sub("渲染", "Render"), Sub("艺术", "Art"), Sub("杂色", "Noise"), Sub("锐化", "Sharpen"),
                  Sub("像素化", "Pixelize"), Sub("纹理", "Texture"), Sub("其他", "other")}});
    a.push_back(
        {"Blur",
         {I("均值", "AverageBlur"), I("方框模糊...", "BoxBlur"), I("高斯模糊...", "GuassBlur"),
          I("选择性模糊...", "SelectiveGuassBlur"), I("径向模糊...", "RadialBlur"),
          I("缩放模糊...", "ZoomBlur"), I("运动模糊...", "MotionBlur"), I("表面模糊...", "SurfaceBlur"),
          I("远景模糊...", "FarBlur"), I("失焦模糊...", "Unfocus"), I("变径模糊...", "VariableBlur")}});
    a.push_back({"Distort",
                 {I("水波...", "Wave"), I("涟漪...", "Ripple"), I("玻璃...", "LookThroughGlass"),
                  I("极坐标...", "Polar"), I("挤压...", "Pinch"), I("镜头形变...", "LensDistortion"),
                  I("旋转扭曲...", "Twist"), I("玻璃瓦片...", "Tile"), I("极面倒转...", "PolarInversion"),
                  I("滑移...", "Shift"), I("置换...", "DisPlace"), I("万花筒...", "Kaleidoscope")}});
    a.push_back({"Stylize",
                 {I("浮雕...", "Emboss"), I("浮凸...", "Relief"), I("喷溅...", "Splash"),
                  I("边缘强化...", "EdgeDetectEffects"), I("风...", "Wind"), I("轮廓...", "OutLine"),
                  I("查找边缘", "FindEdges"), I("曝光过度", "Solarize"), I("视频...", "Video")}});
    a.push_back({"Render",
                 {I("分形图...", "Fractal"), I("云...", "Cloud"), I("分层云彩", "DifferentClouds"),
                  I("五彩缤纷...", "Plasma"), I("2D地形...", "2DTerrain"), S(), I("镜头光晕...", "LenFlares"),
                  I("超新星...", "Nova")}});
    a.push_back({"Art",
                 {I("油画...", "OilPainting"), I("柔光...", "SoftGlow"), I("柔和处理...", "SoftenPortrait"),
                  I("幻影...", "Illusion"), I("涂污...", "SmearIt"), I("素描...", "InkSketch"),
                  I("铅笔勾画...", "PencilSketch")}});
    a.push_back({"Noise",
                 {I("添加噪音...", "AddNoise"), I("减少噪音...", "ReduceNoise"), I("中间值...", "Median"),
                  I("去除红眼...", "RemoveRedEye")}});
    a.push_back({"Sharpen",
                 {I("普通锐化", "Sharpen"), I("进一步锐化", "SharpenMore"),
                  I("高级锐化...", "SharpByHistGram"), I("USM锐化...", "UnsharpMask")}});
    a.push_back(
        {"Pixelize",
         {I("碎片...", "Fragment"), I("马赛克...", "Mosaic"), I("立体主义...", "Cubism"),
          I("晶格化...", "Crystallize"), I("点状化...", "Pointillize"), I("彩色半调...", "ColorHalftone")}});
    a.push_back({"Texture",
                 {I("网格...", "FillGrid"), I("编织...", "Weave"), I("磨光金属...", "BrushedMetal"),
                  I("木质断面...", "Wood"), I("柏林纹理...", "Texture"), I("凸痕...", "Marble"),
                  I("流云飞袖...", "Caustics"), I("棋盘...", "Checkerboard")}});
    a.push_back(
        {"other",
         {I("高反差保留...", "HighPass"), I("位移...", "Offset"), I("最大值...", "MaxFilter"),
          I("最小值...", "MinFilter"), I("均方差...", "ShowMeanSquareError"), I("自定义...", "Convolute")}});
    // ---- 分析
    a.push_back({"Analysis",
                 {Sub("频域变换", "FrequencyTransform"), Sub("频域处理", "FrequencyDealing"),
                  Sub("边缘检测", "EdgeDetection"), Sub("二值化", "Binaryzation"),
                  Sub("二值增强", "BinaryzationEnhance"), Sub("图像分割", "ImageSegement")}});
    a.push_back({"FrequencyTransform",
                 {I("傅立叶变换", "FourierTransform"), I("离散余弦变换", "CosineTransform"),
                  I("沃尔什变换", "WalshTransform"), I("哈达玛变换", "HadamardTransform")}});
    a.push_back(
        {"FrequencyDealing",
         {I("理想低通滤波...", "IdealLowPass"), I("理想高通滤波...", "IdealHighPass"),
          I("巴特沃斯低通滤波...", "ButterworthLowPass"), I("巴特沃斯高通滤波...", "ButterworthHighPass"),
          I("高斯低通滤波...", "GaussLowPass"), I("高斯高通滤波...", "GaussHighPass")}});
    // Canny at 17 behind two separators, where the enabling rule finds it.
    a.push_back(
        {"EdgeDetection",
         {I("拉普拉斯", "EdgeLaplacian"), I("增强型拉普拉斯", "EdgeLaplacianEnhance"),
          I("高斯拉普拉斯", "EdgeGaussLaplacian"), I("蒲瑞维特", "EdgePrewitt"), I("索贝尔", "EdgeSobel"),
          I("罗伯特", "EdgeRoberts"), S(), I("水平检测", "EdgeHorizontal"), I("垂直检测", "EdgeVertical"),
          I("Difference", "EdgeDifference"), I("Homogenity", "EdgeHomogenity"), I("Kirsch", "EdgeKirsch"),
          I("Robinson", "EdgeRobinson"), I("Nevitia", "EdgeNevitia"), I("粗分δ函数", "EdgeCoarse"),
          I("细分δ函数", "EdgeDetail"), S(), I("Canny算子...", "Canny")}});
    a.push_back(
        {"Binaryzation",
         {I("自定义阈值...", "Threshold"), S(), I("P分位数法...", "BinaryzationByPTile"),
          I("最佳阈值法", "BinaryzationBestThreshold"), I("大律法", "BinaryzationByOTSU"),
          I("一维最大熵法", "BinaryzationBy1DMaxEntropy"), I("SIS法", "BinaryzationBySIS"),
          I("Swatanabe法", "BinaryzationBySwatanabe"), S(), I("Bernsen法...", "BinaryzationByBernsen"),
          I("Niblack法...", "BinaryzationByNiblack"), I("KamelZhao法...", "BinaryzationByKamelZhao"),
          I("LEVBB法...", "BinaryzationByLEVBB"), S(), I("硬聚类法", "BinaryzationByHcm")}});
    a.push_back({"BinaryzationEnhance",
                 {I("腐蚀", "Erode"), I("膨胀", "Dilate"), I("开运算", "OpenOperation"),
                  I("闭运算", "CloseOperation"), I("去除孤立点", "RemoveIsolatedPoints"),
                  I("填充孔洞", "FillHoles"), S(), I("轮廓提取", "ExtractContour"), S(),
                  I("Hilditch细化", "ThinHilditch"), I("Pavlidis细化", "ThinPavlidis"),
                  I("Rosenfeld细化", "ThinRosenfeld"), I("骨架提取", "Skeleton")}});
    a.push_back({"ImageSegement",
                 {I("K均值聚类...", "KMeansCluster"), I("模糊C均值聚类...", "FuzzyCMeansCluster"),
                  I("区域生长...", "RegionGrow")}});
    // ---- 制作
    a.push_back({"Make",
                 {I("条形码...", "BarCode"), I("渐变填充...", "Gradient"), Sub("白平衡", "WhiteBalance"),
                  I("一键去雾", "HazeRemoveal"), I("照片滤镜...", "PhotoFilter"),
                  I("图案填充...", "FillWithPattern")}});
    a.push_back({"WhiteBalance",
                 {I("自适应白平衡", "AutoNewWhiteBalance"), I("自动白平衡", "AutoWhiteBalance"),
                  I("严重白平衡错误", "AutoHighWhiteBalance")}});
    // ---- 美化
    a.push_back(
        {"Beautify",
         {Sub("磨皮", "SmoothSkin"), I("一键美白", "FastWhite"), S(), Sub("背景虚化", "VirtualBackGround"),
          I("局部彩色笔", "LocalColorize"), I("局部马赛克", "LocalMasic"), I("眼睛缩放", "ChangeEye")}});
    a.push_back({"SmoothSkin",
                 {I("高通磨皮...", "SmoothSkinByHighPass"), I("快速磨皮", "SmoothSkinByReduceNosie"),
                  I("手动磨皮", "SmoothSkinBrush")}});
    a.push_back({"VirtualBackGround", {I("手动涂抹", "VirBlurByHandle"), I("形状虚化", "VirBlurByShape")}});
    // ---- 视图
    a.push_back({"View",
                 {I("放大(&I)"), I("缩小(&O)"), I("最佳位置(&B)"), I("实际像素(&A)"), I("适合屏幕(&F)"),
                  I("填充屏幕(&L)"), I("标尺(&R)")}});
    // ---- 帮助
    a.push_back({"Help", {I("帮助 "), I("关于VelluMark(&A)..."), I("系统信息 "), I("检查更新")}});
    return a;
}

} // namespace

const std::vector<MenuArraySpec>& MenuArrays() {
    static const std::vector<MenuArraySpec> arrays = BuildArrays();
    return arrays;
}

const MenuArraySpec* FindMenuArray(const QString& array) {
    for (const MenuArraySpec& a : MenuArrays())
        if (a.Array == array) return &a;
    return nullptr;
}

const MenuItemSpec* FindMenuItem(const QString& array, int index) {
    const MenuArraySpec* a = FindMenuArray(array);
    if (!a || index < 0 || index >= static_cast<int>(a->Items.size())) return nullptr;
    return &a->Items[static_cast<size_t>(index)];
}

const std::vector<TopMenuSpec>& TopMenus() {
    static const std::vector<TopMenuSpec> menus = {
        {QStringLiteral("文件(&F)"), {QStringLiteral("File")}},
        {QStringLiteral("编辑(&E)"), {QStringLiteral("Edit")}},
        {QStringLiteral("图像(&I)"), {QStringLiteral("ImageS")}},
        {QStringLiteral("调整(&A)"), {QStringLiteral("Adjust")}},
        {QStringLiteral("选择(&S)"), {QStringLiteral("Selection")}},
        {QStringLiteral("滤镜(&T)"), {QStringLiteral("Repeat"), QStringLiteral("Filter")}},
        {QStringLiteral("分析(&N)"), {QStringLiteral("Analysis")}},
        {QStringLiteral("制作(&M)"), {QStringLiteral("Make")}},
        {QStringLiteral("美化(&B)"), {QStringLiteral("Beautify")}},
        {QStringLiteral("视图(&V)"), {QStringLiteral("View")}},
        {QStringLiteral("帮助(&H)"), {QStringLiteral("Help")}},
    };
    return menus;
}

const QStringList& FilterFamilyArrays() {
    static const QStringList families = {"Blur",  "Distort", "Stylize",  "Render",  "Art",
                                         "Noise", "Sharpen", "Pixelize", "Texture", "other"};
    return families;
}

QString CommandNameOfCaption(const QString& caption) {
    QString name = caption;
    const qsizetype tab = name.indexOf(QLatin1Char('\t'));
    if (tab >= 0) name.truncate(tab);
    static const QRegularExpression accessKey(QStringLiteral("\\(&.\\)"));
    name.remove(accessKey);
    name.remove(QLatin1Char('&'));
    name = name.trimmed();
    while (name.endsWith(QLatin1Char('.')))
        name.chop(1);
    return name.trimmed();
}

const std::vector<AcceleratorSpec>& Accelerators() {
    using K = QKeyCombination;
    const auto ctrl = Qt::ControlModifier, shift = Qt::ShiftModifier, alt = Qt::AltModifier;
    // The Adjust targets from 1505 on are one below the entries whose captions
    // carry the keys, and 7, 12 and 18 are separators: those keys do nothing,
    // as they always have.
    static const std::vector<AcceleratorSpec> table = {
        {K(ctrl, Qt::Key_N), 1000, QString(), 0},
        {K(ctrl, Qt::Key_O), 1001, "File", 0},
        {K(ctrl, Qt::Key_S), 1002, "File", 4},
        {K(ctrl | shift, Qt::Key_S), 1003, "File", 5},
        {K(ctrl, Qt::Key_W), 1004, "File", 10},
        {K(ctrl | alt, Qt::Key_W), 1005, "File", 11},
        {K(ctrl, Qt::Key_P), 1006, "File", 7},
        {K(ctrl, Qt::Key_Q), 1007, "File", 12},
        {K(ctrl, Qt::Key_Z), 1200, "Edit", 0},
        {K(ctrl, Qt::Key_R), 1201, "Edit", 1},
        {K(ctrl, Qt::Key_X), 1202, "Edit", 4},
        {K(ctrl, Qt::Key_C), 1203, "Edit", 5},
        {K(ctrl | shift, Qt::Key_C), 1204, QString(), 0},
        {K(ctrl, Qt::Key_V), 1205, "Edit", 6},
        {K(ctrl | shift, Qt::Key_V), 1206, QString(), 0},
        {K(ctrl, Qt::Key_F5), 1207, "Edit", 9},
        {K(ctrl | alt, Qt::Key_I), 1400, "ImageS", 2},
        {K(ctrl | alt, Qt::Key_C), 1401, QString(), 0},
        {K(ctrl | shift, Qt::Key_L), 1500, "Adjust", 0},
        {K(ctrl | alt | shift, Qt::Key_L), 1501, "Adjust", 1},
        {K(ctrl | shift, Qt::Key_B), 1502, "Adjust", 2},
        {K(ctrl, Qt::Key_L), 1503, "Adjust", 3},
        {K(ctrl, Qt::Key_M), 1504, "Adjust", 4},
        {K(ctrl, Qt::Key_U), 1505, "Adjust", 7},
        {K(ctrl, Qt::Key_B), 1506, "Adjust", 8},
        {K(ctrl | alt | shift, Qt::Key_B), 1507, "Adjust", 9},
        {K(ctrl, Qt::Key_I), 1508, "Adjust", 12},
        {K(ctrl | shift, Qt::Key_U), 1509, "Adjust", 18},
        {K(ctrl, Qt::Key_A), 1800, "Selection", 0},
        {K(ctrl, Qt::Key_D), 1801, "Selection", 1},
        {K(ctrl | shift, Qt::Key_I), 1802, "Selection", 2},
        {K(shift, Qt::Key_F6), 1803, "Selection", 10},
        {K(ctrl, Qt::Key_H), 1804, "AntVisible", 0},
        {K(ctrl, Qt::Key_F), 1900, "Repeat", 0},
    };
    return table;
}

const std::vector<CaptionKeySpec>& CaptionKeys() {
    // The first group shows the keys the menus carry as their own shortcuts;
    // the second the texts the window writes in at load, for the key
    // combinations a menu shortcut cannot show.
    static const std::vector<CaptionKeySpec> keys = {
        {"File", 0, "Ctrl+O"},
        {"File", 4, "Ctrl+S"},
        {"File", 7, "Ctrl+P"},
        {"File", 10, "Ctrl+W"},
        {"File", 12, "Ctrl+Q"},
        {"Edit", 0, "Ctrl+Z"},
        {"Edit", 1, "Ctrl+R"},
        {"Edit", 4, "Ctrl+X"},
        {"Edit", 5, "Ctrl+C"},
        {"Edit", 6, "Ctrl+V"},
        {"Edit", 9, "Ctrl+F5"},
        {"Adjust", 3, "Ctrl+L"},
        {"Adjust", 4, "Ctrl+M"},
        {"Adjust", 8, "Ctrl+U"},
        {"Adjust", 9, "Ctrl+B"},
        {"Adjust", 13, "Ctrl+I"},
        {"Selection", 0, "Ctrl+A"},
        {"Selection", 1, "Ctrl+D"},
        {"Selection", 10, "Shift+F6"},
        {"Repeat", 0, "Ctrl+F"},

        {"File", 5, "Shift+Ctrl+S"},
        {"File", 11, "Alt+Ctrl+W"},
        {"ImageS", 2, "Alt+Ctrl+I"},
        {"Adjust", 0, "Shift+Ctrl+L"},
        {"Adjust", 1, "ALT+Shift+Ctrl+L"},
        {"Adjust", 2, "Shift+Ctrl+B"},
        {"Adjust", 10, "Alt+Shift+Ctrl+B"},
        {"Adjust", 19, "Shift+Ctrl+U"},
        {"Selection", 2, "Shift+Ctrl+I"},
    };
    return keys;
}

} // namespace vm
