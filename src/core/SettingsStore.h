#pragma once
// The per-user settings store: text values addressed by root, section and key,
// kept between runs. Every dialog remembers its values here.
#include <QString>

#include <cstdint>

namespace vm {

inline const QString SettingsRoot = QStringLiteral("Osier VelluMark");
// The automatic tone commands keep their options under a root of their own.
inline const QString AutoOptionRoot = QStringLiteral("Alder VelluMark");
inline const QString AutoOptionSection = QStringLiteral("AutoOption");

// The INI file that holds one root, under the user's configuration folder.
QString SettingsFilePath(const QString& Root);

// While one of these lives, the store keeps each root's file open and writes
// it once when the last of them ends, instead of once a key. Loading and saving
// all settings at once run inside one. Batches nest; one thread only.
class SettingsBatch {
  public:
    SettingsBatch();
    ~SettingsBatch();
    SettingsBatch(const SettingsBatch&) = delete;
    SettingsBatch& operator=(const SettingsBatch&) = delete;
};

// The stored text, or Default when the key does not exist. The section
// "AutoOption" is always looked up under AutoOptionRoot, whatever Root says.
QString GetSetting(const QString& Root, const QString& Section, const QString& Key, const QString& Default);
void SaveSetting(const QString& Root, const QString& Section, const QString& Key, const QString& Value);

// Typed readers. A stored text that does not convert leaves the default in
// force: a damaged settings file must never keep the editor from starting.
int32_t GetSettingInt(const QString& Root, const QString& Section, const QString& Key, int32_t Default);
bool GetSettingBool(const QString& Root, const QString& Section, const QString& Key, bool Default);
double GetSettingDouble(const QString& Root, const QString& Section, const QString& Key, double Default);

// Typed writers: integers as decimal text, Booleans as "True"/"False".
void SaveSettingInt(const QString& Root, const QString& Section, const QString& Key, int32_t Value);
void SaveSettingBool(const QString& Root, const QString& Section, const QString& Key, bool Value);
void SaveSettingDouble(const QString& Root, const QString& Section, const QString& Key, double Value);

// The conversions the typed readers use, for callers holding text already.
// Integers: optional sign and decimal digits, blanks around allowed, within
// 32 bits. Booleans: "True", "False", "-1", "0", "1", in any letter case.
bool ParseSettingInt(const QString& Text, int32_t& Value);
bool ParseSettingBool(const QString& Text, bool& Value);
bool ParseSettingDouble(const QString& Text, double& Value);

} // namespace vm
