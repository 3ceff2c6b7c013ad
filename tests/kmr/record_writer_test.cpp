#include "kmr/record_writer.h"

#include "host/project/csv.h"

#include <gtest/gtest.h>

#include <limits>

using namespace kmr;

namespace {

// Two records: values with a unit, and a failed one without values.
QString written(Format format)
{
    QString text;
    RecordWriter records(format, "read", {"tag", "values", "unit"}, false,
                         [&text](const QString &line) { text += line + '\n'; });
    records.add("t 21.5 -1", {QString("t"), std::vector<Value>{21.5, std::int64_t{-1}},
                              QString("\"C\", about")});
    records.add({}, {QString("long.name"), {}, {}});
    records.end();
    return text;
}

} // namespace

TEST(Records, PlainHasTheCommandsLines)
{
    EXPECT_EQ(written(Format::Plain), "t 21.5 -1\n");
}

TEST(Records, TableHasColumnsThatFit)
{
    EXPECT_EQ(written(Format::Table), "TAG        VALUES   UNIT\n"
                                      "t          21.5 -1  \"C\", about\n"
                                      "long.name\n");
}

TEST(Records, CsvQuotesWhatNeedsIt)
{
    EXPECT_EQ(written(Format::Csv), "tag,values,unit\n"
                                    "t,21.5 -1,\"\"\"C\"\", about\"\n"
                                    "long.name,,\n");
}

TEST(Records, JsonIsOneDocument)
{
    EXPECT_EQ(written(Format::Json),
              "{\"schema\": 1, \"command\": \"read\", \"records\": [\n"
              " {\"tag\":\"t\",\"values\":[21.5,-1],\"unit\":\"\\\"C\\\", about\"}\n"
              ",{\"tag\":\"long.name\",\"values\":null,\"unit\":null}\n"
              "]}\n");
}

TEST(Records, JsonLinesAreCompleteEach)
{
    EXPECT_EQ(written(Format::JsonLines),
              "{\"schema\":1,\"command\":\"read\",\"tag\":\"t\",\"values\":[21.5,-1],"
              "\"unit\":\"\\\"C\\\", about\"}\n"
              "{\"schema\":1,\"command\":\"read\",\"tag\":\"long.name\",\"values\":null,"
              "\"unit\":null}\n");
}

TEST(Records, StreamedTableWritesRowsAtOnce)
{
    QStringList lines;
    RecordWriter records(Format::Table, "watch", {"tag", "values"}, true,
                         [&lines](const QString &line) { lines.append(line); });
    records.add({}, {QString("boiler"), std::vector<Value>{std::int64_t{1}}});
    EXPECT_EQ(lines, (QStringList{"TAG     VALUES", "boiler  1"}));
    records.add({}, {QString("reservoir"), std::vector<Value>{std::int64_t{2}}});
    EXPECT_EQ(lines.back(), "reservoir  2");
}

TEST(Records, NumbersAreNumbersInJsonAndShortInCells)
{
    QStringList lines;
    const auto write = [&lines](Format format) {
        RecordWriter records(format, "ping", {"station", "ms"}, true,
                             [&lines](const QString &line) { lines.append(line); });
        records.add({}, {std::int64_t{2}, millisecondsField(std::chrono::nanoseconds(1234567))});
    };
    write(Format::JsonLines);
    write(Format::Csv);
    EXPECT_EQ(lines, (QStringList{"{\"schema\":1,\"command\":\"ping\",\"station\":2,\"ms\":1.235}",
                                  "station,ms", "2,1.235"}));
}

TEST(Records, NothingIsWrittenBeforeTheFirstRecord)
{
    QStringList lines;
    RecordWriter records(Format::Csv, "watch", {"tag"}, true,
                         [&lines](const QString &line) { lines.append(line); });
    EXPECT_EQ(lines, QStringList());
    records.end();
    EXPECT_EQ(lines, QStringList{"tag"});
}

TEST(Records, NumberThatJsonDoesNotKnowIsNull)
{
    QStringList lines;
    RecordWriter records(Format::JsonLines, "read", {"value"}, true,
                         [&lines](const QString &line) { lines.append(line); });
    records.add({}, {Value(std::numeric_limits<double>::infinity())});
    EXPECT_EQ(lines, QStringList("{\"schema\":1,\"command\":\"read\",\"value\":null}"));
}

TEST(Records, CsvQuotesEachOfWhatNeedsIt)
{
    EXPECT_EQ(csvField("a b"), "a b");
    EXPECT_EQ(csvField("a,b"), "\"a,b\"");
    EXPECT_EQ(csvField("5\" pipe"), "\"5\"\" pipe\"");
    EXPECT_EQ(csvField("a\nb"), "\"a\nb\"");
    EXPECT_EQ(csvField(" a"), "\" a\"");
}
