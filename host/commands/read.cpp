#include "host/commands/commands.h"
#include "host/commands/connection.h"
#include "host/reading.h"

namespace kmr {

ExitCode runRead(const Options &options, const QStringList &texts)
{
    Connection connection(options);
    const std::vector<Tag> tags = connection.readTags(texts);
    const std::vector<Reading> readings = readNow(connection.open(), tags);

    ExitCodes codes;
    for (std::size_t i = 0; i < tags.size(); ++i) {
        const RequestResult &result = readings[i].result;
        codes.add(exitCodeOf(result));
        if (result.isDone())
            print(tags[i].text + ' ' + formatValues(tags[i], readings[i].values));
        else
            printError(QString("%1: %2").arg(tags[i].text, toText(result)));
    }
    return codes.total();
}

} // namespace kmr
