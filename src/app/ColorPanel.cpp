#include "app/ColorPanel.h"

#include "core/AppSettings.h"
#include "core/ColorRef.h"
#include "core/ColorSpaces.h"
#include "core/Numeric.h"
#include "core/StartUpTables.h"

#include <QColorDialog>
#include <QComboBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollArea>
#include <QSpinBox>
#include <QToolButton>
#include <QToolTip>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace vm {

namespace {

int Round(double v) {
    return static_cast<int>(std::lround(v));
}

int32_t& ActiveColor() {
    return Globals().ColorPanelForeColorSelected ? Globals().SystemForeColor : Globals().SystemBackColor;
}

QIcon ColorSquare(int32_t color, bool active) {
    QPixmap pm(28, 28);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.fillRect(QRect(2, 2, 24, 24), ColorRefToQColor(color));
    p.setPen(QPen(active ? QColor(0, 0, 0) : QColor(140, 140, 140), active ? 2 : 1));
    p.drawRect(QRect(2, 2, 23, 23));
    return QIcon(pm);
}

// The spectrum: hue across, from full colour at mid height to white above and
// black below.
QColor SpectrumColor(double x, double y) {
    int32_t r = 0, g = 0, b = 0;
    const double h = std::clamp(x, 0.0, 1.0) * 360.0;
    const double t = std::clamp(y, 0.0, 1.0);
    if (t < 0.5)
        HsbToRgb(Hsb{h, t * 200.0, 100.0}, r, g, b);
    else
        HsbToRgb(Hsb{h, 100.0, (1.0 - t) * 200.0}, r, g, b);
    return QColor(r, g, b);
}

} // namespace

QStringList ColorSpaceNames() {
    return {QStringLiteral("灰度"),    QStringLiteral("RGB空间"),  QStringLiteral("Web空间"),
            QStringLiteral("HSB空间"), QStringLiteral("CMYK空间"), QStringLiteral("LAB空间")};
}

ColorChannels ChannelsOf(int32_t space) {
    switch (space) {
    case ColorSpaceGrey:
        return {{QStringLiteral("K")}, {0}, {100}};
    case ColorSpaceHsb:
        return {{QStringLiteral("H"), QStringLiteral("S"), QStringLiteral("B")}, {0, 0, 0}, {360, 100, 100}};
    case ColorSpaceCmyk:
        return {{QStringLiteral("C"), QStringLiteral("M"), QStringLiteral("Y"), QStringLiteral("K")},
                {0, 0, 0, 0},
                {100, 100, 100, 100}};
    case ColorSpaceLab:
        return {{QStringLiteral("L"), QStringLiteral("a"), QStringLiteral("b")},
                {0, -128, -128},
                {100, 127, 127}};
    case ColorSpaceWeb:
        return {{QStringLiteral("R"), QStringLiteral("G"), QStringLiteral("B")}, {0, 0, 0}, {5, 5, 5}};
    default:
        return {{QStringLiteral("R"), QStringLiteral("G"), QStringLiteral("B")}, {0, 0, 0}, {255, 255, 255}};
    }
}

std::vector<int> ChannelValues(int32_t space, int32_t c) {
    int32_t r = 0, g = 0, b = 0;
    SplitColor(c & 0xFFFFFF, r, g, b);
    switch (space) {
    case ColorSpaceGrey:
        return {Round(100.0 - GreyValue(r, g, b) * 100.0 / 255.0)};
    case ColorSpaceHsb: {
        const Hsb h = RgbToHsb(r, g, b);
        return {Round(h.H) % 360, Round(h.S), Round(h.B)};
    }
    case ColorSpaceCmyk: {
        const Cmyk k = RgbToCmyk(r, g, b);
        return {Round(k.C), Round(k.M), Round(k.Y), Round(k.K)};
    }
    case ColorSpaceLab: {
        const Lab l = RgbToLab(r, g, b);
        return {Round(l.L), Round(l.A), Round(l.B)};
    }
    case ColorSpaceWeb: {
        int32_t wr = r, wg = g, wb = b;
        NearestWebSafe(wr, wg, wb);
        return {wr / 51, wg / 51, wb / 51};
    }
    default:
        return {r, g, b};
    }
}

