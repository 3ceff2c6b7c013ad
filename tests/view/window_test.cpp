// The window as a whole: projects, a line that is lost, and closing.
#include "host/project/text_file.h"
#include "tests/view/line_fixture.h"
#include "view/start_dialog.h"
#include "view/translation.h"

#include <QMessageBox>
#include <QTranslator>

using namespace kmr;
using Model = ValuesModel;

class WindowTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        useOwnSettings(m_folder);
    }

    void aBadProjectIsRefusedWithItsLine()
    {
        const QString path = m_folder.filePath("bad.toml");
        writeTextFile(path, "statoin = 2\n");
        MainWindow window;
        window.show();
        QVERIFY(!window.openProject(path));
        QVERIFY(child<QMessageBox>(window)->text().startsWith(path + ":1: unknown key"));
    }

    void badNamesAndTagsAreLeftOutWithTheReason()
    {
        Line line;
        ProjectSettings settings = line.project({"level", "D1", "nobody"});
        settings.names = m_folder.filePath("names.csv");
        writeTextFile(settings.names, "name,tag,comment\nlevel,D7,the tank's\n9,D8,\n");
        MainWindow window;
        window.show();
        QVERIFY(window.start(settings));
        QCOMPARE(window.values().rowCount(), 2);
        QVERIFY(
            window.values().index(0, 0).data(Qt::ToolTipRole).toString().endsWith("the tank's"));
        const QString text = child<QMessageBox>(window)->text();
        QVERIFY2(text.contains("names.csv:3: ") && text.contains("nobody"), qPrintable(text));
    }

    void theDialogStartsTheBuiltInController()
    {
        MainWindow window;
        window.show();
        QVERIFY(window.start(simulated()));
        window.askForLine();
        auto *dialog = child<StartDialog>(window);
        QVERIFY(child<QRadioButton>(*dialog, "simulated")->isChecked());
        QTest::mouseClick(child<QPushButton>(*dialog, "start"), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(cell(window, 0, Model::CHANGES).toInt() > 0, PATIENCE);
    }

    void theDialogMakesTheProjectOfALink()
    {
        Drivers drivers(DRIVER_LIBRARY);
        StartDialog dialog(simulated(), drivers);
        dialog.show();
        QTest::mouseClick(child<QRadioButton>(dialog, "tcp"), Qt::LeftButton, {}, {10, 10});
        auto *host = child<QLineEdit>(dialog, "host");
        host->clear();
        QVERIFY(!child<QPushButton>(dialog, "start")->isEnabled());
        QTest::keyClicks(host, "10.0.0.7");
        child<QListWidget>(dialog, "tags")->selectAll();
        QTest::mouseClick(child<QPushButton>(dialog, "removeTag"), Qt::LeftButton);
        QTest::keyClicks(child<QLineEdit>(dialog, "tagText"), "D7");
        QTest::keyClick(child<QPushButton>(dialog, "addTag"), Qt::Key_Space);
        QCOMPARE(dialog.settings().link, QString("tcp://10.0.0.7:8888"));
        QCOMPARE(dialog.settings().tags, QStringList{"D7"});
    }

    void theDialogKeepsASpeedAndAFrameThatItDoesNotOffer()
    {
        Drivers drivers(DRIVER_LIBRARY);
        ProjectSettings settings = simulated();
        settings.link = "serial:///dev/ttyS9?baud=4800&frame=7E2";
        QCOMPARE(StartDialog(settings, drivers).settings().link, settings.link);
    }

    void theDialogOpensWithoutItsFileOfNames()
    {
        Line line;
        ProjectSettings settings = line.project({"D1"});
        settings.names = m_folder.filePath("lost.csv");
        writeTextFile(settings.names, "name,tag\nlevel,D7\n");
        MainWindow window;
        window.show();
        QVERIFY(window.start(settings));
        addTag(window, "D5");
        QFile::remove(settings.names);
        window.askForLine();
        QCOMPARE(child<StartDialog>(window)->settings().tags, (QStringList{"D1", "D5"}));
    }

    void theTabKeyGoesFromTheTopToTheBottom()
    {
        MainWindow window;
        child<QTabWidget>(window)->setCurrentIndex(1);
        window.show();
        const QStringList traffic = tabStops(window).filter(QRegularExpression("^(traffic|bytes)"));
        QCOMPARE(traffic, (QStringList{"trafficStation", "trafficFunction", "trafficKind",
                                       "traffic", "bytes"}));
        child<QTabWidget>(window)->setCurrentIndex(0);
        QVERIFY(!tabStops(window).contains("QwtPlotCanvas"));
        Drivers drivers(DRIVER_LIBRARY);
        StartDialog dialog(simulated(), drivers);
        dialog.show();
        QCOMPARE(tabStops(dialog).indexOf("start"), tabStops(dialog).size() - 2);
    }

    void aLostLineIsOpenedAgain()
    {
        Line line({"close=100ms,every=40"});
        OpenWindow window(line, {"D1"});
        auto *state = child<QLabel>(window, "state");
        QTRY_VERIFY_WITH_TIMEOUT(state->text().contains("The line was lost"), PATIENCE);
        line.setHits(Line::Hits::None);
        line.set("D", 1, 77);
        TRY_CELL(0, VALUE, QString("77"));
        QTRY_VERIFY_WITH_TIMEOUT(state->text().endsWith(": open"), PATIENCE);
    }

    void aLinkThatCannotBeOpenedIsReported()
    {
        ProjectSettings settings = Line().project({"D1"}); // nobody listens there any more
        MainWindow window;
        QVERIFY(window.start(settings));
        QTRY_VERIFY_WITH_TIMEOUT(
            child<QLabel>(window, "state")->text().contains("refused", Qt::CaseInsensitive),
            PATIENCE);
    }

    void theLinePageIsEmptyBeforeALineIsOpen()
    {
        MainWindow window;
        window.show();
        auto *pages = child<QTabWidget>(window);
        pages->setCurrentIndex(2);
        QTRY_VERIFY_WITH_TIMEOUT(
            child<QLabel>(window, "summary")->text().startsWith("0.0 requests"), PATIENCE);
    }

    void aBadLinkIsReportedAndTheOldLineStays()
    {
        Line line;
        OpenWindow window(line, {"D1"});
        ProjectSettings settings = line.project({"D2"});
        settings.link = "tpc://nowhere";
        QVERIFY(!window.start(settings));
        QVERIFY(child<QMessageBox>(window)->text().startsWith("bad link \"tpc://nowhere\""));
        QCOMPARE(cell(window, 0, Model::TAG), QString("D1"));
        TRY_CELL(0, QUALITY, QString("good"));
    }

    void closingDuringAWriteSaysWhatIsUncertain()
    {
        Line line({"silence"});
        line.setHits(Line::Hits::None);
        ProjectSettings settings = line.project({"D100"});
        settings.timeout = std::chrono::minutes(10);
        MainWindow window;
        window.show();
        QVERIFY(window.start(settings));
        TRY_CELL(0, VALUE, QString("0"));
        line.setHits(Line::Hits::Writes);
        confirm(typeValue(window, 0, "5"));
        QTRY_COMPARE_WITH_TIMEOUT(line.get("D", 100), 5U, PATIENCE); // written, but not answered
        window.close();
        QVERIFY(window.isVisible());
        auto *box = child<QMessageBox>(window);
        QVERIFY2(box->text().contains("D100 = 5: Unknown whether it was written"),
                 qPrintable(box->text()));
        QTest::keyClick(box, Qt::Key_Return);
        QTRY_VERIFY(!window.isVisible());
    }

#ifdef TRANSLATIONS
    void theWindowSpeaksTheLanguageOfTheLocale()
    {
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        useLanguageOfLocale(TRANSLATIONS);
        {
            MainWindow window;
            QCOMPARE(child<QMenu>(window, "file")->title(), QString("&Datei"));
            QCOMPARE(window.values().headerData(0, Qt::Horizontal, Qt::DisplayRole).toString(),
                     QString("Variable"));
        }
        qDeleteAll(qApp->findChildren<QTranslator *>());
        QLocale::setDefault(QLocale::c());
    }
#endif

    void theWindowComesBackAsItWasLeft()
    {
        {
            MainWindow window;
            window.resize(900, 500);
            child<QTableView>(window, "values")->setColumnWidth(0, 222);
            window.close();
        }
        MainWindow window;
        QCOMPARE(window.size(), QSize(900, 500));
        QCOMPARE(child<QTableView>(window, "values")->columnWidth(0), 222);
    }

private:
    // Names of what the Tab key reaches, in its order.
    static QStringList tabStops(QWidget &window)
    {
        QStringList names;
        for (QWidget *next = window.nextInFocusChain(); next != &window;
             next = next->nextInFocusChain()) {
            if (next->isVisibleTo(&window) && (next->focusPolicy() & Qt::TabFocus) != 0)
                names.append(next->objectName());
        }
        return names;
    }

    static ProjectSettings simulated()
    {
        ProjectSettings settings;
        settings.driver = DRIVER_LIBRARY;
        settings.tags = BuiltInController::tags();
        return settings;
    }

    QTemporaryDir m_folder;
};

QTEST_MAIN(WindowTest)
#include "window_test.moc"
