#include "host/session/recipe_transfer.h"

#include "host/project/text_file.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"
#include "kmr/progress.h"

namespace kmr {

namespace {

std::vector<RecipeItem> readFile(const QString &path, const TagReader &reader)
{
    return parseRecipe(readTextFile(path), path, reader, RecipeValues::Needed);
}

// The text of a file that will be written again. Throws Error (Usage) for what would not come back
// as it was.
QString readOldText(const QString &path)
{
    QString text = readTextFile(path);
    if (text.contains(QChar::ReplacementCharacter)) {
        throw Error(ExitCode::Usage,
                    QString("%1 is not in UTF-8, so its remarks would be lost: save it as UTF-8")
                        .arg(path));
    }
    return text;
}

// The runs, with those that follow on one another as one.
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

// After a download that failed: what the controller holds of it for certain, and what not.
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

// Shows how far a transfer has come. Nothing else is polled meanwhile, so each good answer is one
// of its requests.
void showProgress(Session &session, ProgressBar &bar)
{
    session.setObserver([&bar](const Exchange &exchange) {
        if (exchange.outcome == Exchange::Outcome::Good)
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
    ProgressBar bar(static_cast<int>(recipeRanges(wanted, session.groupLimit()).size()));
    showProgress(session, bar);
    const TransferResult transfer = upload(session, found);
    bar.clear();
    if (!transfer.result.isDone())
        return report(transfer, {}, "comparison stopped");
    const ExitCode code = reportDifferences(format, wanted, found);
    printError(file + (code == ExitCode::Ok ? ": the controller holds the same values"
                                            : ": the controller holds other values"));
    return code;
}

} // namespace

ExitCode runRecipeDownload(const Options &options, const QString &file, bool verify)
{
    Connection connection(options);
    const std::vector<RecipeItem> items = readFile(file, connection.tags());
    Session &session = connection.open();
    const std::vector<ElementRange> runs = recipeRanges(items, session.groupLimit());
    ProgressBar bar(static_cast<int>(runs.size()));
    showProgress(session, bar);
    const TransferResult transfer = download(session, items);
    bar.clear();
    const ExitCode code = report(transfer, "downloaded " + file, "download stopped");
    if (code != ExitCode::Ok)
        reportCertainty(transfer, runs);
    return verify && code == ExitCode::Ok ? compare(session, options.format, items, file) : code;
}

ExitCode runRecipeCompare(const Options &options, const QString &file)
{
    Connection connection(options);
    const std::vector<RecipeItem> items = readFile(file, connection.tags());
    return compare(connection.open(), options.format, items, file);
}

ExitCode runRecipeUpload(const Options &options, const QString &file, const QStringList &tags)
{
    Connection connection(options);
    const bool isNew = !tags.isEmpty();
    const QString old = isNew ? QString() : readOldText(file);
    std::vector<RecipeItem> items =
        isNew ? recipeOf(connection.readTags(tags))
              : parseRecipe(old, file, connection.tags(), RecipeValues::Ignored);
    requireWritable(file); // else the values would be lost at the end
    Session &session = connection.open();
    ProgressBar bar(static_cast<int>(recipeRanges(items, session.groupLimit()).size()));
    showProgress(session, bar);
    const TransferResult transfer = upload(session, items);
    bar.clear();
    if (transfer.result.isDone())
        writeTextFile(file, isNew ? formatRecipe(items) : withValues(old, items));
    return report(transfer, "uploaded to " + file, file + " is unchanged, upload stopped");
}

} // namespace kmr
