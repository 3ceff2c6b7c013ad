// The window on a line: its parts, the project that it shows, and the thread of the line.
#pragma once

#include "view/built_in_controller.h"
#include "view/history.h"
#include "view/line_counts.h"
#include "view/line_thread.h"
#include "view/line_view.h"
#include "view/plan_view.h"
#include "view/project.h"
#include "view/reading_page.h"
#include "view/recipe_view.h"
#include "view/traffic_view.h"
#include "view/trend_view.h"
#include "view/values_model.h"
#include "view/values_view.h"
#include "view/write_dialog.h"

#include <QLabel>
#include <QMainWindow>
#include <QPointer>
#include <QSplitter>
#include <QTabWidget>
#include <QTimer>
#include <QToolButton>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kmr {

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    MainWindow();
    ~MainWindow() override;

    // Opens a project's file. Tells the person what is wrong with it and returns false.
    bool openProject(const QString &path);

    // Shows these settings; without a link, the built-in controller.
    bool start(const ProjectSettings &settings);

    // Writes the project's file; of one that was opened, what a person has written there stays.
    // Throws Error (Output).
    void saveProject(const QString &path);

    // Shows the dialog that starts without a project.
    void askForLine();

    // Opens what 'kmr log' has written, or a capture, on pages of their own: trends, and of a
    // capture also its traffic. Returns before it is read. Tells the person what is wrong with it.
    void openRecorded(const QString &path);

    // Opens a recipe on its page. Tells the person what is wrong with it and returns false.
    bool openRecipe(const QString &path);

    ValuesModel &values()
    {
        return m_values;
    }
    TrendView &trends()
    {
        return *m_trends;
    }

protected:
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void makeMenus();
    void makeFileMenu();
    void fillRecent(QMenu &menu);
    void noteRecent(const QString &path);
    void restoreWindow();
    void saveWindow();
    void chooseProject();
    void chooseFileToSave(const std::function<void()> &next);
    void save(const QString &path, const std::function<void()> &next);
    bool hasOtherTags(const QString &path) const;
    void saveThen(const std::function<void()> &next);
    void setProject(const QString &path, bool isChanged);
    void leaveProject(const std::function<void()> &next);
    void clearProject();
    QStringList addTags(const QStringList &tags);
    QStringList tagTexts() const;
    void saveLook(const QString &group) const;
    void restoreLook(const QString &group);
    void rememberProject() const;
    void recallProject();
    QVariantList curves() const;
    void showCurves(const QVariantList &curves);
    void stopLine();
    void startLine(const QString &link);
    void pollTags();
    void takeNews();
    void addPage(QWidget *page, const QString &title);
    void showRecorded(ReadingPage &reading);
    void makeTrends();
    void closePage(int index);
    void record(const TagNews &news);
    void showTrends(const std::vector<int> &ids);
    void forgetTrend(int id);
    void markWrite(int id, double time, const QString &text);
    void chooseRecording();
    void makeTraffic();
    void makeLine();
    void makePlan();
    void makeRecipes();
    void takeRecipes(const LineNews &news);
    void chooseRecipe();
    void showPlan();
    void capture(const QString &path);
    void openFile(const QString &path);
    std::chrono::nanoseconds characterTimeOfLink() const;
    void refresh();
    void takeWrites(const std::vector<WriteNews> &writes);
    void tellFailure(const QString &text);
    void showState(const LineNews &news);
    void forgetUnpolledStations();
    void showHint();
    void addTag(const Tag &tag);
    void askToWrite(int id);
    void warn(const QString &text);

    std::unique_ptr<Drivers> m_drivers;
    QString m_loaded; // the path that they were loaded from
    std::unique_ptr<BuiltInController> m_simulated;
    std::unique_ptr<LineThread> m_line;

    ProjectSettings m_settings;
    QString m_path;                                    // of the project's file; empty: none yet
    QString m_text;                                    // of that file
    std::vector<std::pair<int, QString>> m_unreadTags; // with their places in the project
    std::unique_ptr<NamedTagReader> m_reader;
    int m_lastId = 0;

    struct OpenWrite {
        int id = 0;   // of the tag
        QString text; // "D100 = 250"
        QPointer<WriteDialog> dialog;
    };
    std::map<int, OpenWrite> m_writes; // by the number of the request
    QStringList m_uncertain;           // writes that failed when the line was stopped

    ValuesModel m_values;
    History m_history;
    ValuesView *m_valuesView;
    TrendView *m_trends;
    TrafficView *m_traffic;
    LineCounts m_counts;
    LineView *m_lineView;
    PlanView *m_plan;
    RecipeView *m_recipe;
    bool m_isTransferring = false;
    bool m_isStopping = false; // the line
    QTabWidget *m_pages;
    int m_steadyPages = 0; // the first ones, which can't be closed
    QSplitter *m_splitter;
    QLabel *m_state;
    QToolButton *m_hint; // which stations don't answer as they should
    QTimer m_refresh;
};

} // namespace kmr
