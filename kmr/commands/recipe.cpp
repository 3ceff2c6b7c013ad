// kmr recipe: moves a recipe to or from the controller, or compares the two.
#include "host/project/recipe_file.h"
#include "host/project/text_file.h"
#include "host/session/recipe_transfer.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"
#include "kmr/progress.h"

#include <QFileInfo>

namespace kmr {

namespace {

const char *const HELP = R"(Examples:
  kmr recipe upload mixer.csv D100 D110x3 --link tcp://192.168.0.10:8888
  kmr recipe download mixer.csv --verify --link serial:///dev/ttyUSB0)";

const char *const FILE_HELP =
    R"(A recipe FILE holds a line TAG,VALUE for each tag (words, counters and bits), for example
  # bread
  tag,value
  D100,250
  D110x3,1 2 3
  M20x2,1 0
It is written in the order of its lines. Words of consecutive lines, such as D100 and D101, are sent
in one request of up to --group-limit words; bits are written one by one.
A line that begins with # is a comment; a column after the values is refused.
)";

const char *const DOWNLOAD_EXAMPLES = R"(
Examples:
  kmr recipe download mixer.csv --link tcp://192.168.0.10:8888
  kmr recipe download mixer.csv --station 2 --link serial:///dev/ttyUSB0)";

const char *const COMPARE_EXAMPLES = R"(
Examples:
  kmr recipe compare mixer.csv --link tcp://192.168.0.10:8888
  kmr recipe compare mixer.csv --format csv)";

const char *const UPLOAD_EXAMPLES =
    R"(Without a TAG the values in FILE are replaced and everything else stays as it is;
with TAGs a new FILE is written; one that is not empty is refused.

Examples:
  kmr recipe upload mixer.csv --link tcp://192.168.0.10:8888
  kmr recipe upload new.csv D100 D110x3 --link serial:///dev/ttyUSB0)";

struct RecipeOptions {
    std::string file;
    std::vector<std::string> tags; // to upload; none: those in the file
    bool verify = false;           // read back after a download and compare
};

std::vector<RecipeItem> readFile(const QString &path, const NamedTagReader &reader)
{
    return parseRecipe(readTextFile(path), path, reader, RecipeValues::Needed);
}

// The runs, with consecutive ones joined.
std::vector<ElementRange> joined(std::vector<ElementRange>::const_iterator begin,
                                 std::vector<ElementRange>::const_iterator end)
{
    std::vector<ElementRange> runs;
    for (; begin != end; ++begin) {
        const bool goesOn = !runs.empty() && runs.back().station == begin->station &&
                            runs.back().area == begin->area && runs.back().end() == begin->first;
        if (goesOn)
            runs.back().count += begin->count;
        else
            runs.push_back(*begin);
    }
    return runs;
}

QString namesOf(std::vector<ElementRange>::const_iterator begin,
                std::vector<ElementRange>::const_iterator end)
{
    QStringList names;
    for (const ElementRange &run : joined(begin, end))
        names.append(QString("%1#%2").arg(run.station).arg(runName(run)));
    return names.isEmpty() ? QString("none") : names.join(' ');
}

// After a download that failed: what is written for certain, what may be, and what is not.
void reportCertainty(const TransferResult &transfer, const std::vector<ElementRange> &runs)
{
    const auto failed = runs.begin() + transfer.finished;
    const RequestResult::Outcome outcome = transfer.result.outcome;
    const bool isUnknown =
        outcome == RequestResult::Outcome::NoAnswer || outcome == RequestResult::Outcome::Unknown;
    const auto rest = isUnknown ? failed + transfer.unsure : failed;
    printError("written for certain: " + namesOf(runs.begin(), failed));
    if (isUnknown)
        printError("unknown whether written: " + namesOf(failed, rest));
    printError("not written: " + namesOf(rest, runs.end()));
}

ExitCode report(const TransferResult &transfer, const QString &done, const QString &failed)
{
    if (transfer.result.isDone()) {
        printError(QString("%1: %2 of %3 requests answered")
                       .arg(done)
                       .arg(transfer.finished)
                       .arg(transfer.requests));
        return ExitCode::Ok;
    }
    printError(QString("%1 at %2: %3; %4 of %5 requests were answered before")
                   .arg(failed, transfer.failedName, toText(transfer.result))
                   .arg(transfer.finished)
                   .arg(transfer.requests));
    return exitCodeOf(transfer.result);
}

// Shows the progress of a transfer. Between the writes of bits the driver polls.
void showProgress(Session &session, Session::Transfer direction, ProgressBar &bar)
{
    session.setObserver([direction, &bar](const Exchange &exchange) {
        const bool isPart = direction == Session::Transfer::Upload || !isRead(exchange.request);
        if (isPart && exchange.outcome == Exchange::Outcome::Good)
            bar.advance();
    });
}

