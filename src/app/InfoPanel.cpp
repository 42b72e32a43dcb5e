#include "app/InfoPanel.h"

#include "canvas/Canvas.h"
#include "core/AppSettings.h"
#include "core/ColorSpaces.h"
#include "core/Image.h"
#include "core/PixelFormat.h"

#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace vm {

namespace {

const QString Label(const char* text) {
    // The labels pad to seven characters so that the values line up.
    return QString::fromLatin1(text).leftJustified(7, QLatin1Char(' '));
}

QString Whole(double v) {
    return QString::number(static_cast<long long>(std::lround(v)));
}

QString Percent(double v) {
    return Whole(v) + QStringLiteral("%");
}

int32_t& ModeSetting(int column) {
    return column == 0 ? Globals().SelectedModeOne : Globals().SelectedModeTwo;
}

} // namespace

QStringList InfoModeNames() {
    return {QStringLiteral("实际颜色"), QStringLiteral("RGB颜色"),  QStringLiteral("HSB颜色"),
            QStringLiteral("灰度"),     QStringLiteral("CMYK颜色"), QStringLiteral("Lab颜色"),
            QStringLiteral("Web颜色")};
}

QStringList InfoReadout(const CImage* image, int32_t x, int32_t y, int32_t mode, int32_t sampleSize) {
    const bool grey = image && image->PixelFormat == PixelFormat8bppGray;
    const int bits = image ? BitsPerPixel(image->PixelFormat) : 0;
    const bool indexed = image && (image->PixelFormat == PixelFormat1bppIndexed ||
                                   image->PixelFormat == PixelFormat4bppIndexed ||
                                   image->PixelFormat == PixelFormat8bppIndexed);
    const bool alpha = image && image->PixelFormat == PixelFormat32bppARGB;
    int32_t r = 0, g = 0, b = 0, a = 255;
    const bool inside = image && x >= 0 && y >= 0 && x < image->Width() && y < image->Height() &&
                        image->GetPixelColor(x, y, r, g, b, a, sampleSize);
    // Sub-byte pictures are not averaged: their colour comes from the index.
    int32_t index = -1;
    if (inside && indexed) {
        const uint8_t* row = image->Row(y);
        index = IndexInRow(row, x, bits);
        if (bits < 8) {
            const uint8_t* e = image->Palette().Entry(index);
            r = e[2], g = e[1], b = e[0];
        }
    }
    auto rows = [&](std::initializer_list<std::pair<const char*, QString>> items) {
        QStringList out;
        for (const auto& [label, value] : items)
            out << Label(label) + (inside ? value : QString());
        return out;
    };
    switch (mode) {
    case InfoActualColor:
        if (grey) return rows({{"K:", Percent(image->GetGrayK(x, y))}});
        if (indexed)
            return rows({{"R:", Whole(r)}, {"G:", Whole(g)}, {"B:", Whole(b)}, {"Idx:", Whole(index)}});
        if (alpha) return rows({{"R:", Whole(r)}, {"G:", Whole(g)}, {"B:", Whole(b)}, {"A:", Whole(a)}});
        [[fallthrough]];
    case InfoRgb:
        return rows({{"R:", Whole(r)}, {"G:", Whole(g)}, {"B:", Whole(b)}});
    case InfoHsb: {
        const Hsb c = RgbToHsb(r, g, b);
        return rows({{"H:", Whole(c.H) + QStringLiteral("°")}, {"S:", Percent(c.S)}, {"B:", Percent(c.B)}});
    }
    case InfoGrey:
        return rows(
            {{"K:", Percent(grey ? image->GetGrayK(x, y) : 100.0 - GreyValue(r, g, b) * 100.0 / 255.0)}});
    case InfoCmyk: {
        const Cmyk c = RgbToCmyk(r, g, b);
        return rows({{"C:", Percent(c.C)}, {"M:", Percent(c.M)}, {"Y:", Percent(c.Y)}, {"K:", Percent(c.K)}});
    }
    case InfoLab: {
        const Lab c = RgbToLab(r, g, b);
        return rows({{"L:", Whole(c.L)}, {"A:", Whole(c.A)}, {"B:", Whole(c.B)}});
    }
    case InfoWeb: {
        int32_t wr = r, wg = g, wb = b;
        NearestWebSafe(wr, wg, wb);
        return rows({{"R:", QStringLiteral("%1").arg(wr, 2, 16, QLatin1Char('0')).toUpper()},
                     {"G:", QStringLiteral("%1").arg(wg, 2, 16, QLatin1Char('0')).toUpper()},
                     {"B:", QStringLiteral("%1").arg(wb, 2, 16, QLatin1Char('0')).toUpper()}});
    }
    default:
        return rows({{"R:", Whole(r)}, {"G:", Whole(g)}, {"B:", Whole(b)}});
    }
}

