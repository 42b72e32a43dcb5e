#pragma once
// The histogram panel: the levels of the selected pixels in a chosen channel,
// counted on every 1st, 2nd or 4th row and column by the selection's size,
// in a compact, an extended or an all-channels view, with the statistics and
// the readout of the level under the pointer.
#include "core/HistogramStats.h"

#include <QWidget>

#include <cstdint>

class QComboBox;
class QLabel;
class QToolButton;

namespace vm {

class Canvas;
class HistogramPlot;

class HistogramPanel : public QWidget {
    Q_OBJECT
  public:
    explicit HistogramPanel(QWidget* Parent = nullptr);

    void SetCanvas(Canvas* Target);
    // Counts and draws again; NoCache counts every pixel ("不使用高速缓存的刷新").
    void UpdateHistGram(bool NoCache);
    void SetViewMode(int32_t Mode);
    void SetShowStatistics(bool Show);
    void SetUseOriginalColor(bool Use);
    void SetChannel(int Index);
    // The readout for a level under the pointer; -1 when the pointer left.
    void ShowLevel(int Level);

    bool HasData() const { return valid_; }
    int32_t CacheLevel() const { return sample_.CacheLevel; }
    int64_t HistPixelCount() const { return sample_.HistPixelCount; }
    const HistogramSample& Sample() const { return sample_; }
    QStringList ChannelNames() const;
    QString StatisticsText() const;
    QString PointerText() const;
    // The plot as drawn, for the views and for tests.
    QImage Plot() const;

  private:
    void RebuildChannelList();
    void Redraw();

    Canvas* canvas_ = nullptr;
    HistogramSample sample_;
    HistogramStatistics stats_;
    bool valid_ = false;
    bool grey_ = false;
    QComboBox* channel_;
    QComboBox* source_;
    QToolButton* cache_;
    QToolButton* menu_;
    HistogramPlot* plot_;
    QLabel* stats_label_;
    QLabel* pointer_label_;
    friend class HistogramPlot;
};

} // namespace vm
