#pragma once
#include "Arguments.h"

namespace vmcli {

// Runs a parsed command; answers the exit status.
int RunCommand(const Arguments& Args);

// The family code for a file name's extension, 0 when none matches.
int FormatOfExtension(const QString& File);

} // namespace vmcli

namespace vmcli {
// apply, select and list: the commands that run the operation catalogue.
int RunCatalogueCommand(const Arguments& Args);
} // namespace vmcli
