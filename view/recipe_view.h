// The page of recipes: a file beside the controller, and transfers between them.
#pragma once

#include "host/project/recipe_file.h"
#include "view/line_news.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QWidget>

#include <optional>
#include <vector>

class QHBoxLayout;

namespace kmr {

class RecipeView : public QWidget {
    Q_OBJECT

public:
    explicit RecipeView(QWidget *parent = nullptr);

    // Shows a recipe's file. Throws Error (Usage).
    void open(const QString &path, const NamedTagReader &reader);
    void clear();

    // How far the transfer has come, and what became of it.
    void showProgress(int requests);
    void showResult(const RecipeNews &news);

signals:
    // The page asks for a file, and for transfers of these items.
    void fileWanted();
    void transferWanted(kmr::RecipeNews::Kind kind, const std::vector<kmr::RecipeItem> &items);

private:
    void makeButtons(QHBoxLayout &line);
    void begin(RecipeNews::Kind kind);
    void confirmDownload();
    void showItems();
    void showFound();
    void showCertainty(const RecipeNews &news);
    void saveUpload();
    void enable();
    void put(int row, int column, const QString &text);

    QString m_path;
    QString m_text; // of the file
    std::vector<RecipeItem> m_items;
    std::optional<std::vector<RecipeItem>> m_found; // in the controller
    bool m_isBusy = false;
    QLabel *m_file;
    QLabel *m_outcome;
    QProgressBar *m_progress;
    QTableWidget *m_table;
    QPushButton *m_compare = nullptr;
    QPushButton *m_download = nullptr;
    QPushButton *m_upload = nullptr;
};

} // namespace kmr
