#include "core/AppSettings.h"

namespace vm {

AppSettings& Globals() {
    static AppSettings settings;
    return settings;
}

} // namespace vm
