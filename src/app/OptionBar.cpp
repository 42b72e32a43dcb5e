#include "app/OptionBar.h"

#include "canvas/Canvas.h"
#include "canvas/ToolPictures.h"
#include "core/AppSettings.h"
#include "core/BlendModes.h"
#include "core/Image.h"
#include "core/MessageBox.h"
#include "core/SettingsStore.h"
#include "document/Tools.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QToolButton>

#include <algorithm>

namespace vm {

namespace {

// Not one of the settings of the start-up: the bucket's pattern is a file the
// user picked, and the bar keeps its name to load it again next time.
const QString PatternSection = QStringLiteral("ToolbarSetting");
const QString PatternKey = QStringLiteral("PaintBucketPatternFile");

// The stored prefix of a selection tool's keys.
QString KeyPrefix(int32_t tool) {
    switch (tool) {
    case ToolRectangle:
        return QStringLiteral("Rect");
    case ToolEllipse:
        return QStringLiteral("Ellicpt");
    case ToolPolygon:
        return QStringLiteral("Poly");
    case ToolLasso:
        return QStringLiteral("Lasso");
    case ToolRowAndCol:
        return QStringLiteral("RowAndCol");
    default:
        return QStringLiteral("MagicWand");
    }
}

// The current gradient: stops from the gradient editor's two lists.
class GradientPreview : public QWidget {
  public:
    explicit GradientPreview(QWidget* parent) : QWidget(parent) {
        setObjectName(QStringLiteral("GradientPreview"));
        setFixedSize(96, 20);
        setToolTip(QStringLiteral("当前渐变"));
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        const AppSettings& s = Globals();
        const QStringList colours = s.StrColor.split(QLatin1Char(','), Qt::SkipEmptyParts);
        const QStringList positions = s.StrPosition.split(QLatin1Char(','), Qt::SkipEmptyParts);
        QLinearGradient g(0, 0, width(), 0);
        const qsizetype n = std::min(colours.size(), positions.size());
        for (qsizetype i = 0; i < n; ++i) {
            bool okColour = false, okPos = false;
            const auto value = static_cast<uint32_t>(colours[i].trimmed().toLongLong(&okColour));
            double at = positions[i].trimmed().toDouble(&okPos);
            if (!okColour || !okPos) continue;
            at = std::clamp(at, 0.0, 1.0);
            if (s.GradientInvert) at = 1.0 - at;
            g.setColorAt(at, QColor::fromRgb(value & 0xFFFFFFu));
        }
        QPainter p(this);
        if (n == 0)
            p.fillRect(rect(), Qt::white);
        else
            p.fillRect(rect(), g);
        p.setPen(QColor(0x60, 0x60, 0x60));
        p.drawRect(rect().adjusted(0, 0, -1, -1));
    }
};

// Builds one row of controls, each bound to a setting.
class PageBuilder {
  public:
    PageBuilder(QWidget* parent, std::vector<std::function<void()>>& loaders, const bool& loading,
                std::function<void()> changed)
        : Page(new QWidget(parent)), Layout(new QHBoxLayout(Page)), loaders_(loaders), loading_(loading),
          changed_(std::move(changed)) {
        Layout->setContentsMargins(4, 1, 4, 1);
        Layout->setSpacing(6);
    }

    QWidget* Page;
    QHBoxLayout* Layout;

    void Picture(const QString& name) {
        auto* label = new QLabel(Page);
        label->setPixmap(ToolPicture(name));
        Layout->addWidget(label);
        Separator();
    }

    void Separator() {
        auto* line = new QFrame(Page);
        line->setFrameShape(QFrame::VLine);
        line->setFrameShadow(QFrame::Sunken);
        Layout->addWidget(line);
    }

    QLabel* Label(const QString& text) {
        auto* label = new QLabel(text, Page);
        Layout->addWidget(label);
        return label;
    }

    QSpinBox* Spin(const QString& key, const QString& label, int32_t AppSettings::*field, int min, int max,
                   const QString& suffix = QString()) {
        if (!label.isEmpty()) Label(label);
        auto* box = new QSpinBox(Page);
        box->setObjectName(key);
        box->setRange(min, max);
        box->setSuffix(suffix);
        box->setAccelerated(true);
        Layout->addWidget(box);
        loaders_.push_back([box, field] {
            const QSignalBlocker block(box);
            box->setValue(Globals().*field);
        });
        QObject::connect(box, &QSpinBox::valueChanged, Page,
                         [&loading = loading_, changed = changed_, field](int v) {
                             if (loading) return;
                             Globals().*field = v;
                             changed();
                         });
        return box;
    }

