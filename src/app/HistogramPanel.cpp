#include "app/HistogramPanel.h"

#include "canvas/Canvas.h"
#include "core/AppSettings.h"
#include "core/Image.h"
#include "core/PixelFormat.h"

#include <QActionGroup>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace vm {

namespace {

constexpr int Levels = 256;
// Heights of a plot in the compact and the larger views.
constexpr int SmallHeight = 70;
constexpr int BigHeight = 100;
constexpr int ChannelHeight = 50;

enum ViewMode : int32_t { CompactView = 0, ExtendedView = 1, AllChannelsView = 2 };

// What to draw of one plot: up to three rows of counts and their colours.
struct Curve {
    const uint32_t* Counts[3] = {nullptr, nullptr, nullptr};
    int Rows = 0;
    QColor Single = Qt::black; // the colour of a one-row plot
    bool Overlap = false;      // three rows drawn with their overlaps coloured
};

// Draws a plot of 256 columns into Area.
void DrawHistgram(QPainter& p, const QRect& area, const Curve& c) {
    p.fillRect(area, Qt::white);
    uint64_t peak = 1;
    std::array<uint64_t, Levels> sum{};
    for (int i = 0; i < Levels; ++i) {
        uint64_t s = 0;
        for (int r = 0; r < c.Rows; ++r) {
            s += c.Counts[r][i];
            if (c.Overlap) peak = std::max<uint64_t>(peak, c.Counts[r][i]);
        }
        sum[i] = s;
        if (!c.Overlap) peak = std::max(peak, s);
    }
    const int h = area.height();
    auto heightOf = [&](uint64_t v) {
        return static_cast<int>(std::min<uint64_t>(h, (v * h + peak - 1) / peak));
    };
    for (int i = 0; i < Levels; ++i) {
        const int x = area.left() + i * area.width() / Levels;
        const int x2 = area.left() + (i + 1) * area.width() / Levels;
        if (!c.Overlap) {
            const int bar = heightOf(sum[i]);
            if (bar) p.fillRect(QRect(x, area.bottom() - bar + 1, std::max(1, x2 - x), bar), c.Single);
            continue;
        }
        // Red, green and blue (rows are blue, green, red); where two cover a
        // pixel it takes their mix, where all three it is grey.
        const int hr = heightOf(c.Counts[2][i]), hg = heightOf(c.Counts[1][i]), hb = heightOf(c.Counts[0][i]);
        for (int y = 0; y < std::max({hr, hg, hb}); ++y) {
            const bool r = y < hr, g = y < hg, b = y < hb;
            QColor colour;
            if (r && g && b)
                colour = QColor(128, 128, 128);
            else if (r && g)
                colour = QColor(255, 255, 0);
            else if (r && b)
                colour = QColor(255, 0, 255);
            else if (g && b)
                colour = QColor(0, 255, 255);
            else
                colour = r ? QColor(255, 0, 0) : g ? QColor(0, 255, 0) : QColor(0, 0, 255);
            p.fillRect(QRect(x, area.bottom() - y, std::max(1, x2 - x), 1), colour);
        }
    }
    p.setPen(QColor(160, 160, 160));
    p.drawRect(area.adjusted(-1, -1, 0, 0));
}

} // namespace

class HistogramPlot : public QWidget {
  public:
    explicit HistogramPlot(HistogramPanel* owner) : QWidget(owner), owner_(owner) {
        setObjectName(QStringLiteral("PicHist"));
        setMouseTracking(true);
        setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    }
    QRect MainArea() const { return QRect(2, 2, Levels, MainHeight()); }
    int MainHeight() const { return Globals().HistViewMode == CompactView ? SmallHeight : BigHeight; }
    QSize sizeHint() const override {
        int h = MainHeight() + 4;
        if (Globals().HistViewMode == AllChannelsView && !owner_->grey_) h += 3 * (ChannelHeight + 6);
        return QSize(Levels + 4, h);
    }
    QImage Render() const {
        QImage img(sizeHint(), QImage::Format_RGB32);
        img.fill(palette().window().color());
        QPainter p(&img);
        if (!owner_->valid_) {
            // The blank picture: an empty frame.
            p.fillRect(MainArea(), QColor(235, 235, 235));
            p.setPen(QColor(160, 160, 160));
            p.drawRect(MainArea().adjusted(-1, -1, 0, 0));
            return img;
        }
        const HistogramSample& s = owner_->sample_;
        const bool original = Globals().UseOriginalColor;
        const int channel = owner_->channel_->currentIndex();
        Curve main;
        if (owner_->grey_) {
            main.Counts[0] = s.Rows.data();
            main.Rows = 1;
        } else if (channel == HistogramRgb && original) {
            for (int r = 0; r < 3; ++r)
                main.Counts[r] = s.Rows.data() + r * Levels;
            main.Rows = 3;
            main.Overlap = true;
        } else {
            static thread_local std::vector<uint32_t> levels(Levels);
            for (int i = 0; i < Levels; ++i)
                levels[i] = static_cast<uint32_t>(std::min<uint64_t>(s.Levels[i], UINT32_MAX));
            main.Counts[0] = levels.data();
            main.Rows = 1;
            if (original && channel >= HistogramRed && channel <= HistogramBlue)
                main.Single = channel == HistogramRed     ? Qt::red
                              : channel == HistogramGreen ? Qt::green
                                                          : Qt::blue;
        }
        DrawHistgram(p, MainArea(), main);
        if (Globals().HistViewMode == AllChannelsView && !owner_->grey_) {
            // Red, green and blue below, each in its own area.
            const QColor colours[3] = {Qt::red, Qt::green, Qt::blue};
            for (int k = 0; k < 3; ++k) {
                Curve one;
                one.Counts[0] = s.Rows.data() + (2 - k) * Levels;
                one.Rows = 1;
                one.Single = original ? colours[k] : Qt::black;
                DrawHistgram(
                    p, QRect(2, MainArea().bottom() + 8 + k * (ChannelHeight + 6), Levels, ChannelHeight),
                    one);
            }
        }
        return img;
    }