int32_t ColorOfChannels(int32_t space, const std::vector<int>& v) {
    auto at = [&](size_t i) { return i < v.size() ? v[i] : 0; };
    int32_t r = 0, g = 0, b = 0;
    switch (space) {
    case ColorSpaceGrey: {
        const int grey = Round((100 - std::clamp(at(0), 0, 100)) * 255.0 / 100.0);
        return MakeColorRef(grey, grey, grey);
    }
    case ColorSpaceHsb:
        HsbToRgb(Hsb{double(at(0)), double(at(1)), double(at(2))}, r, g, b);
        break;
    case ColorSpaceCmyk:
        CmykToRgb(Cmyk{double(at(0)), double(at(1)), double(at(2)), double(at(3))}, r, g, b);
        break;
    case ColorSpaceLab:
        LabToRgb(Lab{double(at(0)), double(at(1)), double(at(2))}, r, g, b);
        break;
    case ColorSpaceWeb:
        return MakeColorRef(std::clamp(at(0), 0, 5) * 51, std::clamp(at(1), 0, 5) * 51,
                            std::clamp(at(2), 0, 5) * 51);
    default:
        return MakeColorRef(std::clamp(at(0), 0, 255), std::clamp(at(1), 0, 255), std::clamp(at(2), 0, 255));
    }
    return MakeColorRef(r, g, b);
}

// ------------------------------------------------------------------ colour panel

// A slider whose track shows the colours the channel runs through with the
// other channels held.
class ChannelBar : public QWidget {
  public:
    ChannelBar(ColorPanel* owner, int index) : QWidget(owner), owner_(owner), index_(index) {
        setMinimumSize(100, 18);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        const int32_t space = owner_->Space();
        const ColorChannels ch = ChannelsOf(space);
        std::vector<int> v = ChannelValues(space, ActiveColor());
        const int lo = ch.Min[index_], hi = ch.Max[index_];
        const QRect track(4, 2, width() - 8, 10);
        for (int x = 0; x < track.width(); ++x) {
            v[index_] = lo + Round(double(hi - lo) * x / std::max(1, track.width() - 1));
            p.setPen(ColorRefToQColor(ColorOfChannels(space, v)));
            p.drawLine(track.left() + x, track.top(), track.left() + x, track.bottom());
        }
        p.setPen(Qt::gray);
        p.drawRect(track.adjusted(0, 0, -1, -1));
        const int value = owner_->Channel(index_);
        const int mx = track.left() + Round(double(value - lo) / std::max(1, hi - lo) * (track.width() - 1));
        const QPoint tri[3] = {QPoint(mx, track.bottom() + 1), QPoint(mx - 4, height() - 1),
                               QPoint(mx + 4, height() - 1)};
        p.setBrush(Qt::black);
        p.setPen(Qt::NoPen);
        p.drawPolygon(tri, 3);
    }
    void mousePressEvent(QMouseEvent* e) override { Pick(e->position().x()); }
    void mouseMoveEvent(QMouseEvent* e) override {
        if (e->buttons() & Qt::LeftButton) Pick(e->position().x());
    }

  private:
    void Pick(double x) {
        const ColorChannels ch = ChannelsOf(owner_->Space());
        const int lo = ch.Min[index_], hi = ch.Max[index_];
        const double t = std::clamp((x - 4) / std::max(1, width() - 9), 0.0, 1.0);
        owner_->SetChannel(index_, lo + Round(t * (hi - lo)));
    }
    ColorPanel* owner_;
    int index_;
};

class SpectrumBar : public QLabel {
  public:
    explicit SpectrumBar(ColorPanel* owner) : QLabel(owner), owner_(owner) {
        setMinimumHeight(40);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        setToolTip(QStringLiteral("点按以选取颜色"));
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QImage img(width(), height(), QImage::Format_RGB32);
        for (int y = 0; y < img.height(); ++y)
            for (int x = 0; x < img.width(); ++x)
                img.setPixelColor(x, y,
                                  SpectrumColor(double(x) / std::max(1, width() - 1),
                                                double(y) / std::max(1, height() - 1)));
        QPainter(this).drawImage(0, 0, img);
    }
    void mousePressEvent(QMouseEvent* e) override { Pick(e->position()); }
    void mouseMoveEvent(QMouseEvent* e) override {
        if (e->buttons() & Qt::LeftButton) Pick(e->position());
    }

