#include "app/PanelArea.h"

#include "app/ColorPanel.h"
#include "app/HistogramPanel.h"
#include "app/InfoPanel.h"
#include "app/NavigatorPanel.h"
#include "canvas/Canvas.h"
#include "core/AppSettings.h"

#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace vm {

PanelArea::PanelArea(QWidget* parent) : QWidget(parent) {
    panOrInfo_ = new QTabWidget(this);
    panOrInfo_->setObjectName(QStringLiteral("TabPanOrInfo"));
    navigator_ = new NavigatorPanel(panOrInfo_);
    histogram_ = new HistogramPanel(panOrInfo_);
    info_ = new InfoPanel(panOrInfo_);
    panOrInfo_->addTab(navigator_, QStringLiteral("导航器"));
    panOrInfo_->addTab(histogram_, QStringLiteral("直方图"));
    panOrInfo_->addTab(info_, QStringLiteral("信息"));

    colorAndPalette_ = new QTabWidget(this);
    colorAndPalette_->setObjectName(QStringLiteral("TabColorAndPalette"));
    color_ = new ColorPanel(colorAndPalette_);
    swatches_ = new SwatchPanel(colorAndPalette_);
    colorAndPalette_->addTab(color_, QStringLiteral("颜色"));
    colorAndPalette_->addTab(swatches_, QStringLiteral("色板"));

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(panOrInfo_, 3);
    column->addWidget(colorAndPalette_, 2);
    setMinimumWidth(280);

    panOrInfo_->setCurrentIndex(std::clamp(Globals().PanAndInfoActiveTab, 0, 2));
    colorAndPalette_->setCurrentIndex(std::clamp(Globals().ColorActiveTab, 0, 1));
    connect(panOrInfo_, &QTabWidget::currentChanged, this, [this](int i) {
        Globals().PanAndInfoActiveTab = i;
        RefreshOpenPanels();
    });
    connect(colorAndPalette_, &QTabWidget::currentChanged, this, [this](int i) {
        Globals().ColorActiveTab = i;
        RefreshOpenPanels();
    });
    connect(swatches_, &SwatchPanel::ColorsChanged, this, &PanelArea::ColorsChanged);
}

void PanelArea::SetCanvas(Canvas* target) {
    if (canvas_ == target) return;
    if (canvas_) disconnect(canvas_, nullptr, this, nullptr);
    canvas_ = target;
    navigator_->SetCanvas(target);
    info_->SetCanvas(target);
    if (canvas_) {
        // A command changes the pixels or the selection, often both: the open
        // panels draw once, when the command is over.
        connect(canvas_, &Canvas::DocumentRefreshed, this, &PanelArea::ScheduleRefresh);
        connect(canvas_, &Canvas::SelectionRangeChanged, this, &PanelArea::ScheduleRefresh);
        connect(canvas_, &QObject::destroyed, this, [this] { canvas_ = nullptr; });
        // The colour picker sets the colours; the colour panel shows them.
        connect(canvas_, &Canvas::ForeColorPicked, this, &PanelArea::ColorsChanged);
        connect(canvas_, &Canvas::BackColorPicked, this, &PanelArea::ColorsChanged);
    }
    RefreshOpenPanels();
}

void PanelArea::ScheduleRefresh() {
    if (refreshPending_) return;
    refreshPending_ = true;
    QTimer::singleShot(0, this, [this] {
        if (refreshPending_) RefreshOpenPanels();
    });
}

void PanelArea::RefreshOpenPanels() {
    refreshPending_ = false;
    QWidget* open = panOrInfo_->currentWidget();
    if (open == navigator_) {
        navigator_->UpdatePlacementAndBuffer();
        navigator_->UpdateStandardZoomControlState();
    } else if (open == histogram_) {
        histogram_->SetCanvas(canvas_);
    }
    if (colorAndPalette_->currentWidget() == color_)
        color_->RefreshColorPanel();
    else
        swatches_->Refresh();
}

void PanelArea::ColorsChanged() {
    color_->RefreshColorPanel();
}

} // namespace vm