  protected:
    void paintEvent(QPaintEvent*) override { QPainter(this).drawImage(0, 0, Render()); }
    void mouseMoveEvent(QMouseEvent* e) override {
        const QPoint at = e->position().toPoint();
        const QRect a = MainArea();
        owner_->ShowLevel(at.x() >= a.left() && at.x() <= a.right() && at.y() >= a.top() &&
                                  at.y() <= a.bottom()
                              ? (at.x() - a.left()) * Levels / a.width()
                              : -1);
    }
    void leaveEvent(QEvent*) override { owner_->ShowLevel(-1); }

  private:
    HistogramPanel* owner_;
};

HistogramPanel::HistogramPanel(QWidget* parent) : QWidget(parent) {
    channel_ = new QComboBox(this);
    source_ = new QComboBox(this);
    source_->addItems({QStringLiteral("整个图像"), QStringLiteral("选中的图层")});
    cache_ = new QToolButton(this);
    cache_->setAutoRaise(true);
    cache_->setToolTip(QStringLiteral("不使用高速缓存的刷新"));
    menu_ = new QToolButton(this);
    menu_->setText(QStringLiteral("≡"));
    menu_->setPopupMode(QToolButton::InstantPopup);
    menu_->setAutoRaise(true);

    auto* menu = new QMenu(menu_);
    auto* views = new QActionGroup(menu);
    const QStringList names = {QStringLiteral("紧凑视图"), QStringLiteral("扩展视图"),
                               QStringLiteral("全部通道视图")};
    for (int i = 0; i < names.size(); ++i) {
        QAction* a = menu->addAction(names[i], this, [this, i] { SetViewMode(i); });
        a->setCheckable(true);
        a->setChecked(Globals().HistViewMode == i);
        views->addAction(a);
    }
    menu->addSeparator();
    QAction* stats =
        menu->addAction(QStringLiteral("显示统计数据"), this, [this](bool on) { SetShowStatistics(on); });
    stats->setCheckable(true);
    stats->setChecked(Globals().ShowStatistics);
    QAction* colours =
        menu->addAction(QStringLiteral("用原色显示通道"), this, [this](bool on) { SetUseOriginalColor(on); });
    colours->setCheckable(true);
    colours->setChecked(Globals().UseOriginalColor);
    menu->addSeparator();
    menu->addAction(QStringLiteral("不使用高速缓存的刷新"), this, [this] { UpdateHistGram(true); });
    menu_->setMenu(menu);

    plot_ = new HistogramPlot(this);
    stats_label_ = new QLabel(this);
    pointer_label_ = new QLabel(this);
    stats_label_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    pointer_label_->setAlignment(Qt::AlignTop | Qt::AlignLeft);

    auto* top = new QHBoxLayout;
    top->addWidget(new QLabel(QStringLiteral("通道:"), this));
    top->addWidget(channel_, 1);
    top->addWidget(cache_);
    top->addWidget(menu_);
    auto* sourceRow = new QHBoxLayout;
    sourceRow->addWidget(new QLabel(QStringLiteral("源:"), this));
    sourceRow->addWidget(source_, 1);
    auto* info = new QHBoxLayout;
    info->addWidget(stats_label_, 1);
    info->addWidget(pointer_label_, 1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->addLayout(top);
    column->addLayout(sourceRow);
    column->addWidget(plot_, 0, Qt::AlignHCenter);
    column->addLayout(info);
    column->addStretch(1);

    connect(cache_, &QToolButton::clicked, this, [this] { UpdateHistGram(true); });
    connect(channel_, &QComboBox::currentIndexChanged, this, [this](int) { UpdateHistGram(false); });
    connect(source_, &QComboBox::currentIndexChanged, this, [this](int) { UpdateHistGram(false); });
    RebuildChannelList();
    SetViewMode(Globals().HistViewMode);
}

void HistogramPanel::SetCanvas(Canvas* target) {
    if (canvas_ != target) {
        if (canvas_) disconnect(canvas_, nullptr, this, nullptr);
        canvas_ = target;
        if (canvas_) connect(canvas_, &QObject::destroyed, this, [this] { canvas_ = nullptr; });
    }
    UpdateHistGram(false);
}

QStringList HistogramPanel::ChannelNames() const {
    QStringList out;
    for (int i = 0; i < channel_->count(); ++i)
        out << channel_->itemText(i);
    return out;
}

void HistogramPanel::RebuildChannelList() {
    const bool grey = canvas_ && canvas_->HasImage() && canvas_->Image()->PixelFormat == PixelFormat8bppGray;
    const QStringList names = HistogramChannelNames(grey);
    if (names == ChannelNames()) return;
    const QSignalBlocker block(channel_);
    channel_->clear();
    channel_->addItems(names);
    channel_->setCurrentIndex(0);
}

void HistogramPanel::UpdateHistGram(bool noCache) {
    RebuildChannelList();
    valid_ = false;
    const CImage* image = canvas_ && canvas_->HasImage() ? canvas_->Image() : nullptr;
    if (image) {
        grey_ = image->PixelFormat == PixelFormat8bppGray;
        HistogramSample s;
        if (SampleHistogram(*image, std::max(0, channel_->currentIndex()), noCache, s)) {
            sample_ = std::move(s);
            stats_ = ComputeHistogramStatistics(sample_.Levels, sample_.HistPixelCount, sample_.Triple);
            valid_ = true;
        }
    }
    Redraw();
}

void HistogramPanel::SetViewMode(int32_t mode) {
    Globals().HistViewMode = std::clamp(mode, 0, 2);
    // The compact view has no lists and no statistics.
    const bool compact = Globals().HistViewMode == CompactView;
    channel_->setVisible(!compact);
    source_->setVisible(!compact);
    for (QLabel* l : findChildren<QLabel*>())
        if (l != stats_label_ && l != pointer_label_) l->setVisible(!compact);
    plot_->updateGeometry();
    Redraw();
}

void HistogramPanel::SetShowStatistics(bool show) {
    Globals().ShowStatistics = show;
    Redraw();
}

void HistogramPanel::SetUseOriginalColor(bool use) {
    Globals().UseOriginalColor = use;
    Redraw();
}

void HistogramPanel::SetChannel(int index) {
    if (index >= 0 && index < channel_->count()) channel_->setCurrentIndex(index);
}

QString HistogramPanel::StatisticsText() const {
    return stats_label_->text();
}

QString HistogramPanel::PointerText() const {
    return pointer_label_->text();
}

QImage HistogramPanel::Plot() const {
    return plot_->Render();
}

void HistogramPanel::ShowLevel(int level) {
    const QString unknown = QStringLiteral("...");
    QString levelText = unknown, countText = unknown, shareText = unknown;
    if (valid_ && level >= 0 && level < Levels) {
        const uint64_t count = sample_.Levels[level];
        const double total = double(sample_.HistPixelCount) * (sample_.Triple ? 3 : 1);
        levelText = QString::number(level);
        countText = QString::number(count);
        shareText = FormatStat(total > 0 ? count * 100.0 / total : 0.0);
    }
    pointer_label_->setText(
        QStringLiteral("色阶: %1\n数量: %2\n百分位: %3").arg(levelText, countText, shareText));
}

void HistogramPanel::Redraw() {
    // The cache button shows a warning sign while the counts are sampled.
    QPixmap pm(14, 14);
    pm.fill(Qt::transparent);
    if (valid_ && sample_.CacheLevel > 1) {
        QPainter p(&pm);
        p.setRenderHint(QPainter::Antialiasing);
        const QPointF tri[3] = {QPointF(7, 1), QPointF(13, 13), QPointF(1, 13)};
        p.setBrush(QColor(250, 200, 0));
        p.setPen(QColor(120, 90, 0));
        p.drawPolygon(tri, 3);
        p.drawLine(QPointF(7, 5), QPointF(7, 9));
        p.drawPoint(QPointF(7, 11));
    }
    cache_->setIcon(QIcon(pm));
    cache_->setObjectName(valid_ && sample_.CacheLevel > 1 ? QStringLiteral("CacheLevelMouseInPicture")
                                                           : QStringLiteral("CacheLevelNormalPicture"));
    const bool show = Globals().ShowStatistics && Globals().HistViewMode != CompactView;
    stats_label_->setVisible(show);
    pointer_label_->setVisible(show);
    if (valid_)
        stats_label_->setText(
            QStringLiteral("平均值: %1\n标准偏差: %2\n中间值: %3\n像素: %4\n高速缓存级别: %5")
                .arg(FormatStat(stats_.Mean), FormatStat(stats_.StdDev))
                .arg(stats_.Median)
                .arg(stats_.Pixels)
                .arg(sample_.CacheLevel));
    else
        stats_label_->setText(QStringLiteral("平均值:\n标准偏差:\n中间值:\n像素:\n高速缓存级别:"));
    ShowLevel(-1);
    plot_->setFixedSize(plot_->sizeHint());
    plot_->update();
}

} // namespace vm
