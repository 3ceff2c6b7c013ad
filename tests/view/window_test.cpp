// The window as a whole: projects, a line that is lost, and closing.
#include "host/project/text_file.h"
#include "tests/view/line_fixture.h"
#include "view/start_dialog.h"
#include "view/write_dialog.h"

#include <QFileDialog>
#include <QMessageBox>

#include <functional>

Q_DECLARE_METATYPE(std::function<void(kmr::MainWindow &, const QString &)>)

using namespace kmr;
using Model = ValuesModel;

class WindowTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        useOwnSettings(m_folder);
    }

    void aProjectIsSavedAsItWasOpened()
    {
        Line line;
        const QString path = m_folder.filePath("kmr.toml");
        writeTextFile(path, formatProject(line.project({"D1", "D2/hex"}), path));
        MainWindow window;
        QVERIFY(window.openProject(path));
        QTRY_COMPARE_WITH_TIMEOUT(cell(window, 1, Model::VALUE), QString("0x0000"), PATIENCE);
        const QString copy = m_folder.filePath("copy.toml");
        window.saveProject(copy);
        QCOMPARE(readTextFile(copy), readTextFile(path));
        QCOMPARE(QSettings().value("recent").toStringList(), (QStringList{copy, path}));
    }

    void aSavedProjectKeepsWhatAPersonHasWritten()
    {
        Line line;
        const QString path = m_folder.filePath("commented.toml");
        const QString head = "driver = \"" DRIVER_LIBRARY "\" # ours\nlink = \"" + line.link() +
                             "\"\ntags = [\n    \"D1\", # level\n    \"nobody\",\n";
        const QString tail = "]\n\n# for the broker\n[publish]\nbroker = \"mqtt://b\"\n";
        writeTextFile(path, head + tail);
        MainWindow window;
        window.show();
        QVERIFY(window.openProject(path));
        QTest::keyClick(child<QMessageBox>(window), Qt::Key_Return); // "nobody" is no tag
        QTRY_VERIFY(!window.findChild<QMessageBox *>());
        addTag(window, "D7");
        press(window, Qt::Key_S);
        QCOMPARE(readTextFile(path), head + "    \"D7\",\n" + tail);
        QVERIFY(!window.isWindowModified());
    }

    void unsavedTagsAreNotReplacedUnasked_data()
    {
        using Open = std::function<void(MainWindow &, const QString &)>;
        QTest::addColumn<Open>("open");
        QTest::newRow("drop") << Open(dropFile);
        QTest::newRow("recent") << Open([](MainWindow &window, const QString &path) {
            emit child<QMenu>(window, "file")->aboutToShow();
            for (QAction *action : child<QMenu>(window, "recent")->actions()) {
                if (action->text() == path)
                    action->trigger();
            }
        });
        QTest::newRow("file dialog") << Open([](MainWindow &window, const QString &path) {
            press(window, Qt::Key_O);
            emit child<QFileDialog>(window)->fileSelected(path);
            child<QFileDialog>(window)->close();
        });
        QTest::newRow("new line") << Open([](MainWindow &window, const QString &) {
            press(window, Qt::Key_N);
            auto *dialog = child<StartDialog>(window);
            child<QListWidget>(*dialog, "tags")->clear();
            child<QListWidget>(*dialog, "tags")->addItem("D2");
            dialog->accept();
        });
    }

    void unsavedTagsAreNotReplacedUnasked()
    {
        QFETCH(const std::function<void(MainWindow &, const QString &)>, open);
        Line line;
        const QString path = saved(line, "first.toml", "D1");
        const QString other = saved(line, "other.toml", "D2");
        MainWindow window;
        window.show();
        QVERIFY(window.openProject(other) && window.openProject(path));
        addTag(window, "D5");
        open(window, other);
        QTest::keyClick(question(window), Qt::Key_Escape);
        QTRY_VERIFY(!window.findChild<QMessageBox *>());
        QCOMPARE(window.values().rowCount(), 2);
        open(window, other);
        QTest::mouseClick(question(window)->button(QMessageBox::Save), Qt::LeftButton);
        QTRY_COMPARE(cell(window, 0, Model::TAG), QString("D2"));
        QVERIFY(readTextFile(path).contains("D5"));
    }

    void tagsOfANewLineMayBeDiscarded()
    {
        Line line;
        const QString other = saved(line, "other.toml", "D2");
        MainWindow window;
        window.show();
        QVERIFY(window.start(line.project({})));
        addTag(window, "D5");
        dropFile(window, other);
        QTest::mouseClick(question(window)->button(QMessageBox::Discard), Qt::LeftButton);
        QTRY_COMPARE(cell(window, 0, Model::TAG), QString("D2"));
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

    void aLostLineIsOpenedAgain()
    {
        Line line({"close=100ms,every=40"});
        MainWindow window;
        QVERIFY(window.start(line.project({"D1"})));
        auto *state = child<QLabel>(window, "state");
        QTRY_VERIFY_WITH_TIMEOUT(state->text().contains("The line was lost"), PATIENCE);
        line.setHits(Line::Hits::None);
        line.set("D", 1, 77);
        QTRY_COMPARE_WITH_TIMEOUT(cell(window, 0, Model::VALUE), QString("77"), PATIENCE);
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

    void closingDuringAWriteSaysWhatIsUncertain()
    {
        Line line({"silence"});
        line.setHits(Line::Hits::None);
        ProjectSettings settings = line.project({"D100"});
        settings.timeout = std::chrono::minutes(10);
        MainWindow window;
        window.show();
        QVERIFY(window.start(settings));
        QTRY_COMPARE_WITH_TIMEOUT(cell(window, 0, Model::VALUE), QString("0"), PATIENCE);
        clickCell(window, 0, Model::VALUE);
        auto *dialog = child<WriteDialog>(window);
        line.setHits(Line::Hits::Writes);
        QTest::keyClicks(child<QComboBox>(*dialog, "newValue"), "5");
        QTest::mouseClick(child<QPushButton>(*dialog, "write"), Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(line.get("D", 100), 5U, PATIENCE); // written, but not answered
        window.close();
        QVERIFY(window.isVisible());
        auto *box = child<QMessageBox>(window);
        QVERIFY2(box->text().contains("D100 = 5: Unknown whether it was written"),
                 qPrintable(box->text()));
        QTest::keyClick(box, Qt::Key_Return);
        QTRY_VERIFY(!window.isVisible());
    }

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

    void eachProjectIsLookedAtAsItWasLeft()
    {
        Line line;
        const QString path = saved(line, "first.toml", "M0x2");
        const QString other = saved(line, "other.toml", "M0x2");
        MainWindow window;
        window.show();
        QVERIFY(window.openProject(path));
        mark(window, 0);
        QTest::keyClick(child<QTableView>(window, "values"), Qt::Key_T, Qt::ControlModifier);
        TrendStyle style = window.trends().styles()[1];
        style.factor = 0.1;
        window.trends().restyle(1, style);
        child<QTableView>(window, "values")->setColumnWidth(0, 211);
        child<ValuesView>(window)->setGrouping(Grouping::Area);
        child<QTabWidget>(window)->setCurrentIndex(2);
        QVERIFY(window.openProject(other));
        QCOMPARE(window.trends().styles().size(), std::size_t(0));
        child<QTableView>(window, "values")->setColumnWidth(0, 80);
        child<ValuesView>(window)->setGrouping(Grouping::None);
        child<QTabWidget>(window)->setCurrentIndex(0);
        QVERIFY(window.openProject(path));
        QCOMPARE(window.trends().styles().size(), std::size_t(2));
        QCOMPARE(window.trends().styles()[1].name, QString("M1"));
        QCOMPARE(window.trends().styles()[1].factor, 0.1);
        QCOMPARE(child<QTableView>(window, "values")->columnWidth(0), 211);
        QCOMPARE(window.values().grouping(), Grouping::Area);
        QCOMPARE(child<QTabWidget>(window)->currentIndex(), 2);
    }

private:
    // The path of a project.
    QString saved(const Line &line, const char *name, const char *tag) const
    {
        QString path = m_folder.filePath(name);
        writeTextFile(path, formatProject(line.project({tag}), path));
        return path;
    }

    static QMessageBox *question(MainWindow &window)
    {
        return child<QMessageBox>(window);
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
