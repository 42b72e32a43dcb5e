#include "core/SettingsStore.h"

#include <QSettings>
#include <QStandardPaths>
#include <QStringList>
#include <QVariant>

#include <cmath>
#include <limits>
#include <map>
#include <memory>

namespace vm {

namespace {

QString EffectiveRoot(const QString& Root, const QString& Section) {
    return Section == AutoOptionSection ? AutoOptionRoot : Root;
}

// QSettings reads '/' and '\' as group separators, drops empty names and the
// blanks around a key in the file. Our keys are free text, so those characters
// are hidden behind a percent escape of our own before QSettings sees them.
// A lone "%" stands for the empty name: encoding never yields it otherwise.
QString EncodeName(const QString& Name) {
    if (Name.isEmpty()) return QStringLiteral("%");
    QString out;
    out.reserve(Name.size());
    for (qsizetype i = 0; i < Name.size(); ++i) {
        const QChar c = Name[i];
        const bool edge = i == 0 || i == Name.size() - 1;
        if (c == u'%' || c == u'/' || c == u'\\' || (edge && c.isSpace()))
            out += QStringLiteral("%%1").arg(c.unicode(), 4, 16, QChar(u'0'));
        else
            out += c;
    }
    return out;
}

QString StoreKey(const QString& Section, const QString& Key) {
    return EncodeName(Section) + u'/' + EncodeName(Key);
}

QString VariantText(const QVariant& Value) {
    // A hand-edited value with unquoted commas comes back as a list.
    if (Value.typeId() == QMetaType::QStringList) return Value.toStringList().join(u',');
    return Value.toString();
}

// The files held open by the running batch, if any.
thread_local int BatchDepth = 0;
thread_local std::map<QString, std::unique_ptr<QSettings>> BatchFiles;

// Runs Action on the store of Root: the batch's when a batch is running, a
// short-lived one (written back at once) otherwise.
template <typename F> auto WithStore(const QString& Root, F&& Action) {
    const QString path = SettingsFilePath(Root);
    if (BatchDepth == 0) {
        QSettings store(path, QSettings::IniFormat);
        return Action(store);
    }
    std::unique_ptr<QSettings>& store = BatchFiles[path];
    if (!store) store = std::make_unique<QSettings>(path, QSettings::IniFormat);
    return Action(*store);
}

} // namespace

SettingsBatch::SettingsBatch() {
    ++BatchDepth;
}

SettingsBatch::~SettingsBatch() {
    if (--BatchDepth == 0) BatchFiles.clear(); // a QSettings writes its file as it goes away
}

QString SettingsFilePath(const QString& Root) {
    QString file = Root;
    file.replace(u'/', u'_');
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u'/' + file +
           QStringLiteral(".ini");
}

QString GetSetting(const QString& Root, const QString& Section, const QString& Key, const QString& Default) {
    const QVariant value = WithStore(EffectiveRoot(Root, Section),
                                     [&](QSettings& store) { return store.value(StoreKey(Section, Key)); });
    if (!value.isValid()) return Default;
    return VariantText(value);
}

void SaveSetting(const QString& Root, const QString& Section, const QString& Key, const QString& Value) {
    WithStore(EffectiveRoot(Root, Section),
              [&](QSettings& store) { store.setValue(StoreKey(Section, Key), Value); });
}

bool ParseSettingInt(const QString& Text, int32_t& Value) {
    bool ok = false;
    const qlonglong v = Text.trimmed().toLongLong(&ok, 10);
    if (!ok || v < std::numeric_limits<int32_t>::min() || v > std::numeric_limits<int32_t>::max())
        return false;
    Value = static_cast<int32_t>(v);
    return true;
}

bool ParseSettingBool(const QString& Text, bool& Value) {
    const QString t = Text.trimmed();
    if (t.compare(u"True", Qt::CaseInsensitive) == 0 || t == u"-1" || t == u"1") {
        Value = true;
        return true;
    }
    if (t.compare(u"False", Qt::CaseInsensitive) == 0 || t == u"0") {
        Value = false;
        return true;
    }
    return false;
}

bool ParseSettingDouble(const QString& Text, double& Value) {
    bool ok = false;
    const double v = Text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v)) return false;
    Value = v;
    return true;
}

// The typed readers fall back to the default on text that does not convert
// instead of failing: a damaged or hand-edited settings file must never keep
// the editor from starting.
int32_t GetSettingInt(const QString& Root, const QString& Section, const QString& Key, int32_t Default) {
    int32_t value = Default;
    ParseSettingInt(GetSetting(Root, Section, Key, QString()), value);
    return value;
}

bool GetSettingBool(const QString& Root, const QString& Section, const QString& Key, bool Default) {
    bool value = Default;
    ParseSettingBool(GetSetting(Root, Section, Key, QString()), value);
    return value;
}

double GetSettingDouble(const QString& Root, const QString& Section, const QString& Key, double Default) {
    double value = Default;
    ParseSettingDouble(GetSetting(Root, Section, Key, QString()), value);
    return value;
}

void SaveSettingInt(const QString& Root, const QString& Section, const QString& Key, int32_t Value) {
    SaveSetting(Root, Section, Key, QString::number(Value));
}

void SaveSettingBool(const QString& Root, const QString& Section, const QString& Key, bool Value) {
    SaveSetting(Root, Section, Key, Value ? QStringLiteral("True") : QStringLiteral("False"));
}

void SaveSettingDouble(const QString& Root, const QString& Section, const QString& Key, double Value) {
    // Seventeen significant digits bring the same double back.
    SaveSetting(Root, Section, Key, QString::number(Value, 'g', 17));
}

} // namespace vm
