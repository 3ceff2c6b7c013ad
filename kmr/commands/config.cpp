#include "kmr/options.h"
#include "kmr/output.h"

namespace kmr {

ExitCode runConfig(const Options &options, const Settings &settings)
{
    RecordWriter records(options.format == Format::Plain ? Format::Table : options.format, "config",
                         {"key", "value", "source"}, false, print);
    for (const Settings::Row &row : settings.rows())
        records.add({}, {row.key, row.value, row.source});
    records.end();
    return ExitCode::Ok;
}

} // namespace kmr
