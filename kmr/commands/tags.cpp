// kmr tags: checks, lists, searches and imports files of names.
#include "host/error.h"
#include "host/project/csv.h"
#include "host/project/named_tag_reader.h"
#include "host/project/text_file.h"
#include "host/tags/nearest.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"

namespace kmr {

namespace {

const char *const HELP = R"(Examples:
  kmr tags check names.csv
  kmr tags find boiler --names names.csv
  kmr read boiler.temp --names names.csv --link tcp://192.168.0.10:8888)";

const char *const CHECK_HELP =
    R"(A FILE, in UTF-8, holds a line for each name. Its heading names the columns, in any order:
  name,tag,unit,scale,offset,texts,comment
  boiler.temp,D100/int16,C,0.1,-40,,flow
  valve,2#Y17,,,,0=closed;1=open,
  name        a letter or _, then anything but = , ; and double quotes
  tag         'kmr read --help' explains tags
  unit        of its values
  scale       the value shown is the controller's number times the scale, plus the offset
  offset
  texts       texts for numbers, as they are shown and written
  word-order  low or high: the word of a 32 or 64-bit value that comes first
  byte-order  low or high: the byte of a word that holds a text's first character
  writable    yes or no: whether 'kmr publish --allow-write' takes writes of others
  deadband    'kmr publish' leaves out changes smaller than this
  comment
Only name and tag are needed. Semicolons or tabs may replace all commas; scale and offset may then
have a decimal comma. Lines that begin with # are comments.
A bad line stops only commands that use its name.

Examples:
  kmr tags check names.csv
  kmr tags check names.csv --station 2)";

const char *const LIST_HELP =
    R"(FILE is by default the file of --names or of kmr.toml.

Examples:
  kmr tags list
  kmr tags list names.csv --format json)";

const char *const FIND_HELP =
    R"(Finds names with TEXT in their name, tag, unit or comment, in upper or lower case.
If TEXT is a tag, such as D101, also finds names with an element of that tag.
Ends with 1 if there are none.

Examples:
  kmr tags find boiler
  kmr tags find D101 --names names.csv)";

const char *const IMPORT_HELP =
    R"(Converts a list of another program to a file of names. FILE has a heading; fields are
separated by commas, semicolons or tabs. --columns names the columns to use, by the names of
'kmr tags check --help'; the others are left out. Without it the heading must have these names.
Bad lines are reported and left out, and the command then ends with 1. If no name is left, nothing
is written; a list without any name is refused.

Examples:
  kmr tags import plant.txt --columns name=Symbol,tag=Address,comment=Remark --output names.csv
  kmr tags import plant.csv --encoding latin1 --columns "name=Symbol,tag=Adresse")";

struct TagsOptions {
    std::string file; // of names
    std::string text; // to find
    std::string columns;
    std::string encoding = "utf-8";
    std::string output; // empty: stdout
};

void checkHasNames(const NameTable &names, const QStringList &faults, const QString &file)
{
    if (names.names().empty() && faults.isEmpty())
        throw Error(ErrorKind::Usage, QString("%1: holds no names").arg(file));
}

ExitCode runTagsCheck(const Options &options, const TagsOptions &check)
{
    const QString file = toQString(check.file);
    const auto library = loadDriver(options);
    const NameTable names = NameTable::parse(readTextFile(file), file);
    const QStringList faults = checkNames(names, tagReaderOf(options, *library));
    checkHasNames(names, faults, file);
    if (!faults.isEmpty())
        throw Error(ErrorKind::Usage, faults.join('\n'));
    printError(QString("%1: %2 names, all good").arg(file).arg(names.names().size()));
    return ExitCode::Ok;
}

QString fileOf(const Options &options, const TagsOptions &own)
{
    const QString file = own.file.empty() ? options.names : toQString(own.file);
    if (file.isEmpty())
        throw Error(ErrorKind::Usage, "no file of names: give one, here or with --names or in the "
                                      "project's kmr.toml: names = \"names.csv\"");
    return file;
}

template <typename Order> QString orderText(const std::optional<Order> &order)
{
    if (!order)
        return {};
    return *order == Order::LowFirst ? "low" : "high";
}

// In the order of nameColumns().
QStringList cellsOf(const Name &name)
{
    return {name.name,
            name.tag,
            name.unit,
            name.scale,
            name.offset,
            valueTextsOf(name),
            orderText(name.wordOrder),
            orderText(name.byteOrder),
            name.isWritable ? "yes" : "",
            name.deadband,
            name.comment};
}

void addRecord(RecordWriter &records, const Name &name)
{
    std::vector<Field> fields;
    for (const QString &cell : cellsOf(name))
        fields.push_back(textField(cell));
    fields.push_back(textField(name.fault));
    records.add({}, fields);
}

RecordWriter makeRecords(const Options &options, const char *command)
{
    QStringList fields = nameColumns() + QStringList("error");
    fields.replaceInStrings("-", "_");
    return RecordWriter(options.format == Format::Plain ? Format::Table : options.format, command,
                        fields, false, print);
}

ExitCode runTagsList(const Options &options, const TagsOptions &own)
{
    const NameTable names = loadNames(fileOf(options, own));
    RecordWriter records = makeRecords(options, "tags list");
    for (const Name &name : names.names())
        addRecord(records, name);
    records.end();
    return ExitCode::Ok;
}

