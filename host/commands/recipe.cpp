#include "host/recipe.h"

#include "host/commands/commands.h"
#include "host/commands/connection.h"
#include "host/poll_plan.h"

#include <QFile>
#include <QSaveFile>

namespace kmr {

namespace {

std::vector<RecipeItem> readFile(const QString &path, const TagReader &reader, RecipeValues values)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw Error(ExitCode::Usage, QString("cannot read %1: %2").arg(path, file.errorString()));
    }
    return parseRecipe(QString::fromUtf8(file.readAll()), path, reader, values);
}

// The file is written whole or not at all.
void writeFile(const QString &path, const std::vector<RecipeItem> &items)
{
    QSaveFile file(path);
    const QByteArray text = formatRecipe(items).toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
        throw Error(ExitCode::ItemFailed,
                    QString("cannot write %1: %2").arg(path, file.errorString()));
    }
}

std::vector<RecipeItem> itemsOf(const std::vector<Tag> &tags)
{
    std::vector<RecipeItem> items;
    for (const Tag &tag : tags) {
        checkRecipeTag(tag);
        items.push_back({tag, {}});
    }
    return items;
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

} // namespace

ExitCode runRecipeDownload(const Options &options, const QString &file)
{
    Connection connection(options);
    const std::vector<RecipeItem> items = readFile(file, connection.tags(), RecipeValues::Needed);
    const TransferResult transfer = download(connection.open(), items);
    return report(transfer, "downloaded " + file, "download stopped");
}

ExitCode runRecipeUpload(const Options &options, const QString &file, const QStringList &texts)
{
    Connection connection(options);
    std::vector<RecipeItem> items = texts.isEmpty()
                                        ? readFile(file, connection.tags(), RecipeValues::Ignored)
                                        : itemsOf(connection.readTags(texts));
    const TransferResult transfer = upload(connection.open(), items);
    if (transfer.result.isDone())
        writeFile(file, items);
    return report(transfer, "uploaded to " + file, file + " is unchanged, upload stopped");
}

} // namespace kmr
