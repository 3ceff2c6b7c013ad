// The page of recipes.
#include "host/project/text_file.h"
#include "tests/view/line_fixture.h"
#include "view/recipe_certainty.h"

#include <QMessageBox>

using namespace kmr;

class RecipeTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        useOwnSettings(m_folder);
        m_path = m_folder.filePath("mixer.csv");
        writeTextFile(m_path, "# bread\ntag,value\nD100,250\nD110x2,1 2\nM20,1\n");
    }

    void aRecipeIsComparedWithTheController()
    {
        Line line;
        line.set("D", 100, 250);
        MainWindow window;
        open(window, line.project({"D1"}));
        QTest::mouseClick(child<QPushButton>(window, "compareRecipe"), Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(state(window, 0), QString("equal"), PATIENCE);
        QCOMPARE(state(window, 1), QString("differs"));
        QCOMPARE(child<QTableWidget>(window, "recipe")->item(1, 2)->text(), QString("0 0"));
        line.set("D", 1, 9); // polling goes on
        TRY_CELL(0, VALUE, QString("9"));
    }

    void aDownloadIsConfirmedAndCertain()
    {
        Line line;
        MainWindow window;
        open(window, line.project({"D1"}));
        download(window);
        QTRY_COMPARE_WITH_TIMEOUT(state(window, 2), QString("written"), PATIENCE);
        QCOMPARE(line.get("D", 100), 250U);
        QCOMPARE(line.get("D", 111), 2U);
        QCOMPARE(line.get("M", 20), 1U);
    }

    void aDownloadThatFailsSaysWhatIsUncertain()
    {
        Line line({"silence"});
        line.setHits(Line::Hits::Writes);
        MainWindow window;
        open(window, line.project({"D1"}));
        download(window);
        QTRY_COMPARE_WITH_TIMEOUT(state(window, 0), QString("unknown whether written"), PATIENCE);
        QCOMPARE(state(window, 2), QString("not written"));
        QVERIFY(child<QLabel>(window, "recipeOutcome")->text().startsWith("It stopped at 1#D100"));
    }

    void anUploadReplacesTheValuesOfTheFile()
    {
        Line line;
        line.set("D", 111, 77);
        MainWindow window;
        open(window, line.project({"D1"}));
        QTest::keyClick(child<QPushButton>(window, "uploadRecipe"), Qt::Key_Space);
        QTRY_COMPARE_WITH_TIMEOUT(readTextFile(m_path),
                                  QString("# bread\ntag,value\nD100,0\nD110x2,0 77\nM20,0\n"),
                                  PATIENCE);
    }

    void noOtherRecipeIsOpenedDuringATransfer()
    {
        Line line({"silence"});
        line.setHits(Line::Hits::Writes);
        MainWindow window;
        open(window, line.project({"D1"}));
        download(window);
        QVERIFY(!window.openRecipe(m_path));
        QVERIFY(child<QMessageBox>(window)->text().endsWith("a recipe is being transferred."));
        QTRY_COMPARE_WITH_TIMEOUT(state(window, 0), QString("unknown whether written"), PATIENCE);
        QVERIFY(window.openRecipe(m_path));
    }

    void aProjectThatReplacesADownloadSaysWhatIsUncertain()
    {
        Line line({"silence"});
        line.setHits(Line::Hits::Writes);
        ProjectSettings settings = line.project({"D1"});
        settings.timeout = std::chrono::minutes(10);
        MainWindow window;
        open(window, settings);
        download(window);
        QTRY_COMPARE_WITH_TIMEOUT(line.get("D", 100), 250U, PATIENCE);
        QVERIFY(window.start(settings));
        QVERIFY(child<QMessageBox>(window)->text().contains("The download of a recipe stopped at"));
    }

    void aBadRecipeIsRefusedWithItsLine()
    {
        Line line;
        writeTextFile(m_path, "D100,70000\n");
        OpenWindow window(line, {"D1"});
        QVERIFY(!window.openRecipe(m_path));
        QVERIFY(child<QMessageBox>(window)->text().contains("mixer.csv:1"));
        QVERIFY(!child<QPushButton>(window, "downloadRecipe")->isEnabled());
    }

    void certaintyIsThatOfAllRequestsOfAnEntry()
    {
        const auto item = [](int first, int count) {
            RecipeItem item;
            item.tag.elements = {1, "D", first, count};
            return item;
        };
        TransferResult result;
        result.result.outcome = RequestResult::Outcome::Refused;
        result.finished = 1;
        const std::vector<RecipeItem> items = {item(0, 8), item(8, 4), item(0, 16), item(90, 1)};
        const std::vector<ElementRange> runs = {{1, "D", 0, 8}, {1, "D", 8, 8}, {1, "D", 90, 1}};
        using C = Certainty;
        QCOMPARE(certaintyOf(items, runs, result),
                 (std::vector<C>{C::Written, C::NotWritten, C::InPart, C::NotWritten}));
        result.result.outcome = RequestResult::Outcome::NoAnswer;
        result.unsure = 1;
        QCOMPARE(certaintyOf(items, runs, result),
                 (std::vector<C>{C::Written, C::Unknown, C::Unknown, C::NotWritten}));
    }

private:
    void open(MainWindow &window, const ProjectSettings &settings)
    {
        window.show();
        QVERIFY(window.start(settings));
        TRY_CELL(0, QUALITY, QString("good"));
        QVERIFY(window.openRecipe(m_path));
        QCOMPARE(child<QTableWidget>(window, "recipe")->item(1, 1)->text(), QString("1 2"));
    }

    static void download(MainWindow &window)
    {
        QTest::mouseClick(child<QPushButton>(window, "downloadRecipe"), Qt::LeftButton);
        QTest::mouseClick(child<QPushButton>(window, "confirmDownload"), Qt::LeftButton);
    }

    static QString state(MainWindow &window, int row)
    {
        return child<QTableWidget>(window, "recipe")->item(row, 3)->text();
    }

    QTemporaryDir m_folder;
    QString m_path;
};

QTEST_MAIN(RecipeTest)
#include "recipe_test.moc"
