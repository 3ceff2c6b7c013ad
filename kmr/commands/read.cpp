#include "host/session/read_once.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"

namespace kmr {

ExitCode runRead(const Options &options, const QStringList &tags)
{
    Connection connection(options);
    const std::vector<Tag> wanted = connection.readTags(tags);
    const std::vector<Reading> readings = readNow(connection.open(), wanted);

    RecordWriter records(options.format, "read",
                         {"time", "tag", "values", "unit", "outcome", "error"}, false, print);
    ExitCodes codes;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const Tag &tag = wanted[i];
        const RequestResult &result = readings[i].result;
        codes.add(exitCodeOf(result));
        const Field unit = textField(tag.unit);
        if (result.isDone()) {
            const Values &values = readings[i].values;
            records.add(tag.text + ' ' + formatValues(tag, values),
                        {now(), tag.text, interpret(tag, values), unit, QString("good"), {}});
        } else {
            printError(QString("%1: %2").arg(tag.text, toText(result)));
            records.add({}, {now(), tag.text, {}, unit, outcomeName(result), toText(result)});
        }
    }
    records.end();
    return codes.total();
}

} // namespace kmr
