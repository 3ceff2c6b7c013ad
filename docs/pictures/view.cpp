// Makes the pictures of kmr-view from the running window, on a simulated line with faults, and
// looks for what is empty, overlaps or is cut in them.
//   view_pictures FOLDER [--dark] [--german] [--short]
// --short: with seconds of data, for tests; --german: as far as it is translated. Exit codes: 0 all
// looks well, 1 something does not.
#include "host/project/text_file.h"
#include "simulator/faults.h"
#include "tests/view/look.h"
#include "view/built_in_controller.h"
#include "view/main_window.h"
#include "view/quality_icon.h"
#include "view/translation.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QEventLoop>
#include <QPushButton>
#include <QSettings>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

using namespace kmr;

namespace {

void wait(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

int faults = 0;

// Keeps a picture, and complains of what does not look well.
void save(QWidget &window, const QString &folder, const QString &name)
{
    wait(400);
    const QString path = QString("%1/view-%2.png").arg(folder, name);
    if (!window.grab().save(path))
        qFatal("cannot write %s", qPrintable(path));
    for (const QString &fault : faultsOfLook(window)) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(name), qPrintable(fault));
        ++faults;
    }
}

void useDarkColours()
{
    QPalette dark(QColor(0x2b, 0x2d, 0x30));
    dark.setColor(QPalette::Base, QColor(0x1e, 0x1f, 0x22));
    dark.setColor(QPalette::AlternateBase, QColor(0x26, 0x28, 0x2b));
    QApplication::setPalette(dark);
}

BuiltInSettings limpingLine()
{
    QString error;
    BuiltInSettings settings;
    settings.faults = {*simulator::parseFault("silence,every=23", error),
                       *simulator::parseFault("flip,every=31", error)};
    return settings;
}

ProjectSettings project(const BuiltInController &controller)
{
    ProjectSettings project;
    project.link = controller.link();
    project.driver = DRIVER_LIBRARY;
    project.timeout = std::chrono::milliseconds(150);
    project.tags = BuiltInController::tags();
    project.tags.append("D4095x2"); // across a border
    return project;
}

void showTrends(MainWindow &window, const QString &folder, int milliseconds)
{
    auto *table = window.findChild<QTableView *>("values");
    for (const int row : {1, 2, 3, 6, 4})
        table->selectionModel()->select(table->model()->index(row, 0),
                                        QItemSelectionModel::Select | QItemSelectionModel::Rows);
    auto *values = window.findChild<ValuesView *>();
    emit values->trendWanted(values->marked());
    table->clearSelection();
    window.trends().plot().show(0, 30);
    wait(milliseconds);
    window.trends().plot().setMarker(TrendPlot::A, window.trends().plot().to() - 15);
    window.trends().plot().setMarker(TrendPlot::B, window.trends().plot().to() - 5);
    save(window, folder, "trends");
    values->setGrouping(Grouping::Area);
    save(window, folder, "groups");
    values->setGrouping(Grouping::None);
}

void showPages(MainWindow &window, const QString &folder)
{
    auto *pages = window.findChild<QTabWidget *>();
    pages->setCurrentIndex(1);
    wait(500);
    auto *traffic = window.findChild<QTableView *>("traffic");
    traffic->selectRow(traffic->model()->rowCount() - 8);
    save(window, folder, "traffic");
    pages->setCurrentIndex(2);
    emit window.findChild<LineView *>()->examinationWanted();
    wait(2500);
    save(window, folder, "line");
    pages->setCurrentIndex(3);
    save(window, folder, "plan");
    window.findChild<QCheckBox *>("planRaw")->setChecked(true);
    save(window, folder, "plan-hole");
    const QString recipe = folder + "/mixer.csv";
    writeTextFile(recipe, "tag,value\nD110,250\nD111,12\nM20,1\n");
    window.openRecipe(recipe);
    window.findChild<QPushButton *>("compareRecipe")->click();
    wait(1500);
    save(window, folder, "recipes");
    QFile::remove(recipe);
}

void showDialogs(MainWindow &window, const QString &folder)
{
    window.askForLine();
    wait(300);
    QWidget *start = QApplication::activeModalWidget();
    save(*start, folder, "start");
    start->close();
    emit window.findChild<ValuesView *>()->writeWanted(2);
    wait(300);
    save(*QApplication::activeModalWidget(), folder, "write");
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 2)
        qFatal("name the folder for the pictures");
    const QString folder = arguments[1];
    QDir().mkpath(folder);
    const QTemporaryDir settings;
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    if (arguments.contains("--dark"))
        useDarkColours();

    if (arguments.contains("--german")) {
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        useLanguageOfLocale(TRANSLATIONS);
    }

    const BuiltInController controller(limpingLine());
    MainWindow window;
    window.show();
    if (!window.start(project(controller)))
        qFatal("the line could not be started");
    wait(1000);
    showTrends(window, folder, arguments.contains("--short") ? 5000 : 25000);
    showPages(window, folder);
    showDialogs(window, folder);
    return faults == 0 ? 0 : 1;
}
