#include "core/Catalogue.h"

#include <QRegularExpression>

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

namespace {

bool Contains(const std::vector<uint32_t>& formats, uint32_t format) {
    return std::find(formats.begin(), formats.end(), format) != formats.end();
}

// "“高斯模糊”命令的“半径”" : how a refusal names the parameter.
QString Named(const Operation& op, const QString& key) {
    return QStringLiteral("“%1”命令的“%2”").arg(op.Title, op.LabelOf(key));
}

QString NotThis(const QString& value) {
    return value.trimmed().isEmpty() ? QStringLiteral("不能为空。")
                                     : QStringLiteral("不能是“%1”。").arg(value);
}

} // namespace

std::vector<uint32_t> FormatSet::AllBut(const std::vector<uint32_t>& left) {
    std::vector<uint32_t> all;
    for (uint32_t f :
         {PixelFormat1bppIndexed, PixelFormat4bppIndexed, PixelFormat8bppIndexed, PixelFormat8bppGray,
          PixelFormat16bppRGB555, PixelFormat24bppRGB, PixelFormat32bppARGB})
        if (!Contains(left, f)) all.push_back(f);
    return all;
}

Operation MakeRow(const char* key, const char* title, const QString& family, std::vector<uint32_t> formats,
                  std::vector<uint32_t> wholePictureOn) {
    Operation op;
    op.Key = op.Function = QString::fromUtf8(key);
    op.Title = QString::fromUtf8(title);
    op.Family = family;
    op.Formats = std::move(formats);
    op.WholePictureOn = std::move(wholePictureOn);
    return op;
}

bool Operation::NeedsWholePicture(uint32_t pixelFormat) const {
    return Contains(WholePictureOn, pixelFormat);
}

bool Operation::Allows(uint32_t pixelFormat, bool wholeSelected, bool selectionOnCanvas) const {
    if (!Accepts(pixelFormat)) return false;
    if (NeedsWholePicture(pixelFormat) && !wholeSelected) return false;
    switch (Needs) {
    case SelectionNeed::Made:
        return !wholeSelected;
    case SelectionNeed::OnCanvas:
        return selectionOnCanvas;
    case SelectionNeed::None:
        break;
    }
    return true;
}

QString Operation::LabelOf(const QString& key) const {
    QString label;
    for (const auto& s : Sliders)
        if (s.Key == key) label = s.Label;
    if (Dial && Dial->Key == key) label = Dial->Label;
    for (const auto& c : Choices)
        if (c.Key == key) label = c.Label;
    for (const auto& c : Checks)
        if (c.Key == key) label = c.Label;
    for (const auto& t : Texts)
        if (t.Key == key) label = t.Label;
    static const QRegularExpression accessKey(QStringLiteral("\\(&.\\)"));
    label.remove(accessKey);
    label.remove(QLatin1Char('&'));
    label = label.trimmed();
    while (label.endsWith(QLatin1Char(':')) || label.endsWith(QChar(0xFF1A)))
        label.chop(1);
    return label.isEmpty() ? key : label;
}

static bool ValidateWith(const Operation& op, const Params& given, uint32_t pixelFormat, int32_t width,
                         int32_t height, QString& error) {
    error.clear();
    const Params all = op.WithDefaults(given);
    for (auto it = given.Values().begin(); it != given.Values().end(); ++it) {
        const QString& key = it.key();
        const QString& value = it.value();
        int32_t v = 0;
        auto ranged = [&](const SliderSpec& s) {
            if (s.Key != key) return false;
            const auto [min, max] = op.SliderLimits(s, all, pixelFormat, width, height);
            if (!IsInt(value, v) || v < min || v > max)
                error = Named(op, key) + QStringLiteral("应为 %1 到 %2 之间的整数，").arg(min).arg(max) +
                        NotThis(value);
            return true;
        };
        bool known =
            std::any_of(op.Sliders.begin(), op.Sliders.end(), ranged) || (op.Dial && ranged(*op.Dial));
        for (const auto& c : op.Choices) {
            if (c.Key != key) continue;
            known = true;
            if (!IsInt(value, v) || v < 0 || v >= c.Choices.size()) {
                QStringList choices;
                for (qsizetype i = 0; i < c.Choices.size(); ++i)
                    choices << QStringLiteral("%1 %2").arg(i).arg(c.Choices[i]);
                error = Named(op, key) +
                        QStringLiteral("应为下列之一：%1，").arg(choices.join(QStringLiteral("、"))) +
                        NotThis(value);
            }
        }
        for (const auto& c : op.Checks) {
            if (c.Key != key) continue;
            known = true;
            if (!IsInt(value, v) || (v != 0 && v != 1))
                error = Named(op, key) + QStringLiteral("应为 0 或 1，") + NotThis(value);
        }
        for (const auto& t : op.Texts) {
            if (t.Key != key) continue;
            known = true;
            if (t.Check && !t.Check(value))
                error =
                    Named(op, key) +
                    (t.Expected.isEmpty() ? QStringLiteral("不可用，") : t.Expected + QStringLiteral("，")) +
                    NotThis(value);
        }
        if (op.HasCentre && (key == QLatin1String("CentreX") || key == QLatin1String("CentreY"))) {
            known = true;
            if (!IsInt(value, v))
                error = QStringLiteral("“%1”命令的中心 %2 应为整数，").arg(op.Title, key) + NotThis(value);
        }
        if (!known) error = QStringLiteral("“%1”命令没有参数 %2。").arg(op.Title, key);
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
    static const std::vector<Operation> rows = GatherFamilyRows();
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
