#include "view/recipe_view.h"

#include "host/error.h"
#include "host/project/text_file.h"
#include "view/outcome_text.h"
#include "view/quality_icon.h"
#include "view/recipe_certainty.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMessageBox>
#include <QVBoxLayout>

namespace kmr {

namespace {

enum Column { TAG, IN_FILE, IN_CONTROLLER, STATE, COLUMNS };

QString certaintyText(Certainty certainty)
{
    switch (certainty) {
    case Certainty::Written:
        return RecipeView::tr("written");
    case Certainty::InPart:
        return RecipeView::tr("written in part");
    case Certainty::Unknown:
        return RecipeView::tr("unknown whether written");
    case Certainty::NotWritten:
        break;
    }
    return RecipeView::tr("not written");
}

Quality qualityOf(Certainty certainty)
{
    return certainty == Certainty::Written      ? Quality::Good
           : certainty == Certainty::NotWritten ? Quality::Unread
                                                : Quality::Stale;
}

} // namespace

RecipeView::RecipeView(QWidget *parent)
    : QWidget(parent), m_file(new QLabel(tr("No recipe is open."))), m_outcome(new QLabel),
      m_progress(new QProgressBar), m_table(new QTableWidget(0, COLUMNS))
{
    m_outcome->setObjectName("recipeOutcome");
    m_outcome->setWordWrap(true);
    m_progress->setAccessibleName(tr("Progress of the transfer"));
    m_progress->hide();
    m_table->setObjectName("recipe");
    m_table->setAccessibleName(tr("Entries of the recipe"));
    m_table->setHorizontalHeaderLabels({tr("Tag"), tr("File"), tr("Controller"), tr("State")});
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
    m_table->horizontalHeader()->setDefaultSectionSize(150);
    m_table->horizontalHeader()->setStretchLastSection(true);
    auto *line = new QHBoxLayout;
    makeButtons(*line);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(line);
    layout->addWidget(m_file);
    layout->addWidget(m_table, 1);
    layout->addWidget(m_progress);
    layout->addWidget(m_outcome);
    enable();
}

void RecipeView::makeButtons(QHBoxLayout &line)
{
    const auto add = [&](const QString &text, const char *name) {
        auto *button = new QPushButton(text);
        button->setObjectName(name);
        line.addWidget(button);
        return button;
    };
    connect(add(tr("&Open recipe…"), "openRecipe"), &QPushButton::clicked, this,
            &RecipeView::fileWanted);
    m_compare = add(tr("&Compare"), "compareRecipe");
    m_compare->setToolTip(tr("Read the controller's values beside those of the file"));
    m_download = add(tr("&Download"), "downloadRecipe");
    m_download->setToolTip(tr("Write the file's values to the controller"));
    m_upload = add(tr("&Upload"), "uploadRecipe");
    m_upload->setToolTip(tr("Replace the file's values by those of the controller"));
    line.addStretch();
    connect(m_compare, &QPushButton::clicked, this, [this] { begin(RecipeNews::Kind::Compare); });
    connect(m_download, &QPushButton::clicked, this, [this] { confirmDownload(); });
    connect(m_upload, &QPushButton::clicked, this, [this] { begin(RecipeNews::Kind::Upload); });
}

void RecipeView::open(const QString &path, const NamedTagReader &reader)
{
    const QString text = readTextFile(path);
    m_items = parseRecipe(text, path, reader, RecipeValues::Needed);
    m_path = path;
    m_text = text;
    m_found.reset();
    m_file->setText(tr("%1: %n entries", nullptr, static_cast<int>(m_items.size())).arg(path));
    m_outcome->clear();
    showItems();
    enable();
}

void RecipeView::clear()
{
    m_items.clear();
    m_isBusy = false;
    m_file->setText(tr("No recipe is open."));
    m_outcome->clear();
    m_progress->hide();
    showItems();
    enable();
}

void RecipeView::put(int row, int column, const QString &text)
{
    m_table->setItem(row, column, new QTableWidgetItem(text)); // the table deletes it
}

void RecipeView::showItems()
{
    m_table->setRowCount(0);
    m_table->setRowCount(static_cast<int>(m_items.size()));
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const RecipeItem &item = m_items[static_cast<std::size_t>(row)];
        put(row, TAG, item.tag.text);
        put(row, IN_FILE, withUnit(item.tag, item.values));
        put(row, IN_CONTROLLER, {});
        put(row, STATE, {});
    }
}