  private:
    void Pick(const QPointF& at) {
        owner_->PickFromSpectrum(at.x() / std::max(1, width() - 1), at.y() / std::max(1, height() - 1));
    }
    ColorPanel* owner_;
};

ColorPanel::ColorPanel(QWidget* parent) : QWidget(parent) {
    space_ = new QComboBox(this);
    space_->addItems(ColorSpaceNames());
    fore_ = new QToolButton(this);
    back_ = new QToolButton(this);
    fore_->setToolTip(QStringLiteral("前景色 (双击以选取)"));
    back_->setToolTip(QStringLiteral("背景色 (双击以选取)"));
    for (QToolButton* b : {fore_, back_}) {
        b->setIconSize(QSize(28, 28));
        b->setAutoRaise(true);
    }
    auto* swap = new QToolButton(this);
    swap->setText(QStringLiteral("⇄"));
    swap->setToolTip(QStringLiteral("切换前景色和背景色"));
    swap->setAutoRaise(true);
    auto* reset = new QToolButton(this);
    reset->setText(QStringLiteral("■□"));
    reset->setToolTip(QStringLiteral("默认前景色和背景色"));
    reset->setAutoRaise(true);

    auto* top = new QHBoxLayout;
    top->addWidget(fore_);
    top->addWidget(back_);
    top->addWidget(swap);
    top->addWidget(reset);
    top->addStretch(1);
    top->addWidget(space_);
    grid_ = new QGridLayout;
    spectrum_ = new SpectrumBar(this);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addLayout(top);
    column->addLayout(grid_);
    column->addStretch(1);
    column->addWidget(spectrum_);

    // The first click makes a colour the one the sliders change; a click on
    // the chosen one opens the colour dialog.
    auto choose = [this](bool fore) {
        if (Globals().ColorPanelForeColorSelected != fore) {
            SelectForeColor(fore);
            return;
        }
        const QColor picked = QColorDialog::getColor(ColorRefToQColor(ActiveColor()), this,
                                                     fore ? QStringLiteral("拾色器(前景色)")
                                                          : QStringLiteral("拾色器(背景色)"));
        if (picked.isValid()) SetActiveColor(QColorToColorRef(picked));
    };
    connect(fore_, &QToolButton::clicked, this, [choose] { choose(true); });
    connect(back_, &QToolButton::clicked, this, [choose] { choose(false); });
    connect(swap, &QToolButton::clicked, this, [this] {
        std::swap(Globals().SystemForeColor, Globals().SystemBackColor);
        RefreshColorPanel();
        emit ColorsChanged();
    });
    connect(reset, &QToolButton::clicked, this, [this] {
        Globals().SystemForeColor = 0;
        Globals().SystemBackColor = 0xFFFFFF;
        RefreshColorPanel();
        emit ColorsChanged();
    });
    connect(space_, &QComboBox::currentIndexChanged, this, [this](int i) {
        if (!syncing_) SetSpace(i);
    });
    SetSpace(std::clamp(Globals().ColorPanelColorType, 0, static_cast<int32_t>(ColorSpaceCount) - 1));
}

int32_t ColorPanel::Space() const {
    return std::clamp(Globals().ColorPanelColorType, 0, static_cast<int32_t>(ColorSpaceCount) - 1);
}