std::optional<ElementRange> elementsOf(const NamedTagReader &reader, const QString &text)
{
    try {
        return reader.read(text).elements;
    } catch (const Error &) {
        return std::nullopt;
    }
}

ExitCode runTagsFind(const Options &options, const TagsOptions &own)
{
    const QString text = toQString(own.text);
    const auto library = loadDriver(options);
    const NamedTagReader reader(tagReaderOf(options, *library), loadNames(fileOf(options, own)));
    const std::optional<ElementRange> wanted = elementsOf(reader.unnamed(), text);
    RecordWriter records = makeRecords(options, "tags find");
    ExitCode code = ExitCode::ItemFailed;
    for (const Name &name : reader.names()->names()) {
        const QStringList searched = {name.name, name.tag, name.unit, name.comment};
        const auto elements = wanted ? elementsOf(reader, name.name) : std::nullopt;
        if (!searched.join('\n').contains(text, Qt::CaseInsensitive) &&
            !(elements && overlap(*wanted, *elements)))
            continue;
        addRecord(records, name);
        code = ExitCode::Ok;
    }
    records.end();
    if (code != ExitCode::Ok)
        printError(QString("no name in %1 has \"%2\"").arg(reader.names()->file(), text));
    return code;
}

NameTable::Headings headingsOf(const QString &columns)
{
    NameTable::Headings headings;
    for (const QString &pair : columns.split(',', Qt::SkipEmptyParts)) {
        const QString column = pair.section('=', 0, 0).trimmed();
        const QString heading = pair.section('=', 1).trimmed();
        if (!nameColumns().contains(column) || heading.isEmpty())
            throw Error(
                ErrorKind::Usage,
                QString("bad column \"%1\"%2: expected for example name=Symbol; the columns "
                        "are %3")
                    .arg(pair, didYouMean(column, nameColumns()), nameColumns().join(", ")));
        headings[column] = heading;
    }
    return headings;
}

TextEncoding encodingOf(const std::string &name)
{
    if (name == "latin1")
        return TextEncoding::Latin1;
    return name == "utf-16" ? TextEncoding::Utf16 : TextEncoding::Utf8;
}

QString csvLine(const QStringList &cells)
{
    QStringList fields;
    for (const QString &cell : cells)
        fields.append(csvField(cell));
    return fields.join(',');
}

// Without a name nothing is written: a good file from an earlier import stays.
void writeNames(const QStringList &lines, const QString &output)
{
    if (lines.size() == 1) // the heading
        return;
    if (!output.isEmpty()) {
        writeTextFile(output, lines.join('\n') + '\n');
        return;
    }
    for (const QString &line : lines)
        print(line);
}

// Bad lines are left out.
ExitCode runTagsImport(const Options &options, const TagsOptions &own)
{
    const QString file = toQString(own.file);
    const auto library = loadDriver(options);
    const NameTable names = NameTable::parse(readTextFile(file, encodingOf(own.encoding)), file,
                                             headingsOf(toQString(own.columns)));
    const NamedTagReader reader(tagReaderOf(options, *library), names);
    const QStringList faults = checkNames(names, reader.unnamed());
    checkHasNames(names, faults, file);
    QStringList lines(csvLine(nameColumns()));
    for (const Name &name : names.names()) {
        if (elementsOf(reader, name.name))
            lines.append(csvLine(cellsOf(name)));
    }
    for (const QString &fault : faults)
        printError("kmr: " + fault);
    writeNames(lines, toQString(own.output));
    printError(QString("%1: %2 names imported, %3 lines left out")
                   .arg(file)
                   .arg(lines.size() - 1)
                   .arg(faults.size()));
    return faults.isEmpty() ? ExitCode::Ok : ExitCode::ItemFailed;
}

} // namespace

void addTags(CLI::App &app, Command &chosen)
{
    CommandDefinition tags(app, "tags", "Check, list, search and import files of names");
    tags.requireCommand();
    tags.setHelp(HELP);
    const auto own = std::make_shared<TagsOptions>();

    CommandDefinition check(tags, "check", "Report every bad line of a file of names");
    check.add("FILE", own->file, "the file").required();
    check.setHelp(CHECK_HELP);
    check.setAction(chosen, own, runTagsCheck);

    CommandDefinition list(tags, "list", "List the names of a file");
    list.add("FILE", own->file, "the file (default: that of --names)");
    list.setHelp(LIST_HELP);
    list.setAction(chosen, own, runTagsList);

    CommandDefinition find(tags, "find", "Find names by a text or an element");
    find.add("TEXT", own->text, "the text or tag to find").required();
    find.setHelp(FIND_HELP);
    find.setAction(chosen, own, runTagsFind);

    CommandDefinition import(tags, "import", "Convert another list to a file of names");
    import.add("FILE", own->file, "the list").required();
    import.add("--columns", own->columns,
               "columns and their headings in the list: name=Symbol,tag=Address");
    import.add("--encoding", own->encoding, "encoding of the list: utf-8, latin1 or utf-16")
        .showDefault(own->encoding)
        .oneOf({"utf-8", "latin1", "utf-16"});
    import.add("--output", own->output,
               "file to write, completely or not at all (default: stdout)");
    import.setHelp(IMPORT_HELP);
    import.setAction(chosen, own, runTagsImport);
}

} // namespace kmr
