#include "app/MenuTree.h"

#include "core/Catalogue.h"

#include <QRegularExpression>

namespace vm {

namespace {

bool IsEditable(uint32_t f) {
    return f == PixelFormat24bppRGB || f == PixelFormat32bppARGB || f == PixelFormat8bppGray;
}
bool IsColour(uint32_t f) {
    return f == PixelFormat24bppRGB || f == PixelFormat32bppARGB;
}
bool IsIndexed(uint32_t f) {
    return f == PixelFormat4bppIndexed || f == PixelFormat8bppIndexed;
}

// ---- the named rules of the entries that are no catalogue rows (or are more)
bool Always(const MenuState&) {
    return true;
}
bool SaveNeeded(const MenuState& s) {
    return s.Document && s.SaveNeeded;
}
bool Editable(const MenuState& s) {
    return s.Document && IsEditable(s.Format);
}
bool EditableOnCanvas(const MenuState& s) {
    return Editable(s) && s.SelectionOnCanvas;
}
bool EditablePaste(const MenuState& s) {
    return Editable(s) && s.Clipboard;
}
bool CanUndo(const MenuState& s) {
    return s.Document && s.Undo;
}
bool CanRedo(const MenuState& s) {
    return s.Document && s.Redo;
}
bool HasHistory(const MenuState& s) {
    return s.Undo || s.Redo;
}
bool HasClipboard(const MenuState& s) {
    return s.Clipboard;
}
bool Purgeable(const MenuState& s) {
    return s.Undo || s.Redo || s.Clipboard;
}
bool HasPalette(const MenuState& s) {
    return s.Document && IsIndexed(s.Format);
}
bool MadeSelection(const MenuState& s) {
    return s.Document && !s.WholeSelected;
}
// The tone commands: indexed pictures by the whole palette, grey and colour.
bool ToneFormats(const MenuState& s) {
    return s.Document && (IsEditable(s.Format) || (IsIndexed(s.Format) && s.WholeSelected));
}
bool GreyOnly(const MenuState& s) {
    return s.Document && s.Format == PixelFormat8bppGray;
}
bool EditableWholeOnGrey(const MenuState& s) {
    return Editable(s) && (s.Format != PixelFormat8bppGray || s.WholeSelected);
}
bool EditableWhole(const MenuState& s) {
    return Editable(s) && s.WholeSelected;
}
bool ColourWhole(const MenuState& s) {
    return s.Document && IsColour(s.Format) && s.WholeSelected;
}
bool RepeatAllowed(const MenuState& s) {
    return s.Document && s.RepeatAllowed;
}

// ---- entries
// A catalogue entry: its key, its access key and whether it has dots.
MenuItemSpec Op(const char* key, char access = 0, bool dots = false, EntryRule rule = nullptr) {
    MenuItemSpec m;
    m.Key = QString::fromLatin1(key);
    if (access) m.AccessKey = QLatin1Char(access);
    m.Dots = dots;
    m.Rule = rule;
    return m;
}
MenuItemSpec OpDots(const char* key, char access = 0) {
    return Op(key, access, true);
}
// One of the window's own commands, or (without a key) an entry without one.
MenuItemSpec Cmd(const char* caption, const char* key, EntryRule rule = nullptr) {
    MenuItemSpec m;
    m.Caption = QString::fromUtf8(caption);
    m.Key = QString::fromLatin1(key);
    m.Rule = rule;
    return m;
}
MenuItemSpec Blank(const char* caption, EntryRule rule = nullptr) {
    return Cmd(caption, "", rule);
}
MenuItemSpec Sub(const char* caption, const char* submenu, EntryRule rule = nullptr) {
    MenuItemSpec m;
    m.Caption = QString::fromUtf8(caption);
    m.Submenu = QString::fromLatin1(submenu);
    m.Rule = rule;
    return m;
}
MenuItemSpec S() {
    return {};
}

std::vector<MenuArraySpec> BuildArrays() {
    std::vector<MenuArraySpec> a;
    // ---- 文件
    a.push_back({"File",
                 {Cmd("打开(&O)...", "Open", Always), Blank("外部获取... ", Always),
                  Sub("最近打开文件(&T)", "HistoryFileList"), S(), Cmd("保存(&S)", "Save", SaveNeeded),
                  Cmd("保存为(&A)...", "SaveAs"), S(), Blank("打印(&P)... "), Blank("打印预览 "), S(),
                  Cmd("关闭", "Close"), Cmd("关闭全部", "CloseAll"), Cmd("退出(&X)", "Exit", Always)}});
    // ---- 编辑
    a.push_back(
        {"Edit",
         {Cmd("取消(&U)", "Undo", CanUndo), Cmd("重做(&R)", "Redo", CanRedo), Blank("渐隐(&D) ", Editable),
          S(), Cmd("剪切(&T)", "Cut", EditableOnCanvas), Cmd("拷贝(&C)", "Copy", EditableOnCanvas),
          Cmd("粘帖(&P)", "Paste", EditablePaste), Op("Clear", 'D', false, Editable), S(),
          Op("Fill", 'L', true, Editable), Blank("描边(&S)... ", EditableOnCanvas), S(),
          Sub("清理(&P)...", "Purge", Purgeable), S(), Sub("设置(&S)...", "Setting", Editable)}});
    a.push_back({"Purge",
                 {Cmd("剪贴板(&C)", "PurgeClipboard", HasClipboard),
                  Cmd("历史记录(&H)", "PurgeHistory", HasHistory), Cmd("全部(&A)", "PurgeAll", Purgeable)}});
    a.push_back({"Setting",
                 {Cmd("常规", "SettingGeneral", Editable), Cmd("界面", "SettingInterface", Editable),
                  Cmd("文件处理", "SettingFiles", Editable), Cmd("杂项", "SettingOther", Editable)}});
    // ---- 图像
    a.push_back(
        {"ImageS",
         {Sub("模式(&M)", "ImageMode"), S(), OpDots("ImageSize", 'I'), Sub("图像旋转(&G)", "RotateCanvas"),
          Op("CropImage", 'P'), OpDots("TrimImage", 'R'), S(), Cmd("复制(&D)...", "Duplicate", Editable),
          Blank("应用图像(&Y)... "), Blank("计算(&C)... "), S(), Cmd("图像属性", "Properties")}});
    a.push_back({"ImageMode",
                 {Op("ChangeToBitMap", 'B'), Op("ChangeToGrayMode", 'G'), Op("ChangeToIndexMode", 'I'),
                  Op("ChangeToRGB24Mode", 'R'), Op("ChangeToRGBA32Mode", 'A'), S(),
                  Blank("颜色表(&T)... ", HasPalette)}});
    a.push_back({"RotateCanvas",
                 {Op("Rotate180", '1'), Op("Rotate270", '9'), Op("Rotate90", '0'), OpDots("Rotate", 'A'), S(),
                  Op("FlipVertical"), Op("FlipHorizontal"), S(), Op("MirrorXLeft"), Op("MirrorXRight"),
                  Op("MirrorYTop"), Op("MirrorYBottom")}});
    // ---- 调整
    a.push_back({"Adjust",
                 {Op("AutoLevel", 'N'),
                  Op("AutoContrast", 'U'),
                  Op("AutoColor", 'O'),
                  OpDots("Level", 'L'),
                  OpDots("Curve", 'U'),
                  OpDots("BrightAndContrast", 'C'),
                  Op("Exposure", 'E'),
                  S(),
                  OpDots("AdjustHSB", 'H'),
                  OpDots("ColorBalance", 'B'),
                  Op("BlackAndWhite", 'K'),
                  Op("ChannelMixer", 'X'),
                  S(),
                  Op("Invert", 'I'),
                  OpDots("Posterize", 'P'),
                  OpDots("Threshold", 'T'),
                  OpDots("GradientMap", 'G'),
                  Op("SelectiveColor", 'S'),
                  S(),
                  Op("Desaturate", 'D'),
                  Blank("颜色替换(&R)... ", ToneFormats),
                  OpDots("Equalize", 'Q')}});
    // ---- 选择: the separators put colour range at 4 and feathering at 10,
    // where the enabling rules and the accelerators find them.
    a.push_back(
        {"Selection",
         {Op("SelectAll", 'A'), Op("CancelSelect", 'D'), Op("InvertSelect", 'I'), S(), Op("ColorRange", 'C'),
          S(), OpDots("SelectionBorder", 'B'), Op("SelectionSmooth", 'S'), OpDots("SelectionExpand", 'E'),
          OpDots("SelectionShrink", 'C'), Op("SelectionFeather", 'F'), Op("SelectSimilar"),
          Blank("扩大选取 ", MadeSelection), Blank("旋转选区(&R) ", MadeSelection),
          Blank("缩放选区 ", MadeSelection), S(), OpDots("SaveSelection"), OpDots("LoadSelection", 'L')}});
    // ---- 滤镜
    a.push_back({"Repeat", {Cmd("上次滤镜操作", "RepeatFilter", RepeatAllowed)}});
    a.push_back(
        {"Filter",
         {Sub("模糊", "Blur", Editable), Sub("扭曲", "Distort", Editable), Sub("风格化", "Stylize", Editable),
          Sub("渲染", "Render", Editable), Sub("艺术", "Art", Editable), Sub("杂色", "Noise", Editable),
          Sub("锐化", "Sharpen", Editable), Sub("像素化", "Pixelize", Editable),
          Sub("纹理", "Texture", Editable), Sub("其他", "other", Editable)}});
    a.push_back({"Blur",
                 {Op("AverageBlur"), OpDots("BoxBlur"), OpDots("GuassBlur"), OpDots("SelectiveGuassBlur"),
                  OpDots("RadialBlur"), OpDots("ZoomBlur"), OpDots("MotionBlur"), OpDots("SurfaceBlur"),
                  OpDots("FarBlur"), OpDots("Unfocus"), OpDots("VariableBlur")}});
    a.push_back({"Distort",
                 {OpDots("Wave"), OpDots("Ripple"), OpDots("LookThroughGlass"), OpDots("Polar"),
                  OpDots("Pinch"), OpDots("LensDistortion"), OpDots("Twist"), OpDots("Tile"),
                  OpDots("PolarInversion"), OpDots("Shift"), OpDots("DisPlace"), OpDots("Kaleidoscope")}});
    a.push_back({"Stylize",
                 {OpDots("Emboss"), OpDots("Relief"), OpDots("Splash"), OpDots("EdgeDetectEffects"),
                  OpDots("Wind"), OpDots("OutLine"), Op("FindEdges"), Op("Solarize"), OpDots("Video")}});
    a.push_back({"Render",
                 {OpDots("Fractal"), OpDots("Cloud"), Op("DifferentClouds"), OpDots("Plasma"),
                  OpDots("2DTerrain"), S(), OpDots("LenFlares"), OpDots("Nova")}});
    a.push_back({"Art",
                 {OpDots("OilPainting"), OpDots("SoftGlow"), OpDots("SoftenPortrait"), OpDots("Illusion"),
                  OpDots("SmearIt"), OpDots("InkSketch"), OpDots("PencilSketch")}});
    a.push_back(
        {"Noise", {OpDots("AddNoise"), OpDots("ReduceNoise"), OpDots("Median"), OpDots("RemoveRedEye")}});
    a.push_back(
        {"Sharpen", {Op("Sharpen"), Op("SharpenMore"), OpDots("SharpByHistGram"), OpDots("UnsharpMask")}});
    a.push_back({"Pixelize",
                 {OpDots("Fragment"), OpDots("Mosaic"), OpDots("Cubism"), OpDots("Crystallize"),
                  OpDots("Pointillize"), OpDots("ColorHalftone")}});
    a.push_back({"Texture",
                 {OpDots("FillGrid"), OpDots("Weave"), OpDots("BrushedMetal"), OpDots("Wood"),
                  OpDots("Texture"), OpDots("Marble"), OpDots("Caustics"), OpDots("Checkerboard")}});
    a.push_back({"other",
                 {OpDots("HighPass"), OpDots("Offset"), OpDots("MaxFilter"), OpDots("MinFilter"),
                  OpDots("ShowMeanSquareError"), OpDots("Convolute")}});
    // ---- 分析: binarisation and its enhancement are for grey pictures; some
    // submenus need the whole picture.
    a.push_back(
        {"Analysis",
         {Sub("频域变换", "FrequencyTransform", EditableWholeOnGrey),
          Sub("频域处理", "FrequencyDealing", EditableWhole), Sub("边缘检测", "EdgeDetection", Editable),
          Sub("二值化", "Binaryzation", GreyOnly), Sub("二值增强", "BinaryzationEnhance", GreyOnly),
          Sub("图像分割", "ImageSegement", EditableWholeOnGrey)}});
    a.push_back(
        {"FrequencyTransform",
         {Op("FourierTransform"), Op("CosineTransform"), Op("WalshTransform"), Op("HadamardTransform")}});
    a.push_back({"FrequencyDealing",
                 {OpDots("IdealLowPass"), OpDots("IdealHighPass"), OpDots("ButterworthLowPass"),
                  OpDots("ButterworthHighPass"), OpDots("GaussLowPass"), OpDots("GaussHighPass")}});
    // Canny at 17 behind two separators, where the enabling rule finds it.
    a.push_back(
        {"EdgeDetection",
         {Op("EdgeLaplacian"), Op("EdgeLaplacianEnhance"), Op("EdgeGaussLaplacian"), Op("EdgePrewitt"),
          Op("EdgeSobel"), Op("EdgeRoberts"), S(), Op("EdgeHorizontal"), Op("EdgeVertical"),
          Op("EdgeDifference"), Op("EdgeHomogenity"), Op("EdgeKirsch"), Op("EdgeRobinson"), Op("EdgeNevitia"),
          Op("EdgeCoarse"), Op("EdgeDetail"), S(), OpDots("Canny")}});
    // The custom threshold is the adjustment's threshold under a caption of
    // its own, and only where the analysis menu is on.
    MenuItemSpec customThreshold = Cmd("自定义阈值...", "Threshold", Editable);
    a.push_back({"Binaryzation",
                 {customThreshold, S(), OpDots("BinaryzationByPTile"), Op("BinaryzationBestThreshold"),
                  Op("BinaryzationByOTSU"), Op("BinaryzationBy1DMaxEntropy"), Op("BinaryzationBySIS"),
                  Op("BinaryzationBySwatanabe"), S(), OpDots("BinaryzationByBernsen"),
                  OpDots("BinaryzationByNiblack"), OpDots("BinaryzationByKamelZhao"),
                  OpDots("BinaryzationByLEVBB"), S(), Op("BinaryzationByHcm")}});
    a.push_back({"BinaryzationEnhance",
                 {Op("Erode"), Op("Dilate"), Op("OpenOperation"), Op("CloseOperation"),
                  Op("RemoveIsolatedPoints"), Op("FillHoles"), S(), Op("ExtractContour"), S(),
                  Op("ThinHilditch"), Op("ThinPavlidis"), Op("ThinRosenfeld"), Op("Skeleton")}});
    a.push_back(
        {"ImageSegement", {OpDots("KMeansCluster"), OpDots("FuzzyCMeansCluster"), OpDots("RegionGrow")}});
    // ---- 制作
    a.push_back({"Make",
                 {OpDots("BarCode"), OpDots("Gradient"), Sub("白平衡", "WhiteBalance", ColourWhole),
                  Op("HazeRemoveal"), OpDots("PhotoFilter"), OpDots("FillWithPattern")}});
    a.push_back(
        {"WhiteBalance", {Op("AutoNewWhiteBalance"), Op("AutoWhiteBalance"), Op("AutoHighWhiteBalance")}});
    // ---- 美化
    a.push_back({"Beautify",
                 {Sub("磨皮", "SmoothSkin", ColourWhole), Op("FastWhite"), S(),
                  Sub("背景虚化", "VirtualBackGround", ColourWhole), Op("LocalColorize"), Op("LocalMasic"),
                  Op("ChangeEye")}});
    a.push_back({"SmoothSkin",
                 {OpDots("SmoothSkinByHighPass"), Op("SmoothSkinByReduceNosie"), Op("SmoothSkinBrush")}});
    a.push_back({"VirtualBackGround", {Op("VirBlurByHandle"), Op("VirBlurByShape")}});
    // ---- 视图
    a.push_back({"View",
                 {Cmd("放大(&I)", "ZoomIn"), Cmd("缩小(&O)", "ZoomOut"), Cmd("最佳位置(&B)", "BestPosition"),
                  Cmd("实际像素(&A)", "ActualPixels"), Cmd("适合屏幕(&F)", "FitScreen"),
                  Cmd("填充屏幕(&L)", "FillScreen"), Cmd("标尺(&R)", "Ruler")}});
    // ---- 帮助
    a.push_back({"Help",
                 {Blank("帮助 ", Always), Cmd("关于VelluMark(&A)...", "About", Always),
                  Blank("系统信息 ", Always), Cmd("检查更新", "CheckUpdate", Always)}});
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

QStringList ArraysOfTopMenu(int topIndex) {
    QStringList arrays;
    if (topIndex < 0 || topIndex >= static_cast<int>(TopMenus().size())) return arrays;
    QStringList pending = TopMenus()[static_cast<size_t>(topIndex)].Arrays;
    while (!pending.isEmpty()) {
        const QString array = pending.takeFirst();
        const MenuArraySpec* a = FindMenuArray(array);
        if (!a) continue;
        arrays << array;
        QStringList subs;
        for (const MenuItemSpec& item : a->Items)
            if (!item.Submenu.isEmpty()) subs << item.Submenu;
        pending = subs + pending;
    }
    return arrays;
}

QString CaptionOf(const MenuItemSpec& item) {
    if (!item.Caption.isEmpty() || item.Key.isEmpty()) return item.Caption;
    const Operation* op = FindOperation(item.Key);
    QString caption = op ? op->Title : item.Key;
    if (!item.AccessKey.isNull()) caption += QStringLiteral("(&") + item.AccessKey + QLatin1Char(')');
    if (item.Dots) caption += QStringLiteral("...");
    return caption;
}

bool EntryEnabled(const MenuItemSpec& item, const MenuState& state) {
    if (item.IsSeparator()) return false;
    if (item.Rule && !item.Rule(state)) return false;
    if (!item.Rule && !state.Document) return false;
    if (!item.Caption.isEmpty() || item.Key.isEmpty()) return true;
    // A catalogue entry follows its row.
    const Operation* op = FindOperation(item.Key);
    return state.Document && (!op || op->Allows(state.Format, state.WholeSelected, state.SelectionOnCanvas));
}

const MenuItemSpec* FindMenuItemByKey(const QString& key) {
    if (key.isEmpty()) return nullptr;
    for (const MenuArraySpec& a : MenuArrays())
        for (const MenuItemSpec& item : a.Items)
            if (item.Key == key) return &item;
    return nullptr;
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
        {K(ctrl, Qt::Key_H), 1804, QString(), 0, "ToggleAnts"},
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
