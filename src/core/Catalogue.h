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
#include <utility>
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
    // A range set by the picture: -Width..Width or -Height..Height (Offset).
    enum Extent : int32_t { FixedRange = 0, WidthRange = 1, HeightRange = 2 };
    int32_t RangeByPicture = FixedRange;
    int32_t ResetValue() const { return Reset.value_or(Default); }
};

inline SliderSpec Slider(const QString& Key, const QString& Label, const QString& Unit, int32_t Min,
                         int32_t Max, int32_t Default) {
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
    // What an acceptable text is, for the refusal ("必须是整数").
    QString Expected = {};
};

// What a command needs of the selection, beyond the formats it accepts.
enum class SelectionNeed {
    None,
    Made,     // a selection has been made (not everything by default)
    OnCanvas, // a made selection with at least one pixel on the canvas
};

// How the repeat command reads one parameter where it does not read what the
// dialog stored: another section, another key, or a default of its own.
struct RepeatRead {
    QString Key;                    // the parameter
    QString Section;                // empty: the row's settings section
    QString StoredKey;              // empty: the parameter's own key
    std::optional<int32_t> Default; // empty: the row's default
};

// A slider whose range follows an option group (SmearIt): while the option
// Choice holds Value, slider Slider runs Min..Max.
struct RangeByChoice {
    QString Choice;
    int32_t Value = 0;
    QString Slider;
    int32_t Min = 0;
    int32_t Max = 0;
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
    // The formats on which it needs the whole picture (nothing selected).
    std::vector<uint32_t> WholePictureOn;
    SelectionNeed Needs = SelectionNeed::None;
    // A filter: it sets the name that "上次滤镜操作" repeats.
    bool Filter = false;
    // Runs the operation; empty for a row whose family is not built yet.
    std::function<bool(CImage&, const Params&)> Run;

    // ---- what the filter dialogs and the repeat command need
    QString DialogTitle;    // the dialog's caption where it differs from Title
    QString DialogNote;     // a sub-caption under it ("膨胀")
    bool NoPreview = false; // shown by FrmNoPreviewFilter rather than FrmPreViewFilters
    // Takes CentreX and CentreY (image coordinates): the middle of the
    // selection's bound unless given, moved by a right click in the preview;
    // they are never stored.
    bool HasCentre = false;
    std::vector<RangeByChoice> ChoiceRanges;
    // The repeat command's reads that differ from what OK stores.
    std::vector<RepeatRead> RepeatReads;
    // Keys whose stored value OK leaves as it was, whatever the dialog shows.
    QStringList KeptOnStore;

    QString SettingsSection() const { return Section.isEmpty() ? Key : Section; }
    QString CaptionOfDialog() const { return DialogTitle.isEmpty() ? Title : DialogTitle; }
    bool Accepts(uint32_t PixelFormat) const;
    bool NeedsWholePicture(uint32_t PixelFormat) const;
    // Whether the command can run on a picture of this format with this
    // selection: what its menu entry's enabling follows.
    bool Allows(uint32_t PixelFormat, bool WholeSelected, bool SelectionOnCanvas) const;
    // The Chinese label of a parameter, without access key or colon; the key
    // itself for a parameter without one.
    QString LabelOf(const QString& Key) const;
    // The parameters with every missing key at its default.
    Params WithDefaults(const Params& Given) const;
    // The slider's range for a picture of this format and size, with the other
    // values as given (an option may move it). Width and Height of 0 leave a
    // range set by the picture open.
    std::pair<int32_t, int32_t> SliderLimits(const SliderSpec& Slider, const Params& Values,
                                             uint32_t PixelFormat, int32_t Width = 0,
                                             int32_t Height = 0) const;
    // Checks keys and ranges; false with a message, in the user's words,
    // naming the first fault by the parameter's label.
    bool Validate(const Params& Given, uint32_t PixelFormat, QString& Error) const;
    // The same with the ranges the picture sets.
    bool Validate(const Params& Given, const CImage& Picture, QString& Error) const;
    // The repeat read of a parameter, null where it reads what OK stored.
    const RepeatRead* RepeatReadOf(const QString& Key) const;
};

// The sets of formats the rows of several families name.
namespace FormatSet {
inline std::vector<uint32_t> Colour() {
    return {PixelFormat24bppRGB, PixelFormat32bppARGB};
}
// Grey and colour: what the filters, the analysis and the edit commands take.
inline std::vector<uint32_t> Editable() {
    return {PixelFormat24bppRGB, PixelFormat32bppARGB, PixelFormat8bppGray};
}
inline std::vector<uint32_t> Indexed() {
    return {PixelFormat4bppIndexed, PixelFormat8bppIndexed};
}
inline std::vector<uint32_t> Grey() {
    return {PixelFormat8bppGray};
}
inline std::vector<uint32_t> Join(std::vector<uint32_t> A, const std::vector<uint32_t>& B) {
    A.insert(A.end(), B.begin(), B.end());
    return A;
}
// Every format but these.
std::vector<uint32_t> AllBut(const std::vector<uint32_t>& Left);
} // namespace FormatSet

// A row with its names and formats, parameters and Run to be added: the key
// is also the function's name.
Operation MakeRow(const char* Key, const char* Title, const QString& Family,
                  std::vector<uint32_t> Formats = {}, std::vector<uint32_t> WholePictureOn = {});

// Every row, in the order the families are gathered.
const std::vector<Operation>& Catalogue();
// The families' rows in their order. Core knows no family: the list that
// gathers them lives with the catalogue's families (catalogue/Families.cpp).
std::vector<Operation> GatherFamilyRows();
// A row by its key or its function name; null when there is none.
const Operation* FindOperation(const QString& KeyOrFunction);
// The row of a key that is known to exist (a family naming its own row):
// where its title, its ranges and its formats are read.
const Operation& RowOf(const QString& Key);

} // namespace vm
