// kmr-view: the window on a line.
#include "view/main_window.h"
#include "view/translation.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>

int main(int argc, char *argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    const QApplication application(argc, argv);
    QApplication::setApplicationName("kmr-view");
    QApplication::setOrganizationName("ostrel-kmr");
    QApplication::setApplicationVersion(KMR_VERSION);
    QApplication::setDesktopFileName("kmr-view");

    kmr::useLanguageOfLocale();

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QCoreApplication::translate("main", "Shows the values, trends and traffic of a line of "
                                            "Ostrel KMR controllers."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(
        "PROJECT",
        QCoreApplication::translate("main", "the project to open, a kmr.toml; without one it asks"),
        "[PROJECT]");
    parser.process(application);

    kmr::MainWindow window;
    window.show();
    const QStringList files = parser.positionalArguments();
    QTimer::singleShot(0, &window, [&window, files] {
        if (files.isEmpty())
            window.askForLine();
        else
            window.openProject(files.front());
    });
    return QApplication::exec();
}
