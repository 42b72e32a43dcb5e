#include "core/OperationSettings.h"

#include "core/SettingsStore.h"
#include "selection/Selection.h"

#include <algorithm>

namespace vm {

namespace {

const QString CentreXKey = QStringLiteral("CentreX");
const QString CentreYKey = QStringLiteral("CentreY");

void SetCentre(const Operation& op, const CImage& image, Params& p) {
    if (!op.HasCentre) return;
    const QPoint c = SelectionCentre(image);
    p.Set(CentreXKey, c.x());
    p.Set(CentreYKey, c.y());
}

// Every integer parameter of a row: sliders, the dial, options, checks.
template <class F> void ForEachNumber(const Operation& op, F&& f) {
    for (const SliderSpec& s : op.Sliders)
        f(s.Key, s.Default);
    if (op.Dial) f(op.Dial->Key, op.Dial->Default);
    for (const ChoiceSpec& c : op.Choices)
        f(c.Key, c.Default);
    for (const CheckSpec& c : op.Checks)
        f(c.Key, c.Default ? 1 : 0);
}

bool IsCheck(const Operation& op, const QString& key) {
    return std::any_of(op.Checks.begin(), op.Checks.end(), [&](const CheckSpec& c) { return c.Key == key; });
}

int32_t ReadNumber(const Operation& op, const QString& section, const QString& storedKey, const QString& key,
                   int32_t fallback) {
    // A check box stores 0 or 1; a hand-edited "True" reads the same.
    if (IsCheck(op, key)) return GetSettingBool(SettingsRoot, section, storedKey, fallback != 0) ? 1 : 0;
    return GetSettingInt(SettingsRoot, section, storedKey, fallback);
}

} // namespace

QPoint SelectionCentre(const CImage& image) {
    const CSelection* s = image.Selection();
    if (s && !s->UseDefaultSetting()) {
        int32_t l = 0, t = 0, r = 0, b = 0;
        s->GetSelectionBound(l, t, r, b);
        if (r >= l && b >= t) {
            const int32_t dx = s->Left - image.Left, dy = s->Top - image.Top;
            return {(l + r) / 2 + dx, (t + b) / 2 + dy};
        }
    }
    return {image.Width() / 2, image.Height() / 2};
}

Params LoadStoredParams(const Operation& op, const CImage& image) {
    const QString section = op.SettingsSection();
    Params p;
    for (const ChoiceSpec& c : op.Choices) {
        const int32_t v = GetSettingInt(SettingsRoot, section, c.Key, c.Default);
        p.Set(c.Key, (v >= 0 && v < c.Choices.size()) ? v : c.Default);
    }
    for (const CheckSpec& c : op.Checks)
        p.Set(c.Key, ReadNumber(op, section, c.Key, c.Key, c.Default));
    for (const TextSpec& t : op.Texts) {
        const QString v = GetSetting(SettingsRoot, section, t.Key, t.Default);
        p.Set(t.Key, (!t.Check || t.Check(v)) ? v : t.Default);
    }
    // Sliders last: an option chosen above may set their ranges.
    auto ranged = [&](const SliderSpec& s) {
        const auto [min, max] = op.SliderLimits(s, p, image.PixelFormat, image.Width(), image.Height());
        p.Set(s.Key, std::clamp(GetSettingInt(SettingsRoot, section, s.Key, s.Default), min, max));
    };
    for (const SliderSpec& s : op.Sliders)
        ranged(s);
    if (op.Dial) ranged(*op.Dial);
    SetCentre(op, image, p);
    return p;
}

Params ReadRepeatParams(const Operation& op, const CImage& image) {
    Params p;
    ForEachNumber(op, [&](const QString& key, int32_t fallback) {
        QString section = op.SettingsSection(), storedKey = key;
        if (const RepeatRead* r = op.RepeatReadOf(key)) {
            if (!r->Section.isEmpty()) section = r->Section;
            if (!r->StoredKey.isEmpty()) storedKey = r->StoredKey;
            if (r->Default) fallback = *r->Default;
        }
        p.Set(key, ReadNumber(op, section, storedKey, key, fallback));
    });
    for (const TextSpec& t : op.Texts) {
        const RepeatRead* r = op.RepeatReadOf(t.Key);
        const QString section = r && !r->Section.isEmpty() ? r->Section : op.SettingsSection();
        const QString storedKey = r && !r->StoredKey.isEmpty() ? r->StoredKey : t.Key;
        p.Set(t.Key, GetSetting(SettingsRoot, section, storedKey, t.Default));
    }
    SetCentre(op, image, p);
    return p;
}

void StoreParams(const Operation& op, const Params& values) {
    const QString section = op.SettingsSection();
    ForEachNumber(op, [&](const QString& key, int32_t fallback) {
        int32_t v = values.Has(key) ? values.Int(key) : fallback;
        if (op.KeptOnStore.contains(key)) v = ReadNumber(op, section, key, key, fallback);
        SaveSettingInt(SettingsRoot, section, key, v);
    });
    for (const TextSpec& t : op.Texts)
        SaveSetting(SettingsRoot, section, t.Key, values.Has(t.Key) ? values.Text(t.Key) : t.Default);
}

const Operation* FindOperationByCaption(const QString& caption) {
    const QString name = caption.trimmed();
    if (name.isEmpty()) return nullptr;
    for (const Operation& op : Catalogue())
        if (op.Title == name) return &op;
    for (const Operation& op : Catalogue())
        if (!op.DialogTitle.isEmpty() && op.DialogTitle == name) return &op;
    return nullptr;
}

} // namespace vm
