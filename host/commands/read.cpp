#include "host/commands/commands.h"
#include "host/commands/connection.h"
#include "host/reading.h"

namespace kmr {

ExitCode runRead(const Options &options, const QStringList &texts)
{
    Connection connection(options);
    const std::vector<Tag> tags = connection.readTags(texts);
    const std::vector<Reading> readings = readNow(connection.open(), tags);

    RecordWriter records(options.format, "read",
                         {"time", "tag", "values", "unit", "outcome", "error"}, false, print);
    ExitCodes codes;
    for (std::size_t i = 0; i < tags.size(); ++i) {
        const RequestResult &result = readings[i].result;
        codes.add(exitCodeOf(result));
        const Field unit = textField(tags[i].unit);
        if (result.isDone()) {
            const Values &values = readings[i].values;
            records.add(
                tags[i].text + ' ' + formatValues(tags[i], values),
                {now(), tags[i].text, interpret(tags[i], values), unit, QString("good"), {}});
        } else {
            printError(QString("%1: %2").arg(tags[i].text, toText(result)));
            records.add({}, {now(), tags[i].text, {}, unit, outcomeName(result), toText(result)});
        }
    }
    records.end();
    return codes.total();
}

} // namespace kmr