    QCheckBox* Check(const QString& key, const QString& caption, bool AppSettings::*field) {
        auto* box = new QCheckBox(caption, Page);
        box->setObjectName(key);
        Layout->addWidget(box);
        loaders_.push_back([box, field] {
            const QSignalBlocker block(box);
            box->setChecked(Globals().*field);
        });
        QObject::connect(box, &QCheckBox::toggled, Page,
                         [&loading = loading_, changed = changed_, field](bool v) {
                             if (loading) return;
                             Globals().*field = v;
                             changed();
                         });
        return box;
    }

    // A blend-mode list: the setting is the mode's number, whatever list
    // stands (grey pictures offer fewer modes). Grey says which list.
    QComboBox* BlendCombo(const QString& key, int32_t AppSettings::*field,
                          const std::function<bool()>& grey) {
        Label(QStringLiteral("模式:"));
        auto* box = new QComboBox(Page);
        box->setObjectName(key);
        box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        Layout->addWidget(box);
        loaders_.push_back([box, field, grey] {
            const QSignalBlocker block(box);
            const bool g = grey();
            if (box->count() == 0 || box->property("grey").toBool() != g) {
                box->clear();
                const QStringList names = BlendModeNames();
                if (g)
                    for (int32_t m : GreyBlendModes())
                        box->addItem(names.at(m), m);
                else
                    for (int32_t m = 0; m < BlendModeCount; ++m)
                        box->addItem(names.at(m), m);
                box->setProperty("grey", g);
            }
            // A mode the list lacks shows as the first; the setting stays.
            box->setCurrentIndex(std::max(0, box->findData(Globals().*field)));
        });
        QObject::connect(box, &QComboBox::currentIndexChanged, Page,
                         [&loading = loading_, changed = changed_, field, box](int row) {
                             if (loading || row < 0) return;
                             Globals().*field = box->itemData(row).toInt();
                             changed();
                         });
        return box;
    }

    // The list's row is the setting minus First.
    QComboBox* Combo(const QString& key, const QString& label, const QStringList& items,
                     int32_t AppSettings::*field, int32_t first = 0) {
        if (!label.isEmpty()) Label(label);
        auto* box = new QComboBox(Page);
        box->setObjectName(key);
        box->addItems(items);
        box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        Layout->addWidget(box);
        loaders_.push_back([box, field, first] {
            const QSignalBlocker block(box);
            box->setCurrentIndex(
                std::clamp(Globals().*field - first, 0, static_cast<int32_t>(box->count()) - 1));
        });
        QObject::connect(box, &QComboBox::currentIndexChanged, Page,
                         [&loading = loading_, changed = changed_, field, first](int row) {
                             if (loading || row < 0) return;
                             Globals().*field = row + first;
                             changed();
                         });
        return box;
    }

    // A set of exclusive picture buttons, the setting being the button's
    // number. Read and Write reach the setting.
    QButtonGroup* Buttons(const QString& key, const QStringList& pictures, const QStringList& tips,
                          std::function<int32_t()> read, std::function<void(int32_t)> write) {
        auto* group = new QButtonGroup(Page);
        group->setExclusive(true);
        for (int i = 0; i < pictures.size(); ++i) {
            auto* button = new QToolButton(Page);
            button->setObjectName(key + QString::number(i));
            button->setCheckable(true);
            button->setAutoRaise(true);
            button->setIcon(ToolIcon(pictures[i]));
            button->setIconSize(QSize(20, 20));
            button->setToolTip(tips.value(i));
            group->addButton(button, i);
            Layout->addWidget(button);
        }
        loaders_.push_back([group, read] {
            const QSignalBlocker block(group);
            if (QAbstractButton* b = group->button(read())) b->setChecked(true);
        });
        QObject::connect(group, &QButtonGroup::idClicked, Page,
                         [&loading = loading_, changed = changed_, write](int id) {
                             if (loading) return;
                             write(id);
                             changed();
                         });
        return group;
    }