void ColorPanel::SetSpace(int32_t space) {
    if (space < 0 || space >= ColorSpaceCount) return;
    Globals().ColorPanelColorType = space;
    for (QLabel* l : labels_)
        delete l;
    for (ChannelBar* b : bars_)
        delete b;
    for (QSpinBox* s : boxes_)
        delete s;
    labels_.clear();
    bars_.clear();
    boxes_.clear();
    const ColorChannels ch = ChannelsOf(space);
    for (int i = 0; i < ch.Labels.size(); ++i) {
        auto* label = new QLabel(ch.Labels[i], this);
        auto* bar = new ChannelBar(this, i);
        auto* box = new QSpinBox(this);
        box->setRange(ch.Min[i], ch.Max[i]);
        box->setSuffix(space == ColorSpaceCmyk || space == ColorSpaceGrey || (space == ColorSpaceHsb && i > 0)
                           ? QStringLiteral("%")
                       : space == ColorSpaceHsb ? QStringLiteral("°")
                                                : QString());
        connect(box, &QSpinBox::valueChanged, this, [this, i](int v) {
            if (!syncing_) SetChannel(i, v);
        });
        grid_->addWidget(label, i, 0);
        grid_->addWidget(bar, i, 1);
        grid_->addWidget(box, i, 2);
        labels_.push_back(label);
        bars_.push_back(bar);
        boxes_.push_back(box);
    }
    RefreshColorPanel();
}

void ColorPanel::SelectForeColor(bool fore) {
    Globals().ColorPanelForeColorSelected = fore;
    RefreshColorPanel();
}

int ColorPanel::ChannelCount() const {
    return static_cast<int>(boxes_.size());
}

int ColorPanel::Channel(int index) const {
    return index >= 0 && index < ChannelCount() ? boxes_[index]->value() : 0;
}

void ColorPanel::SetChannel(int index, int value) {
    if (index < 0 || index >= ChannelCount()) return;
    std::vector<int> v(boxes_.size());
    for (size_t i = 0; i < boxes_.size(); ++i)
        v[i] = boxes_[i]->value();
    const ColorChannels ch = ChannelsOf(Space());
    v[index] = std::clamp(value, ch.Min[index], ch.Max[index]);
    ActiveColor() = ColorOfChannels(Space(), v);
    // The boxes keep what the user set; the colour is what it converts to.
    syncing_ = true;
    boxes_[index]->setValue(v[index]);
    syncing_ = false;
    DrawForeColor();
    DrawBackColor();
    for (ChannelBar* b : bars_)
        b->update();
    emit ColorsChanged();
}

void ColorPanel::PickFromSpectrum(double x, double y) {
    const QColor c = SpectrumColor(x, y);
    SetActiveColor(QColorToColorRef(c));
}

void ColorPanel::SetActiveColor(int32_t color) {
    ActiveColor() = color & 0xFFFFFF;
    RefreshColorPanel();
    emit ColorsChanged();
}

void ColorPanel::DrawForeColor() {
    fore_->setIcon(ColorSquare(Globals().SystemForeColor, Globals().ColorPanelForeColorSelected));
}

void ColorPanel::DrawBackColor() {
    back_->setIcon(ColorSquare(Globals().SystemBackColor, !Globals().ColorPanelForeColorSelected));
}

void ColorPanel::RefreshColorPanel() {
    syncing_ = true;
    space_->setCurrentIndex(Space());
    const std::vector<int> v = ChannelValues(Space(), ActiveColor());
    for (size_t i = 0; i < boxes_.size() && i < v.size(); ++i)
        boxes_[i]->setValue(v[i]);
    syncing_ = false;
    DrawForeColor();
    DrawBackColor();
    for (ChannelBar* b : bars_)
        b->update();
}

// ------------------------------------------------------------------ swatches

class SwatchView : public QWidget {
  public:
    explicit SwatchView(SwatchPanel* owner) : QWidget(owner), owner_(owner) {
        setMouseTracking(true);
        setMinimumSize(120, 80);
        setContextMenuPolicy(Qt::CustomContextMenu);
    }
    static constexpr int Cell = 13;
    static constexpr int ListRow = 18;

    bool List() const { return Globals().ViewStyle == 1; }
    int Columns() const { return std::max(1, (width() - 2) / Cell); }
    QRect CellRect(int i) const {
        if (List()) return QRect(2, 2 + i * ListRow, width() - 4, ListRow - 2);
        return QRect(2 + (i % Columns()) * Cell, 2 + (i / Columns()) * Cell, Cell - 2, Cell - 2);
    }
    int At(const QPoint& p) const {
        const auto& list = Globals().ColorList;
        for (int i = 0; i < static_cast<int>(list.size()); ++i)
            if (CellRect(i).adjusted(0, 0, 1, 1).contains(p)) return i;
        return -1;
    }
    // The height the swatches need at the present width.
    int ContentHeight() const {
        const int n = static_cast<int>(Globals().ColorList.size());
        return List() ? n * ListRow + 4 : ((n + Columns() - 1) / Columns()) * Cell + 4;
    }
    void FitHeight() { setMinimumHeight(std::max(80, ContentHeight())); }

