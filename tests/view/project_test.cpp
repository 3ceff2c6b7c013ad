// Projects of the window: opened, saved, left for another, and remembered.
#include "host/project/text_file.h"
#include "tests/view/line_fixture.h"
#include "view/start_dialog.h"

#include <QFileDialog>
#include <QMessageBox>

#include <functional>

Q_DECLARE_METATYPE(std::function<void(kmr::MainWindow &, const QString &)>)

using namespace kmr;
using Model = ValuesModel;

class ProjectTest : public QObject {
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
        TRY_CELL(1, VALUE, QString("0x0000"));
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
        QTest::keyClick(child<QMessageBox>(window), Qt::Key_Return); // "nobody" is not a tag
        QTRY_VERIFY(!window.findChild<QMessageBox *>());
        addTag(window, "D7");
        press(window, Qt::Key_S);
        QCOMPARE(readTextFile(path), head + "    \"D7\",\n" + tail);
        QVERIFY(!window.isWindowModified());
    }

    void tagsThatSomebodyElseHasAddedAreNotReplacedUnasked()
    {
        Line line;
        const QString path = saved(line, "shared.toml", "D1");
        MainWindow window;
        window.show();
        QVERIFY(window.openProject(path));
        addTag(window, "D5");
        saved(line, "shared.toml", "D9");
        press(window, Qt::Key_S);
        QTest::keyClick(question(window), Qt::Key_Escape);
        QTRY_VERIFY(!window.findChild<QMessageBox *>());
        QVERIFY(readTextFile(path).contains("D9"));
        press(window, Qt::Key_S);
        QTest::mouseClick(question(window)->button(QMessageBox::Save), Qt::LeftButton);
        QVERIFY(readTextFile(path).contains("D5"));
        QVERIFY(!readTextFile(path).contains("D9"));
    }

    void unsavedTagsAreNotReplacedUnasked_data()
    {
        using Open = std::function<void(MainWindow &, const QString &)>;
        QTest::addColumn<Open>("open");
        QTest::addColumn<QString>("name");
        QTest::newRow("drop") << Open(dropFile) << "other.toml";
        QTest::newRow("recent") << Open([](MainWindow &window, const QString &path) {
            emit child<QMenu>(window, "file")->aboutToShow();
            for (QAction *action : child<QMenu>(window, "recent")->actions()) {
                if (action->text() == path)
                    action->trigger();
            }
        }) << "other.conf";
        QTest::newRow("file dialog") << Open([](MainWindow &window, const QString &path) {
            press(window, Qt::Key_O);
            emit child<QFileDialog>(window)->fileSelected(path);
            child<QFileDialog>(window)->close();
        }) << "other.conf";
        QTest::newRow("new line") << Open([](MainWindow &window, const QString &) {
            press(window, Qt::Key_N);
            auto *dialog = child<StartDialog>(window);
            child<QListWidget>(*dialog, "tags")->clear();
            child<QListWidget>(*dialog, "tags")->addItem("D2");
            dialog->accept();
        }) << "other.toml";
    }

    void unsavedTagsAreNotReplacedUnasked()
    {
        QFETCH(const std::function<void(MainWindow &, const QString &)>, open);
        QFETCH(QString, name);
        Line line;
        const QString path = saved(line, "first.toml", "D1");
        const QString other = saved(line, name, "D2");
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
        OpenWindow window(line, {});
        addTag(window, "D5");
        dropFile(window, other);
        QTest::mouseClick(question(window)->button(QMessageBox::Discard), Qt::LeftButton);
        QTRY_COMPARE(cell(window, 0, Model::TAG), QString("D2"));
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
    QString saved(const Line &line, const QString &name, const char *tag) const
    {
        QString path = m_folder.filePath(name);
        writeTextFile(path, formatProject(line.project({tag}), path));
        return path;
    }

    static QMessageBox *question(MainWindow &window)
    {
        return child<QMessageBox>(window);
    }

    QTemporaryDir m_folder;
};

QTEST_MAIN(ProjectTest)
#include "project_test.moc"
