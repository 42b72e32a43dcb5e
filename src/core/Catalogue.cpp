#include "core/Catalogue.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace vm {

bool Operation::Accepts(uint32_t pixelFormat) const {
    return Formats.empty() || std::find(Formats.begin(), Formats.end(), pixelFormat) != Formats.end();
}

Params Operation::WithDefaults(const Params& given) const {
    Params p = given;
    for (const auto& s : Sliders)
        if (!p.Has(s.Key)) p.Set(s.Key, s.Default);
    for (const auto& c : Choices)
        if (!p.Has(c.Key)) p.Set(c.Key, c.Default);
    for (const auto& c : Checks)
        if (!p.Has(c.Key)) p.Set(c.Key, c.Default ? 1 : 0);
    for (const auto& t : Texts)
        if (!p.Has(t.Key)) p.Set(t.Key, t.Default);
    if (Dial && !p.Has(Dial->Key)) p.Set(Dial->Key, Dial->Default);
    return p;
}

static bool IsInt(const QString& s, int32_t& v) {
    bool ok = false;
    v = s.trimmed().toInt(&ok);
    return ok;
}

std::pair<int32_t, int32_t> Operation::SliderLimits(const SliderSpec& s, const Params& values,
                                                    uint32_t pixelFormat, int32_t width,
                                                    int32_t height) const {
    int32_t min = s.Min, max = s.Max;
    for (const RangeByChoice& r : ChoiceRanges) {
        if (r.Slider != s.Key) continue;
        const int32_t chosen = values.Has(r.Choice) ? values.Int(r.Choice) : [&] {
            for (const auto& c : Choices)
                if (c.Key == r.Choice) return c.Default;
            return 0;
        }();
        if (chosen == r.Value) {
            min = r.Min;
            max = r.Max;
        }
    }
    if (pixelFormat == PixelFormat32bppARGB && s.MaxOnRgba32) max = *s.MaxOnRgba32;
    const int32_t extent = s.RangeByPicture == SliderSpec::WidthRange    ? width
                           : s.RangeByPicture == SliderSpec::HeightRange ? height
                                                                         : 0;
    if (s.RangeByPicture != SliderSpec::FixedRange) {
        if (extent > 0) {
            min = -extent;
            max = extent;
        } else {
            min = std::numeric_limits<int32_t>::min();
            max = std::numeric_limits<int32_t>::max();
        }
    }
    return {min, max};
}

static bool ValidateWith(const Operation& op, const Params& given, uint32_t pixelFormat, int32_t width,
                         int32_t height, QString& error) {
    error.clear();
    const Params all = op.WithDefaults(given);
    for (auto it = given.Values().begin(); it != given.Values().end(); ++it) {
        const QString& key = it.key();
        int32_t v = 0;
        auto ranged = [&](const SliderSpec& s) {
            if (s.Key != key) return false;
            const auto [min, max] = op.SliderLimits(s, all, pixelFormat, width, height);
            if (!IsInt(it.value(), v) || v < min || v > max)
                error = QStringLiteral("%1: %2 must be a whole number from %3 to %4")
                            .arg(op.Key, key)
                            .arg(min)
                            .arg(max);
            return true;
        };
        bool known =
            std::any_of(op.Sliders.begin(), op.Sliders.end(), ranged) || (op.Dial && ranged(*op.Dial));
        for (const auto& c : op.Choices) {
            if (c.Key != key) continue;
            known = true;
            if (!IsInt(it.value(), v) || v < 0 || v >= c.Choices.size())
                error =
                    QStringLiteral("%1: %2 must be one of 0..%3").arg(op.Key, key).arg(c.Choices.size() - 1);
        }
        for (const auto& c : op.Checks) {
            if (c.Key != key) continue;
            known = true;
            if (!IsInt(it.value(), v) || (v != 0 && v != 1))
                error = QStringLiteral("%1: %2 must be 0 or 1").arg(op.Key, key);
        }
        for (const auto& t : op.Texts) {
            if (t.Key != key) continue;
            known = true;
            if (t.Check && !t.Check(it.value()))
                error = QStringLiteral("%1: %2 is not acceptable: %3").arg(op.Key, key, it.value());
        }
        if (op.HasCentre && (key == QLatin1String("CentreX") || key == QLatin1String("CentreY"))) {
            known = true;
            if (!IsInt(it.value(), v))
                error = QStringLiteral("%1: %2 must be a whole number").arg(op.Key, key);
        }
        if (!known) error = QStringLiteral("%1 has no parameter %2").arg(op.Key, key);
        if (!error.isEmpty()) return false;
    }
    return true;
}

bool Operation::Validate(const Params& given, uint32_t pixelFormat, QString& error) const {
    return ValidateWith(*this, given, pixelFormat, 0, 0, error);
}

bool Operation::Validate(const Params& given, const CImage& picture, QString& error) const {
    return ValidateWith(*this, given, picture.PixelFormat, picture.Width(), picture.Height(), error);
}

const RepeatRead* Operation::RepeatReadOf(const QString& key) const {
    for (const RepeatRead& r : RepeatReads)
        if (r.Key == key) return &r;
    return nullptr;
}

const std::vector<Operation>& Catalogue() {
    static const std::vector<Operation> rows = [] {
        std::vector<Operation> r;
        AddAdjustRows(r);
        AddBlurRows(r);
        AddPendingFilterRows(r);
        AddOtherRows(r);
        return r;
    }();
    return rows;
}

const Operation* FindOperation(const QString& name) {
    for (const auto& op : Catalogue())
        if (op.Key == name) return &op;
    for (const auto& op : Catalogue())
        if (op.Function == name) return &op;
    return nullptr;
}

const Operation& RowOf(const QString& key) {
    if (const Operation* op = FindOperation(key)) return *op;
    // A family asking for a row it never registered is a programming error,
    // caught by every test that runs the family.
    throw std::logic_error("no catalogue row " + key.toStdString());
}

} // namespace vm