InfoPanel::InfoPanel(QWidget* parent) : QWidget(parent) {
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(6, 6, 6, 6);
    QFont mono = font();
    mono.setFamily(QStringLiteral("monospace"));
    mono.setStyleHint(QFont::Monospace);
    for (int i = 0; i < 2; ++i) {
        modeButtons_[i] = new QToolButton(this);
        modeButtons_[i]->setPopupMode(QToolButton::InstantPopup);
        modeButtons_[i]->setAutoRaise(true);
        auto* menu = new QMenu(modeButtons_[i]);
        const QStringList names = InfoModeNames();
        for (int m = 0; m < names.size(); ++m)
            menu->addAction(names[m], this, [this, i, m] { SetMode(i, m); });
        modeButtons_[i]->setMenu(menu);
        columns_[i] = new QLabel(this);
        columns_[i]->setFont(mono);
        columns_[i]->setAlignment(Qt::AlignTop | Qt::AlignLeft);
        columns_[i]->setMinimumWidth(90);
        grid->addWidget(modeButtons_[i], 0, i);
        grid->addWidget(columns_[i], 1, i);
    }
    position_ = new QLabel(this);
    size_ = new QLabel(this);
    position_->setFont(mono);
    size_->setFont(mono);
    grid->addWidget(position_, 2, 0);
    grid->addWidget(size_, 2, 1);
    grid->setRowStretch(3, 1);
    Redraw();
}

void InfoPanel::SetCanvas(Canvas* target) {
    if (canvas_ == target) return;
    if (canvas_) disconnect(canvas_, nullptr, this, nullptr);
    canvas_ = target;
    pointer_ = QPoint(-1, -1);
    size_->clear();
    if (canvas_) {
        connect(canvas_, &Canvas::PointerMoved, this,
                [this](QPoint at, Qt::MouseButtons) { AdjustInfoPosition(at); });
        connect(canvas_, &Canvas::SelectionRangeChanged, this, &InfoPanel::SetSelectionSize);
        connect(canvas_, &QObject::destroyed, this, [this] { canvas_ = nullptr; });
        connect(canvas_, &Canvas::DocumentRefreshed, this, &InfoPanel::Redraw);
    }
    Redraw();
}

void InfoPanel::AdjustInfoPosition(const QPoint& at) {
    pointer_ = at;
    Redraw();
}

void InfoPanel::SetSelectionSize(int w, int h) {
    size_->setText(Label("W:") + QString::number(w) + QLatin1Char('\n') + Label("H:") + QString::number(h));
}

void InfoPanel::SetMode(int column, int32_t mode) {
    if (column < 0 || column > 1 || mode < 0 || mode >= InfoModeCount) return;
    ModeSetting(column) = mode;
    Redraw();
}

QString InfoPanel::ColumnText(int column) const {
    return columns_[column & 1]->text();
}
QString InfoPanel::PositionText() const {
    return position_->text();
}
QString InfoPanel::SizeText() const {
    return size_->text();
}

void InfoPanel::Redraw() {
    const CImage* image = canvas_ && canvas_->HasImage() ? canvas_->Image() : nullptr;
    const QStringList names = InfoModeNames();
    for (int i = 0; i < 2; ++i) {
        const int32_t mode = std::clamp(ModeSetting(i), 0, static_cast<int32_t>(InfoModeCount) - 1);
        modeButtons_[i]->setText(names[mode]);
        columns_[i]->setText(InfoReadout(image, pointer_.x(), pointer_.y(), mode, Globals().SampleSize)
                                 .join(QLatin1Char('\n')));
    }
    const bool inside = image && pointer_.x() >= 0 && pointer_.y() >= 0 && pointer_.x() < image->Width() &&
                        pointer_.y() < image->Height();
    position_->setText(Label("X:") + (inside ? QString::number(pointer_.x()) : QString()) +
                       QLatin1Char('\n') + Label("Y:") +
                       (inside ? QString::number(pointer_.y()) : QString()));
}

} // namespace vm