    void Combine(int32_t tool) {
        Buttons(
            KeyPrefix(tool) + QStringLiteral("CombineMode"),
            {QStringLiteral("NewSelection"), QStringLiteral("AddSelection"), QStringLiteral("SubSelection"),
             QStringLiteral("AndSelection")},
            {QStringLiteral("新选区"), QStringLiteral("添加到选区"), QStringLiteral("从选区减去"),
             QStringLiteral("与选区交叉")},
            [tool] { return ToolCombineMode(tool, Globals()); },
            [tool](int32_t mode) { SetToolCombineMode(tool, mode, Globals()); });
        Separator();
    }

    QPushButton* Action(const QString& key, const QString& caption, std::function<void()> action) {
        auto* button = new QPushButton(caption, Page);
        button->setObjectName(key);
        button->setAutoDefault(false);
        Layout->addWidget(button);
        QObject::connect(button, &QPushButton::clicked, Page, [action] { action(); });
        return button;
    }

    void AddLoader(std::function<void()> loader) { loaders_.push_back(std::move(loader)); }
    bool Loading() const { return loading_; }
    void Notify() { changed_(); }

    QWidget* Finish() {
        Layout->addStretch(1);
        return Page;
    }

  private:
    std::vector<std::function<void()>>& loaders_;
    const bool& loading_;
    std::function<void()> changed_;
};

} // namespace

OptionBar::OptionBar(QWidget* parent)
    : QToolBar(QStringLiteral("选项"), parent), stack_(new QStackedWidget(this)) {
    setObjectName(QStringLiteral("OptionBar"));
    setMovable(false);
    setFloatable(false);
    setAllowedAreas(Qt::TopToolBarArea | Qt::BottomToolBarArea);
    addWidget(stack_);

    AskPatternFile = [this] {
        QFileDialog dialog(this, QStringLiteral("选择图案"));
        dialog.setOption(QFileDialog::DontUseNativeDialog, true);
        dialog.setFileMode(QFileDialog::ExistingFile);
        dialog.setLabelText(QFileDialog::LookIn, QStringLiteral("查找范围(&I):"));
        dialog.setLabelText(QFileDialog::FileName, QStringLiteral("文件名(&N):"));
        dialog.setLabelText(QFileDialog::FileType, QStringLiteral("文件类型(&T):"));
        dialog.setLabelText(QFileDialog::Accept, QStringLiteral("打开(&O)"));
        dialog.setLabelText(QFileDialog::Reject, QStringLiteral("取消"));
        dialog.setNameFilter(QStringLiteral("所有文件 (*)"));
        if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return QString();
        return dialog.selectedFiles().first();
    };

    pages_[ToolRectangle] = BuildMarqueePage(ToolRectangle);
    pages_[ToolEllipse] = BuildMarqueePage(ToolEllipse);
    pages_[ToolPolygon] = BuildLassoPage(ToolPolygon);
    pages_[ToolLasso] = BuildLassoPage(ToolLasso);
    pages_[ToolRowAndCol] = BuildRowAndColPage();
    pages_[ToolMagicWand] = BuildMagicWandPage();
    pages_[ToolPickColor] = BuildPickColorPage();
    pages_[ToolGradient] = BuildGradientPage();
    pages_[ToolPaintBucket] = BuildPaintBucketPage();
    pages_[ToolMoveImage] = BuildMoveImagePage();
    pages_[ToolZoom] = BuildZoomPage();
    for (const auto& [tool, page] : pages_) {
        page->setObjectName(QStringLiteral("Options") + QString::number(tool));
        stack_->addWidget(page);
    }

    // The pattern of the last run, when its file is still there.
    const QString file = GetSetting(SettingsRoot, PatternSection, PatternKey, QString());
    if (!file.isEmpty() && BucketPattern().isNull()) {
        const QImage pattern = PatternFromFile(file);
        if (!pattern.isNull()) SetBucketPattern(pattern);
    }
    ShowPatternPicture();
}

QWidget* OptionBar::Page(int32_t index) const {
    auto it = pages_.find(index);
    return it == pages_.end() ? nullptr : it->second;
}

void OptionBar::ShowTool(int32_t index) {
    QWidget* page = Page(index);
    if (!page) return;
    tool_ = index;
    LoadValues();
    stack_->setCurrentWidget(page);
}

void OptionBar::LoadValues() {
    loading_ = true;
    for (const auto& load : loaders_)
        load();
    loading_ = false;
    if (QWidget* preview = findChild<QWidget*>(QStringLiteral("GradientPreview"))) preview->update();
}

void OptionBar::Changed() {
    // A new style, say, changes what the next drag draws.
    SetSelectionStyle(SelectionStyleOf(WorkingMode(), Globals()));
    if (ActiveCanvas)
        if (Canvas* c = ActiveCanvas()) c->UpdateToolCursor(Qt::NoModifier);
    emit OptionsChanged();
}

QWidget* OptionBar::BuildMarqueePage(int32_t tool) {
    const bool ellipse = tool == ToolEllipse;
    PageBuilder b(stack_, loaders_, loading_, [this] { Changed(); });
    b.Picture(ellipse ? QStringLiteral("Ellicpse") : QStringLiteral("NormalRectangle"));
    b.Combine(tool);
    const QString prefix = KeyPrefix(tool);
    b.Spin(prefix + QStringLiteral("FeatherRadius"), QStringLiteral("羽化:"),
           ellipse ? &AppSettings::EllicptFeatherRadius : &AppSettings::RectFeatherRadius, 0, 250,
           QStringLiteral(" 像素"));
    if (ellipse) {
        b.Check(QStringLiteral("EllicptAntiAlias"), QStringLiteral("消除锯齿"),
                &AppSettings::EllicptAntiAlias);
    } else {
        // A rectangle lies on whole pixels: there is nothing to smooth.
        auto* antiAlias = new QCheckBox(QStringLiteral("消除锯齿"), b.Page);
        antiAlias->setEnabled(false);
        b.Layout->addWidget(antiAlias);
    }
    b.Separator();
    int32_t AppSettings::*style = ellipse ? &AppSettings::EllicptStyle : &AppSettings::RectStyle;
    QComboBox* styles =
        b.Combo(prefix + QStringLiteral("Style"), QStringLiteral("样式:"),
                {QStringLiteral("正常"), QStringLiteral("固定长宽比"), QStringLiteral("固定大小")}, style);

    // Width and height are the ratio's or the fixed size's, by the style;
    // the plain style leaves them unused.
    struct Fields {
        int32_t AppSettings::*RatioW, AppSettings::*RatioH, AppSettings::*SizeW, AppSettings::*SizeH;
    };
    const Fields f = ellipse
                         ? Fields{&AppSettings::FixedRatioEllicptWidth, &AppSettings::FixedRatioEllicptHeight,
                                  &AppSettings::FixedEllicptWidth, &AppSettings::FixedEllicptHeight}
                         : Fields{&AppSettings::FixedRatioRectWidth, &AppSettings::FixedRatioRectHeight,
                                  &AppSettings::FixedRectWidth, &AppSettings::FixedRectHeight};
    b.Label(QStringLiteral("宽度:"));
    auto* width = new QSpinBox(b.Page);
    width->setObjectName(prefix + QStringLiteral("Width"));
    b.Layout->addWidget(width);
    b.Label(QStringLiteral("高度:"));
    auto* height = new QSpinBox(b.Page);
    height->setObjectName(prefix + QStringLiteral("Height"));
    b.Layout->addWidget(height);
    auto load = [width, height, style, f] {
        const AppSettings& s = Globals();
        const QSignalBlocker bw(width), bh(height);
        const int32_t stored = s.*style;
        width->setEnabled(stored == 1 || stored == 2);
        height->setEnabled(stored == 1 || stored == 2);
        if (stored == 2) {
            width->setRange(1, 30000);
            height->setRange(1, 30000);
            width->setSuffix(QStringLiteral(" 像素"));
            height->setSuffix(QStringLiteral(" 像素"));
            width->setValue(s.*f.SizeW);
            height->setValue(s.*f.SizeH);
        } else {
            width->setRange(1, 999);
            height->setRange(1, 999);
            width->setSuffix(QString());
            height->setSuffix(QString());
            width->setValue(s.*f.RatioW);
            height->setValue(s.*f.RatioH);
        }
    };
    b.AddLoader(load);
    auto write = [this, style, f](bool isWidth, int v) {
        if (loading_) return;
        AppSettings& s = Globals();
        if (s.*style == 2)
            s.*(isWidth ? f.SizeW : f.SizeH) = v;
        else if (s.*style == 1)
            s.*(isWidth ? f.RatioW : f.RatioH) = v;
        Changed();
    };
    connect(width, &QSpinBox::valueChanged, b.Page, [write](int v) { write(true, v); });
    connect(height, &QSpinBox::valueChanged, b.Page, [write](int v) { write(false, v); });
    // A new style shows its own pair of numbers.
    connect(styles, &QComboBox::currentIndexChanged, b.Page, [this, load] {
        loading_ = true;
        load();
        loading_ = false;
    });
    return b.Finish();
}

QWidget* OptionBar::BuildLassoPage(int32_t tool) {
    const bool lasso = tool == ToolLasso;
    PageBuilder b(stack_, loaders_, loading_, [this] { Changed(); });
    b.Picture(lasso ? QStringLiteral("Lasso") : QStringLiteral("Poly"));
    b.Combine(tool);
    b.Spin(KeyPrefix(tool) + QStringLiteral("FeatherRadius"), QStringLiteral("羽化:"),
           lasso ? &AppSettings::LassoFeatherRadius : &AppSettings::PolyFeatherRadius, 0, 250,
           QStringLiteral(" 像素"));
    b.Check(KeyPrefix(tool) + QStringLiteral("AntiAlias"), QStringLiteral("消除锯齿"),
            lasso ? &AppSettings::LassoAntiAlias : &AppSettings::PolyAntiAlias);
    return b.Finish();
}

QWidget* OptionBar::BuildRowAndColPage() {
    PageBuilder b(stack_, loaders_, loading_, [this] { Changed(); });
    b.Picture(QStringLiteral("SingleRowAndCol"));
    b.Combine(ToolRowAndCol);
    b.Combo(QStringLiteral("RowColShape"), QStringLiteral("样式:"),
            {QStringLiteral("单行"), QStringLiteral("单列"), QStringLiteral("单列和单列")},
            &AppSettings::RowColShape, 1);
    return b.Finish();
}

QWidget* OptionBar::BuildMagicWandPage() {
    PageBuilder b(stack_, loaders_, loading_, [this] { Changed(); });
    b.Picture(QStringLiteral("MagicWand"));
    b.Combine(ToolMagicWand);
    b.Spin(QStringLiteral("MagicWandFeatherRadius"), QStringLiteral("羽化:"),
           &AppSettings::MagicWandFeatherRadius, 0, 250, QStringLiteral(" 像素"));
    b.Spin(QStringLiteral("MagicWandTorlance"), QStringLiteral("容差:"), &AppSettings::MagicWandTorlance, 0,
           255);
    b.Check(QStringLiteral("MagicWandAntiAlias"), QStringLiteral("消除锯齿"),
            &AppSettings::MagicWandAntiAlias);
    b.Check(QStringLiteral("MagicWandContious"), QStringLiteral("连续的"), &AppSettings::MagicWandContious);
    b.Check(QStringLiteral("MagicSampleFormAllLayer"), QStringLiteral("对所有图层取样"),
            &AppSettings::MagicSampleFormAllLayer);
    return b.Finish();
}

QWidget* OptionBar::BuildPickColorPage() {
    PageBuilder b(stack_, loaders_, loading_, [this] { Changed(); });
    b.Picture(QStringLiteral("PickColor"));
    b.Combo(QStringLiteral("SampleSize"), QStringLiteral("取样大小:"),
            {QStringLiteral("取样点"), QStringLiteral("3×3 平均"), QStringLiteral("5×5 平均")},
            &AppSettings::SampleSize);
    return b.Finish();
}

QWidget* OptionBar::BuildGradientPage() {
    PageBuilder b(stack_, loaders_, loading_, [this] { Changed(); });
    b.Picture(QStringLiteral("Gradient"));
    b.Layout->addWidget(new GradientPreview(b.Page));
    b.Separator();
    b.Buttons(
        QStringLiteral("GradientMode"),
        {QStringLiteral("LinearGradient"), QStringLiteral("RoundGradient"), QStringLiteral("AngleGradient"),
         QStringLiteral("SymmetricalGradient"), QStringLiteral("DiamondGradient")},
        {QStringLiteral("线性渐变"), QStringLiteral("圆形渐变"), QStringLiteral("角度渐变"),
         QStringLiteral("对称渐变"), QStringLiteral("菱形渐变")},
        [] { return std::clamp(Globals().GradientMode, 0, 4); },
        [](int32_t v) { Globals().GradientMode = v; });
    b.Separator();
    b.BlendCombo(QStringLiteral("GradientBlendMode"), &AppSettings::GradientBlendMode,
                 [this] { return GreyDocument(); });
    b.Spin(QStringLiteral("GradientOpacity"), QStringLiteral("不透明度:"), &AppSettings::GradientOpacity, 1,
           100, QStringLiteral("%"));
    b.Check(QStringLiteral("GradientInvert"), QStringLiteral("反向"), &AppSettings::GradientInvert);
    b.Check(QStringLiteral("GradientDither"), QStringLiteral("仿色"), &AppSettings::GradientDither);
    b.Check(QStringLiteral("GradientUseTransparent"), QStringLiteral("透明区域"),
            &AppSettings::GradientUseTransparent);
    // Reversing turns the preview round.
    connect(b.Page->findChild<QCheckBox*>(QStringLiteral("GradientInvert")), &QCheckBox::toggled, b.Page,
            [page = b.Page] {
                if (QWidget* preview = page->findChild<QWidget*>(QStringLiteral("GradientPreview")))
                    preview->update();
            });
    return b.Finish();
}

QWidget* OptionBar::BuildPaintBucketPage() {
    PageBuilder b(stack_, loaders_, loading_, [this] { Changed(); });
    b.Picture(QStringLiteral("PaintBucket"));
    QComboBox* source =
        b.Combo(QStringLiteral("PaintBucketFillContent"), QStringLiteral("填充:"),
                {QStringLiteral("前景"), QStringLiteral("图案")}, &AppSettings::PaintBucketFillContent);
    b.Label(QStringLiteral("图案:"));
    auto* pattern = new QToolButton(b.Page);
    pattern->setObjectName(QStringLiteral("PaintBucketPattern"));
    pattern->setToolTip(QStringLiteral("选择图案文件"));
    pattern->setIconSize(QSize(20, 20));
    b.Layout->addWidget(pattern);
    connect(pattern, &QToolButton::clicked, b.Page, [this] {
        const QString file = AskPatternFile ? AskPatternFile() : QString();
        if (!file.isEmpty()) LoadPattern(file);
    });
    b.AddLoader([pattern] { pattern->setEnabled(Globals().PaintBucketFillContent == 1); });
    // Choosing the pattern with none at hand asks for one; without one the
    // bucket stays with the foreground colour.
    connect(source, &QComboBox::currentIndexChanged, b.Page, [this, source, pattern](int row) {
        if (loading_) return;
        if (row == 1 && BucketPattern().isNull()) {
            const QString file = AskPatternFile ? AskPatternFile() : QString();
            if (file.isEmpty() || !LoadPattern(file)) {
                Globals().PaintBucketFillContent = 0;
                const QSignalBlocker block(source);
                source->setCurrentIndex(0);
            }
        }
        pattern->setEnabled(Globals().PaintBucketFillContent == 1);
    });
    b.Separator();
    b.BlendCombo(QStringLiteral("PaintBucketBlendMode"), &AppSettings::PaintBucketBlendMode,
                 [this] { return GreyDocument(); });
    b.Spin(QStringLiteral("PaintBuckerOpacity"), QStringLiteral("不透明度:"),
           &AppSettings::PaintBuckerOpacity, 1, 100, QStringLiteral("%"));
    b.Spin(QStringLiteral("PaintBucketTorlance"), QStringLiteral("容差:"), &AppSettings::PaintBucketTorlance,
           0, 255);
    b.Check(QStringLiteral("PaintBucketContious"), QStringLiteral("连续的"),
            &AppSettings::PaintBucketContious);
    b.Check(QStringLiteral("PaintSampleFormAllLayer"), QStringLiteral("所有图层"),
            &AppSettings::PaintSampleFormAllLayer);
    return b.Finish();
}

QWidget* OptionBar::BuildMoveImagePage() {
    PageBuilder b(stack_, loaders_, loading_, [this] { Changed(); });
    b.Picture(QStringLiteral("MoveImage"));
    b.Action(QStringLiteral("ActualPixels"), QStringLiteral("实际像素"), [this] {
        if (Canvas* c = ActiveCanvas ? ActiveCanvas() : nullptr) c->ShowImageAtItsOriginalSize();
    });
    b.Action(QStringLiteral("FitOnScreen"), QStringLiteral("满画布显示"), [this] {
        if (Canvas* c = ActiveCanvas ? ActiveCanvas() : nullptr) c->ShowImageAtFitToScreen();
    });
    return b.Finish();
}

QWidget* OptionBar::BuildZoomPage() {
    PageBuilder b(stack_, loaders_, loading_, [this] { Changed(); });
    b.Picture(QStringLiteral("Zoom"));
    b.Buttons(
        QStringLiteral("ZoomMode"), {QStringLiteral("ZoomIn"), QStringLiteral("ZoomOut")},
        {QStringLiteral("放大"), QStringLiteral("缩小")}, [] { return Globals().ZoomMode == 1 ? 1 : 0; },
        [](int32_t v) { Globals().ZoomMode = v; });
    b.Separator();
    b.Check(QStringLiteral("AdjustWindow"), QStringLiteral("调整窗口大小以满屏显示"),
            &AppSettings::AdjustWindow);
    b.Check(QStringLiteral("IgnorePanel"), QStringLiteral("忽略调板"), &AppSettings::IgnorePanel);
    b.Separator();
    b.Action(QStringLiteral("ActualPixels"), QStringLiteral("实际像素"), [this] {
        if (Canvas* c = ActiveCanvas ? ActiveCanvas() : nullptr) c->ShowImageAtItsOriginalSize();
    });
    b.Action(QStringLiteral("FitOnScreen"), QStringLiteral("满画布显示"), [this] {
        if (Canvas* c = ActiveCanvas ? ActiveCanvas() : nullptr) c->ShowImageAtFitToScreen();
    });
    return b.Finish();
}

QImage OptionBar::PatternFromFile(const QString& file) {
    CImage picture;
    if (file.isEmpty() || !picture.LoadPictureFromFile(file) || picture.Width() <= 0 || picture.Height() <= 0)
        return QImage();
    // The pattern is laid over white, as the fill reads it without alpha.
    QImage pattern(picture.Width(), picture.Height(), QImage::Format_ARGB32);
    pattern.fill(Qt::white);
    QPainter p(&pattern);
    picture.Render(p, 0, 0);
    return pattern;
}

bool OptionBar::LoadPattern(const QString& file) {
    const QImage pattern = PatternFromFile(file);
    if (pattern.isNull()) {
        MessageBox(QStringLiteral("无法完成请求，因为他不是所指类型的文档."), 0, QStringLiteral("错误"));
        return false;
    }
    SetBucketPattern(pattern);
    SaveSetting(SettingsRoot, PatternSection, PatternKey, QFileInfo(file).absoluteFilePath());
    ShowPatternPicture();
    return true;
}

void OptionBar::ShowPatternPicture() {
    auto* button = findChild<QToolButton*>(QStringLiteral("PaintBucketPattern"));
    if (!button) return;
    const QImage& pattern = BucketPattern();
    if (pattern.isNull()) {
        button->setIcon(QIcon());
        button->setText(QStringLiteral("..."));
        return;
    }
    QPixmap thumb(40, 40);
    thumb.fill(Qt::white);
    {
        QPainter p(&thumb);
        // A few repeats show that it tiles.
        p.fillRect(thumb.rect(), QBrush(QPixmap::fromImage(pattern.width() > 20 || pattern.height() > 20
                                                               ? pattern.scaled(20, 20, Qt::KeepAspectRatio,
                                                                                Qt::SmoothTransformation)
                                                               : pattern)));
        p.setPen(QColor(0x60, 0x60, 0x60));
        p.drawRect(thumb.rect().adjusted(0, 0, -1, -1));
    }
    thumb.setDevicePixelRatio(2);
    button->setIcon(QIcon(thumb));
    button->setText(QString());
}

bool OptionBar::GreyDocument() const {
    const Canvas* c = ActiveCanvas ? ActiveCanvas() : nullptr;
    return c && c->HasImage() && c->Image()->PixelFormat == PixelFormat8bppGray;
}

} // namespace vm
