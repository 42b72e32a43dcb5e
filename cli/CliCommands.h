#pragma once
#include "Arguments.h"

#include "core/Image.h"

namespace vmcli {

// Runs a parsed command; answers the exit status. An allocation failure
// anywhere in a command ends it with status 1 and the system's message.
int RunCommand(const Arguments& Args);

// The family code for a file name's extension, 0 when none matches.
int FormatOfExtension(const QString& File);

// Loads an input picture; on failure shows the system's message.
bool LoadInput(const QString& File, int Frame, vm::CImage& Image);
// Checks the output's family and the --option values: 0, or 2 for a wrong usage.
int CheckOutput(const Arguments& Args, const QString& File);
// Saves by --format or the extension, with the options; answers the exit status.
int SaveOutput(vm::CImage& Image, const Arguments& Args, const QString& File);
// Reads --option values by the output family's declarations (and the few
// settings an option may change) into writer options; false with a message
// naming the option by its label when a key or a value is not allowed.
bool ApplyOptions(int Format, const QMap<QString, QString>& Options, vm::SaveOptions& Out, QString& Error);

} // namespace vmcli

namespace vmcli {
// apply, select and list: the commands that run the operation catalogue.
int RunCatalogueCommand(const Arguments& Args);
} // namespace vmcli