  protected:
    void resizeEvent(QResizeEvent*) override { FitHeight(); }
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        p.fillRect(rect(), palette().base());
        const auto& colors = Globals().ColorList;
        const auto& names = Globals().ColorName;
        for (int i = 0; i < static_cast<int>(colors.size()); ++i) {
            const QRect r = CellRect(i);
            if (!r.intersects(rect())) continue;
            if (List()) {
                p.fillRect(QRect(r.left(), r.top(), r.height(), r.height()), ColorRefToQColor(colors[i]));
                p.setPen(palette().text().color());
                p.drawText(r.adjusted(r.height() + 6, 0, 0, 0), Qt::AlignVCenter,
                           i < static_cast<int>(names.size()) ? names[i] : QString());
            } else {
                p.fillRect(r, ColorRefToQColor(colors[i]));
                p.setPen(QColor(120, 120, 120));
                p.drawRect(r.adjusted(0, 0, -1, -1));
            }
        }
    }
    void mousePressEvent(QMouseEvent* e) override {
        if (e->button() != Qt::LeftButton) return;
        const int i = At(e->position().toPoint());
        if (i >= 0)
            owner_->ChooseSwatch(i, e->modifiers() & Qt::ControlModifier);
        else
            owner_->AddColor(Globals().SystemForeColor);
    }
    void mouseMoveEvent(QMouseEvent* e) override {
        const int i = At(e->position().toPoint());
        const auto& names = Globals().ColorName;
        if (i >= 0 && i < static_cast<int>(names.size()))
            setToolTip(names[i]);
        else
            setToolTip(QStringLiteral("点按空白处以前景色新建色板"));
    }

  private:
    SwatchPanel* owner_;
};

QStringList SwatchPanel::BookNames() {
    return {
        QStringLiteral("PS默认色板"),      QStringLiteral("GDI+内部颜色"), QStringLiteral("网络安全色"),
        QStringLiteral("Web 色相"),        QStringLiteral("Web 色谱"),     QStringLiteral("Mac系统色板"),
        QStringLiteral("Windows系统色板"), QStringLiteral("照片滤镜颜色"), QStringLiteral("系统内部颜色")};
}

const std::vector<NamedColor>& SwatchPanel::Book(int index) {
    static const std::vector<NamedColor> none;
    switch (index) {
    case 0:
        return DefaultSwatchTable();
    case 1:
        return NamedColorTable();
    case 2:
        return WebColorTable(WebSafeBook);
    case 3:
        return WebColorTable(WebHueBook);
    case 4:
        return WebColorTable(WebSpectrumBook);
    case 5:
        return WebColorTable(MacSystemBook);
    case 6:
        return WebColorTable(WindowsSystemBook);
    case 7:
        return PhotoFilterTable();
    case 8:
        return SystemColorTable();
    default:
        return none;
    }
}

