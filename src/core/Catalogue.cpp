#include "core/Catalogue.h"

#include <algorithm>

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

bool Operation::Validate(const Params& given, uint32_t pixelFormat, QString& error) const {
    for (auto it = given.Values().begin(); it != given.Values().end(); ++it) {
        const QString& key = it.key();
        int32_t v = 0;
        auto ranged = [&](const SliderSpec& s) {
            if (s.Key != key) return false;
            const int32_t max = (pixelFormat == PixelFormat32bppARGB && s.MaxOnRgba32) ? *s.MaxOnRgba32 : s.Max;
            if (!IsInt(it.value(), v) || v < s.Min || v > max)
                error = QStringLiteral("%1: %2 must be a whole number from %3 to %4")
                            .arg(Key, key)
                            .arg(s.Min)
                            .arg(max);
            return true;
        };
        bool known = std::any_of(Sliders.begin(), Sliders.end(), ranged) || (Dial && ranged(*Dial));
        for (const auto& c : Choices) {
            if (c.Key != key) continue;
            known = true;
            if (!IsInt(it.value(), v) || v < 0 || v >= c.Choices.size())
                error = QStringLiteral("%1: %2 must be one of 0..%3").arg(Key, key).arg(c.Choices.size() - 1);
        }
        for (const auto& c : Checks) {
            if (c.Key != key) continue;
            known = true;
            if (!IsInt(it.value(), v) || (v != 0 && v != 1))
                error = QStringLiteral("%1: %2 must be 0 or 1").arg(Key, key);
        }
        for (const auto& t : Texts) {
            if (t.Key != key) continue;
            known = true;
            if (t.Check && !t.Check(it.value())) error = QStringLiteral("%1: %2 is not acceptable: %3").arg(Key, key, it.value());
        }
        if (!known) error = QStringLiteral("%1 has no parameter %2").arg(Key, key);
        if (!error.isEmpty()) return false;
    }
    return true;
}

const std::vector<Operation>& Catalogue() {
    static const std::vector<Operation> rows = [] {
        std::vector<Operation> r;
        AddAdjustRows(r);
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

} // namespace vm
