// Makes the pictures of kmr-view from the running window, on a simulated line with faults.
//   view_pictures FOLDER
#include "simulator/faults.h"
#include "view/built_in_controller.h"
#include "view/main_window.h"
#include "view/quality_icon.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSettings>
#include <QStyleFactory>
#include <QTemporaryDir>

#include <functional>

using namespace kmr;

namespace {

void wait(int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < milliseconds)
        QApplication::processEvents(QEventLoop::AllEvents, 50);
}

void save(QWidget &window, const QString &folder, const QString &name)
{
    wait(400);
    const QString path = QString("%1/view-%2.png").arg(folder, name);
    if (!window.grab().save(path))
        qFatal("cannot write %s", qPrintable(path));
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

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 2)
        qFatal("name the folder for the pictures");
    const QString folder = arguments[1];
    const QTemporaryDir settings;
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    if (arguments.contains("--dark"))
        useDarkColours();

    const BuiltInController controller(limpingLine());
    ProjectSettings project;
    project.link = controller.link();
    project.driver = DRIVER_LIBRARY;
    project.timeout = std::chrono::milliseconds(150);
    project.tags = BuiltInController::tags();
    project.tags.append("D110");
    MainWindow window;
    window.resize(1360, 800);
    window.show();
    if (!window.start(project))
        qFatal("the line could not be started");
    wait(1000);
    auto *table = window.findChild<QTableView *>("values");
    for (const int row : {1, 2, 3, 6, 4})
        table->selectionModel()->select(table->model()->index(row, 0),
                                        QItemSelectionModel::Select | QItemSelectionModel::Rows);
    auto *values = window.findChild<ValuesView *>();
    emit values->trendWanted(values->marked());
    table->clearSelection();
    window.trends().plot().show(0, 30);
    wait(25000);
    window.trends().plot().setMarker(TrendPlot::A, window.trends().plot().to() - 15);
    window.trends().plot().setMarker(TrendPlot::B, window.trends().plot().to() - 5);
    save(window, folder, "trends");
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
    pages->setCurrentIndex(0);
    window.askForLine();
    wait(300);
    save(*QApplication::activeModalWidget(), folder, "start");
    return 0;
}
