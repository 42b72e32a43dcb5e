#include "CliCommands.h"

#include <cstdio>

namespace vmcli {

int RunCatalogueCommand(const Arguments& args) {
    std::fprintf(stderr, "vellumark-cli: %s: no operations are built into this program yet\n",
                 args.Command.toUtf8().constData());
    return 1;
}

} // namespace vmcli
