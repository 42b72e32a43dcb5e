#pragma once
// The settings held for the whole run, one field a key, loaded at start-up
// and written back at exit. Defaults stand in the member initialisers.
#include <QString>

#include <cstdint>

namespace vm {

struct AppSettings {
    // "SystemSetting"
    bool IgnoreExif = false;
    bool UseUpperCase = false;
    // Read by the start-up under "m_CheckBmp32or16Alpha" (see Load).
    bool CheckBmp32or16Alpha = true;
};

// The process-wide settings object. Start-up fills it; the logic reads it.
AppSettings& Globals();

} // namespace vm
