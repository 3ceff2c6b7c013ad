#include "host/project/name_table.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"

namespace kmr {

ExitCode runTagsCheck(const Options &options, const QString &file)
{
    const auto library = loadDriver(options);
    const TagReader reader(library->functions(), options.station, options.wordOrder);
    const NameTable names = loadNames(file, reader);
    printError(QString("%1: %2 names, all good").arg(file).arg(names.names().size()));
    return ExitCode::Ok;
}

} // namespace kmr