SwatchPanel::SwatchPanel(QWidget* parent) : QWidget(parent) {
    view_ = new SwatchView(this);
    menuButton_ = new QToolButton(this);
    menuButton_->setText(QStringLiteral("色板"));
    menuButton_->setPopupMode(QToolButton::InstantPopup);
    auto* menu = new QMenu(menuButton_);
    menu->addAction(QStringLiteral("小缩览图"), this, [this] { SetViewStyle(0); });
    menu->addAction(QStringLiteral("小列表"), this, [this] { SetViewStyle(1); });
    menu->addSeparator();
    menu->addAction(QStringLiteral("复位色板"), this, &SwatchPanel::ResetSwatches);
    menu->addAction(QStringLiteral("载入色板..."), this, [this] {
        const QString f =
            QFileDialog::getOpenFileName(this, QStringLiteral("载入色板"), QString(),
                                         QStringLiteral("色板 (*.swatches *.txt);;所有文件 (*)"));
        if (!f.isEmpty() && !LoadFrom(f, false))
            QToolTip::showText(QCursor::pos(), QStringLiteral("无法读取色板文件."));
    });
    menu->addAction(QStringLiteral("存储色板..."), this, [this] {
        const QString f = QFileDialog::getSaveFileName(this, QStringLiteral("存储色板"), QString(),
                                                       QStringLiteral("色板 (*.swatches)"));
        if (!f.isEmpty() && !SaveTo(f))
            QToolTip::showText(QCursor::pos(), QStringLiteral("无法存储色板文件."));
    });
    menu->addAction(QStringLiteral("替换色板..."), this, [this] {
        const QString f =
            QFileDialog::getOpenFileName(this, QStringLiteral("替换色板"), QString(),
                                         QStringLiteral("色板 (*.swatches *.txt);;所有文件 (*)"));
        if (!f.isEmpty() && !LoadFrom(f, true))
            QToolTip::showText(QCursor::pos(), QStringLiteral("无法读取色板文件."));
    });
    menu->addSeparator();
    const QStringList books = BookNames();
    for (int i = 0; i < books.size(); ++i)
        menu->addAction(books[i], this, [this, i] { UseBook(i); });
    menuButton_->setMenu(menu);

    connect(view_, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        const int i = view_->At(at);
        if (i < 0) return;
        QMenu m;
        m.addAction(QStringLiteral("删除色板"), this, [this, i] { RemoveAt(i); });
        m.exec(view_->mapToGlobal(at));
    });

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(2, 2, 2, 2);
    auto* top = new QHBoxLayout;
    top->addStretch(1);
    top->addWidget(menuButton_);
    column->addLayout(top);
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(view_);
    column->addWidget(scroll, 1);
}

void SwatchPanel::Refresh() {
    view_->FitHeight();
    view_->update();
}

void SwatchPanel::ResetSwatches() {
    UseBook(0);
}

void SwatchPanel::UseBook(int index) {
    const std::vector<NamedColor>& book = Book(index);
    if (book.empty()) return;
    LoadSwatches(book, Globals().ColorList, Globals().ColorName);
    Refresh();
}

bool SwatchPanel::LoadFrom(const QString& path, bool replace) {
    std::vector<int32_t> colors;
    std::vector<QString> names;
    if (!LoadSwatchFile(path, colors, names)) return false;
    auto& list = Globals().ColorList;
    auto& listNames = Globals().ColorName;
    if (replace) {
        list.clear();
        listNames.clear();
    }
    for (size_t i = 0; i < colors.size() && list.size() < static_cast<size_t>(MaxSwatchCount); ++i) {
        list.push_back(colors[i]);
        listNames.push_back(names[i]);
    }
    Refresh();
    return true;
}

bool SwatchPanel::SaveTo(const QString& path) const {
    return SaveSwatchFile(path, Globals().ColorList, Globals().ColorName);
}

void SwatchPanel::AddColor(int32_t color) {
    auto& list = Globals().ColorList;
    if (list.size() >= static_cast<size_t>(MaxSwatchCount)) return;
    list.push_back(color & 0xFFFFFF);
    Globals().ColorName.push_back(QStringLiteral("色板 %1").arg(list.size()));
    Refresh();
}

void SwatchPanel::RemoveAt(int index) {
    auto& list = Globals().ColorList;
    auto& names = Globals().ColorName;
    if (index < 0 || index >= static_cast<int>(list.size())) return;
    list.erase(list.begin() + index);
    if (index < static_cast<int>(names.size())) names.erase(names.begin() + index);
    Refresh();
}

void SwatchPanel::ChooseSwatch(int index, bool background) {
    const auto& list = Globals().ColorList;
    if (index < 0 || index >= static_cast<int>(list.size())) return;
    (background ? Globals().SystemBackColor : Globals().SystemForeColor) = list[index] & 0xFFFFFF;
    emit ColorsChanged();
}

void SwatchPanel::SetViewStyle(int32_t style) {
    Globals().ViewStyle = style == 1 ? 1 : 0;
    Refresh();
}

int SwatchPanel::SwatchAt(const QPoint& at) const {
    return view_->At(at);
}

} // namespace vm
