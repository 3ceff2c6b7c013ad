// What the window does with recipes.
#include "host/error.h"
#include "view/main_window.h"

#include <QFileDialog>

namespace kmr {

void MainWindow::makeRecipes()
{
    addPage(m_recipe, tr("Rec&ipes"));
    connect(m_recipe, &RecipeView::fileWanted, this, &MainWindow::chooseRecipe);
    connect(m_recipe, &RecipeView::transferWanted, this,
            [this](RecipeNews::Kind kind, const std::vector<RecipeItem> &items) {
                if (!m_line)
                    return;
                m_isTransferring = true;
                m_line->transfer(kind, items);
            });
}

void MainWindow::chooseRecipe()
{
    auto *dialog =
        new QFileDialog(this, tr("Open recipe"), QString(), tr("Recipes (*.csv);;All files (*)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this](const QString &path) { openRecipe(path); });
    dialog->open();
}

bool MainWindow::openRecipe(const QString &path)
{
    if (!m_reader)
        return false;
    if (m_isTransferring) {
        warn(tr("%1 is not opened: a recipe is being transferred.").arg(path));
        return false;
    }
    try {
        m_recipe->open(path, *m_reader);
    } catch (const Error &error) {
        warn(error.text());
        return false;
    }
    m_pages->setCurrentWidget(m_recipe);
    return true;
}

void MainWindow::takeRecipes(const LineNews &news)
{
    if (m_isTransferring && news.recipes.empty())
        m_recipe->showProgress(news.recipeRequests);
    for (const RecipeNews &recipe : news.recipes) {
        m_isTransferring = false;
        m_recipe->showResult(recipe);
        const bool isUncertain = recipe.kind == RecipeNews::Kind::Download &&
                                 recipe.fault.isEmpty() && !recipe.result.result.isDone();
        if (isUncertain && m_isStopping)
            tellFailure(tr("The download of a recipe stopped at %1; %2 of %3 requests were "
                           "answered for certain.")
                            .arg(recipe.result.failedName)
                            .arg(recipe.result.finished)
                            .arg(recipe.result.requests));
    }
}

} // namespace kmr