// A record for each tag whose values differ; in other formats than plain one for every tag.
ExitCode reportDifferences(Format format, const std::vector<RecipeItem> &wanted,
                           const std::vector<RecipeItem> &found)
{
    RecordWriter records(format, "recipe compare", {"tag", "file", "controller", "outcome"}, false,
                         print);
    ExitCode code = ExitCode::Ok;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const Tag &tag = wanted[i].tag;
        const bool isEqual = wanted[i].values == found[i].values;
        const QString plain = QString("%1 file %2 controller %3")
                                  .arg(tag.text, formatValues(tag, wanted[i].values),
                                       formatValues(tag, found[i].values));
        records.add(isEqual ? QString() : plain,
                    {tag.text, interpret(tag, wanted[i].values), interpret(tag, found[i].values),
                     QString(isEqual ? "equal" : "differs")});
        if (!isEqual)
            code = ExitCode::Unknown;
    }
    records.end();
    return code;
}

// Reads the controller's values and compares.
ExitCode compare(Session &session, Format format, const std::vector<RecipeItem> &wanted,
                 const QString &file)
{
    std::vector<RecipeItem> found = wanted;
    ProgressBar bar(static_cast<int>(uploadRanges(session, wanted).size()));
    showProgress(session, Session::Transfer::Upload, bar);
    const TransferResult transfer = upload(session, found);
    bar.clear();
    if (!transfer.result.isDone())
        return report(transfer, {}, "comparison stopped");
    const ExitCode code = reportDifferences(format, wanted, found);
    printError(file + (code == ExitCode::Ok ? ": the controller holds the same values"
                                            : ": the controller holds other values"));
    return code;
}

ExitCode runRecipeDownload(const Options &options, const RecipeOptions &recipe)
{
    const QString file = toQString(recipe.file);
    Connection connection(options);
    const std::vector<RecipeItem> items = readFile(file, connection.tags());
    Session &session = connection.open();
    const std::vector<ElementRange> runs = downloadRanges(session, items);
    ProgressBar bar(static_cast<int>(runs.size()));
    showProgress(session, Session::Transfer::Download, bar);
    const TransferResult transfer = download(session, items);
    bar.clear();
    const ExitCode code = report(transfer, "downloaded " + file, "download stopped");
    if (code != ExitCode::Ok)
        reportCertainty(transfer, runs);
    return recipe.verify && code == ExitCode::Ok ? compare(session, options.format, items, file)
                                                 : code;
}

ExitCode runRecipeCompare(const Options &options, const RecipeOptions &recipe)
{
    const QString file = toQString(recipe.file);
    Connection connection(options);
    const std::vector<RecipeItem> items = readFile(file, connection.tags());
    return compare(connection.open(), options.format, items, file);
}

void requireEmpty(const QString &file)
{
    if (QFileInfo(file).size() > 0)
        throw Error(ErrorKind::Usage,
                    QString("%1 is not empty, and the upload would replace it: name a new file, or "
                            "leave out the tags to update the values in it")
                        .arg(file));
}

ExitCode runRecipeUpload(const Options &options, const RecipeOptions &recipe)
{
    const QString file = toQString(recipe.file);
    Connection connection(options);
    const bool isNew = !recipe.tags.empty();
    if (isNew)
        requireEmpty(file);
    const QString old = isNew ? QString() : readTextFile(file);
    std::vector<RecipeItem> items =
        isNew ? recipeOf(connection.readTags(toQStrings(recipe.tags)))
              : parseRecipe(old, file, connection.tags(), RecipeValues::Ignored);
    requireWritable(file); // otherwise the values would be lost at the end
    Session &session = connection.open();
    ProgressBar bar(static_cast<int>(uploadRanges(session, items).size()));
    showProgress(session, Session::Transfer::Upload, bar);
    const TransferResult transfer = upload(session, items);
    bar.clear();
    if (transfer.result.isDone())
        writeTextFile(file, isNew ? formatRecipe(items) : withValues(old, items));
    return report(transfer, "uploaded to " + file, file + " is unchanged, upload stopped");
}

} // namespace

void addRecipe(CLI::App &app, Command &chosen)
{
    CommandDefinition recipe(app, "recipe", "Move a recipe to or from the controller");
    recipe.requireCommand();
    recipe.setHelp(HELP);
    const auto own = std::make_shared<RecipeOptions>();

    CommandDefinition download(recipe, "download", "Write a file's values");
    download.add("FILE", own->file, "the recipe file").required();
    download.addFlag("--verify", own->verify, "read back and compare");
    download.setHelp(std::string(FILE_HELP) + DOWNLOAD_EXAMPLES);
    download.setAction(chosen, own, runRecipeDownload);

    CommandDefinition compare(recipe, "compare", "Show values that differ from a file");
    compare.add("FILE", own->file, "the recipe file").required();
    compare.setHelp(std::string(FILE_HELP) + COMPARE_EXAMPLES);
    compare.setAction(chosen, own, runRecipeCompare);

    CommandDefinition upload(recipe, "upload", "Read values into a file");
    upload.add("FILE", own->file, "the recipe file; written completely or not at all").required();
    upload.add("TAG", own->tags, "the tags to upload (default: those in FILE)");
    upload.setHelp(std::string(FILE_HELP) + UPLOAD_EXAMPLES);
    upload.setAction(chosen, own, runRecipeUpload);
}

} // namespace kmr
