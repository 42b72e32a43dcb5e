#pragma once
// The operation catalogue: one row per operation with parameters, declaring
// them once — key, range, default, reset value — for the dialogs, the repeat
// command, the command-line tool and the tests alike. Never write a default
// or a range a second time elsewhere.
#include "core/Image.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace vm {

struct SliderSpec {
    QString Key;
    QString Label;
    QString Unit;
    int32_t Min = 0;
    int32_t Max = 100;
    int32_t Default = 0;
    std::optional<int32_t> Reset;       // when it differs from Default
    std::optional<int32_t> MaxOnRgba32; // a lower maximum on RGBA 32 pictures
    int32_t ResetValue() const { return Reset.value_or(Default); }
};

inline SliderSpec Slider(const QString& Key, const QString& Label, const QString& Unit, int32_t Min, int32_t Max,
                         int32_t Default) {
    SliderSpec s;
    s.Key = Key;
    s.Label = Label;
    s.Unit = Unit;
    s.Min = Min;
    s.Max = Max;
    s.Default = Default;
    return s;
}

struct ChoiceSpec {
    QString Key;
    QString Label;
    QStringList Choices; // index = value
    int32_t Default = 0;
};

struct CheckSpec {
    QString Key;
    QString Label;
    bool Default = false;
};

// Free text parameters the sliders cannot hold (curve points, file paths).
struct TextSpec {
    QString Key;
    QString Label;
    QString Default;
    // Whether a text is acceptable; empty accepts every text.
    std::function<bool(const QString&)> Check;
};

// Parameter values by key, as text; missing keys take the row's defaults.
class Params {
public:
    Params() = default;
    explicit Params(QMap<QString, QString> values) : values_(std::move(values)) {}
    void Set(const QString& key, const QString& value) { values_[key] = value; }
    void Set(const QString& key, int32_t value) { values_[key] = QString::number(value); }
    bool Has(const QString& key) const { return values_.contains(key); }
    QString Text(const QString& key) const { return values_.value(key); }
    int32_t Int(const QString& key) const { return values_.value(key).toInt(); }
    double Double(const QString& key) const { return values_.value(key).toDouble(); }
    bool Bool(const QString& key) const {
        const QString v = values_.value(key).trimmed().toLower();
        return v == QLatin1String("1") || v == QLatin1String("true") || v == QLatin1String("-1");
    }
    const QMap<QString, QString>& Values() const { return values_; }

private:
    QMap<QString, QString> values_;
};

struct Operation {
    QString Key;      // the stored key, e.g. "GuassBlur"
    QString Function; // the function's name, e.g. "GaussianBlur"
    QString Title;    // the command's name, e.g. "高斯模糊"
    QString Family;   // "调整", "模糊", ...
    QString Section;  // settings section; empty means the key
    std::vector<SliderSpec> Sliders;
    std::vector<ChoiceSpec> Choices;
    std::vector<CheckSpec> Checks;
    std::vector<TextSpec> Texts;
    std::optional<SliderSpec> Dial; // an angle, -360..360
    // Pixel formats the operation accepts; empty means every format (each
    // format is then treated as the processing frame says).
    std::vector<uint32_t> Formats;
    // Runs the operation; empty for a row whose family is not built yet.
    std::function<bool(CImage&, const Params&)> Run;

    QString SettingsSection() const { return Section.isEmpty() ? Key : Section; }
    bool Accepts(uint32_t PixelFormat) const;
    // The parameters with every missing key at its default.
    Params WithDefaults(const Params& Given) const;
    // Checks keys and ranges; false with a message naming the first fault.
    bool Validate(const Params& Given, uint32_t PixelFormat, QString& Error) const;
};

// Every row, in the order families register them.
const std::vector<Operation>& Catalogue();
// A row by its key or its function name; null when there is none.
const Operation* FindOperation(const QString& KeyOrFunction);

// Each family adds its rows here; the catalogue gathers them in this order.
void AddAdjustRows(std::vector<Operation>& Rows);

} // namespace vm