void RecipeView::enable()
{
    for (QPushButton *button : {m_compare, m_download, m_upload})
        button->setEnabled(!m_items.empty() && !m_isBusy);
}

void RecipeView::begin(RecipeNews::Kind kind)
{
    m_isBusy = true;
    m_outcome->setText(tr("Transferring…"));
    m_progress->setRange(0, 0);
    m_progress->show();
    enable();
    emit transferWanted(kind, m_items);
}

void RecipeView::confirmDownload()
{
    auto *box = new QMessageBox(
        QMessageBox::Question, tr("Download"),
        tr("Write %n entries of %1 to the controller?", nullptr, static_cast<int>(m_items.size()))
            .arg(QFileInfo(m_path).fileName()),
        QMessageBox::Cancel, this);
    QPushButton *write = box->addButton(tr("&Write"), QMessageBox::AcceptRole);
    write->setObjectName("confirmDownload");
    box->setDefaultButton(QMessageBox::Cancel);
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(write, &QPushButton::clicked, this, [this] { begin(RecipeNews::Kind::Download); });
    box->open();
}

void RecipeView::showProgress(int requests)
{
    m_progress->setFormat(tr("%1 requests answered").arg(requests));
    m_outcome->setText(tr("%1 requests answered").arg(requests));
}

void RecipeView::showResult(const RecipeNews &news)
{
    m_isBusy = false;
    m_progress->hide();
    enable();
    if (!news.fault.isEmpty()) {
        m_outcome->setText(news.fault);
        return;
    }
    QString text = tr("%1 of %2 requests were answered for certain.")
                       .arg(news.result.finished)
                       .arg(news.result.requests);
    if (!news.result.result.isDone())
        text = tr("It stopped at %1: %2. %3")
                   .arg(news.result.failedName, failureText(news.result.result), text);
    m_outcome->setText(text);
    if (news.kind == RecipeNews::Kind::Download) {
        showCertainty(news);
    } else if (news.result.result.isDone()) {
        m_found = news.items;
        if (news.kind == RecipeNews::Kind::Upload)
            saveUpload();
        showFound();
    }
}

void RecipeView::showFound()
{
    int differing = 0;
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const RecipeItem &item = m_items[static_cast<std::size_t>(row)];
        const RecipeItem &found = (*m_found)[static_cast<std::size_t>(row)];
        const bool isEqual = item.values == found.values;
        differing += isEqual ? 0 : 1;
        put(row, IN_CONTROLLER, withUnit(found.tag, found.values));
        put(row, STATE, isEqual ? tr("equal") : tr("differs"));
        m_table->item(row, STATE)->setIcon(qualityIcon(isEqual ? Quality::Good : Quality::Stale));
    }
    m_outcome->setText(m_outcome->text() + ' ' +
                       (differing == 0 ? tr("All entries are equal.")
                                       : tr("%n entries differ.", nullptr, differing)));
}

void RecipeView::showCertainty(const RecipeNews &news)
{
    const std::vector<Certainty> certainties = certaintyOf(news.items, news.runs, news.result);
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const Certainty certainty = certainties[static_cast<std::size_t>(row)];
        put(row, IN_CONTROLLER, {});
        put(row, STATE, certaintyText(certainty));
        m_table->item(row, STATE)->setIcon(qualityIcon(qualityOf(certainty)));
    }
}

// The values of the file are the controller's from now on, all else stays.
void RecipeView::saveUpload()
{
    try {
        const QString text = withValues(m_text, *m_found);
        writeTextFile(m_path, text);
        m_text = text;
        m_items = *m_found;
        showItems();
        m_outcome->setText(tr("Saved in %1.").arg(m_path));
    } catch (const Error &error) {
        m_outcome->setText(error.text());
    }
}

} // namespace kmr
