// The table of values: what it shows, and writes.
#include "tests/view/line_fixture.h"

#include <QMessageBox>

Q_DECLARE_METATYPE(kmr::Grouping)

using namespace kmr;
using Model = ValuesModel;

class ValuesTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        useOwnSettings(m_folder);
    }

    void valuesAreShownAsTheyChange()
    {
        Line line;
        line.set("D", 100, 65534);
        OpenWindow window(line, {"D100/int16", "Y0x4"});
        TRY_CELL(0, VALUE, QString("-2"));
        TRY_CELL(1, VALUE, QString("0 0 0 0"));
        QCOMPARE(cell(window, 0, Model::ADDRESS), QString("1#D100"));
        QCOMPARE(cell(window, 0, Model::CHANGES), QString("0"));
        line.set("D", 100, 7);
        TRY_CELL(0, VALUE, QString("7"));
        QCOMPARE(cell(window, 0, Model::CHANGES), QString("1"));
        QCOMPARE(cell(window, 0, Model::QUALITY), QString("good"));
    }

    void whatIsNotAnsweredIsStaleAndKeepsItsValue()
    {
        Line line({"silence"});
        line.setHits(Line::Hits::None);
        line.set("D", 1, 5);
        OpenWindow window(line, {"D1"});
        TRY_CELL(0, VALUE, QString("5"));
        line.setHits(Line::Hits::All);
        QTRY_VERIFY_WITH_TIMEOUT(cell(window, 0, Model::QUALITY).startsWith("stale: "), PATIENCE);
        QCOMPARE(cell(window, 0, Model::VALUE), QString("5"));
        line.setHits(Line::Hits::None);
        TRY_CELL(0, QUALITY, QString("good"));
    }

    void whatIsNotPolledAnyMoreIsStale()
    {
        Line line;
        line.set("D", 1, 5);
        ProjectSettings settings = line.project({"D1"});
        settings.groupLimit = 1;
        MainWindow window;
        window.show();
        QVERIFY(window.start(settings));
        TRY_CELL(0, QUALITY, QString("good"));
        addTag(window, "D100/float32"); // which one word a request can't read
        TRY_CELL(0, QUALITY, QString("stale: it is not polled"));
    }

    void theFilterLeavesWhatItsTextAndStateSay()
    {
        Line line;
        OpenWindow window(line, {"D1", "D20", "M3"});
        TRY_CELL(2, QUALITY, QString("good"));
        const auto *model = child<QTableView>(window, "values")->model();
        QTest::keyClicks(child<QLineEdit>(window, "filter"), "d2");
        QCOMPARE(model->rowCount(), 1);
        QCOMPARE(cell(window, 0, Model::TAG), QString("D20"));
        child<QLineEdit>(window, "filter")->clear();
        QTest::keyClick(child<QComboBox>(window, "filterKind"), Qt::Key_Down); // not good
        QCOMPARE(model->rowCount(), 0);
    }

    void aClickOnTheHeadingSortsByNumber()
    {
        Line line;
        line.set("D", 1, 100);
        line.set("D", 2, 9);
        OpenWindow window(line, {"D1", "D2"});
        TRY_CELL(1, VALUE, QString("9"));
        auto *heading = child<QTableView>(window, "values")->horizontalHeader();
        const QPoint place(heading->sectionViewportPosition(Model::VALUE) + 20, 5);
        QTest::mouseClick(heading->viewport(), Qt::LeftButton, {}, place);
        QTRY_COMPARE(cell(window, 0, Model::VALUE), QString("9"));
        QTest::mouseClick(heading->viewport(), Qt::LeftButton, {}, place);
        QTRY_COMPARE(cell(window, 0, Model::VALUE), QString("100"));
    }

    void tagsAreGroupedUnderHeadingsThatFold()
    {
        Line line;
        line.set("D", 5, 9);
        OpenWindow window(line, {"D1", "M3", "D5/hex"});
        TRY_CELL(2, VALUE, QString("0x0009"));
        auto *table = child<QTableView>(window, "values");
        QTest::keyClick(child<QComboBox>(window, "grouping"), Qt::Key_Down); // by area
        QCOMPARE(tags(window), (QStringList{"▾ D (2)", "D1", "D5/hex", "▾ M (1)", "M3"}));
        table->sortByColumn(Model::VALUE, Qt::DescendingOrder);
        QCOMPARE(tags(window), (QStringList{"▾ D (2)", "D5/hex", "D1", "▾ M (1)", "M3"}));
        mark(window, 0);
        QTest::keyClick(table, Qt::Key_Space);
        QCOMPARE(tags(window), (QStringList{"▸ D (2)", "▾ M (1)", "M3"}));
        QVERIFY(child<ValuesView>(window)->marked().empty());
        addTag(window, "X0");
        QCOMPARE(tags(window), (QStringList{"▸ D (2)", "▾ M (1)", "M3", "▾ X (1)", "X0"}));
        QTest::keyClicks(child<QLineEdit>(window, "filter"), "m3");
        QCOMPARE(tags(window), (QStringList{"▾ M (1)", "M3"}));
    }

    void aGroupIsAnAreaAStationOrTheBeginningOfAName_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<Grouping>("grouping");
        QTest::addColumn<QString>("group");
        QTest::newRow("area") << "2#D5" << Grouping::Area << "D";
        QTest::newRow("station") << "2#D5" << Grouping::Station << "Station 2";
        QTest::newRow("dot") << "boiler.temp/int16" << Grouping::Name << "boiler";
        QTest::newRow("slash") << "boiler/temp" << Grouping::Name << "boiler";
        QTest::newRow("format") << "D5/hex" << Grouping::Name << "others";
    }

    void aGroupIsAnAreaAStationOrTheBeginningOfAName()
    {
        QFETCH(QString, text);
        QFETCH(Grouping, grouping);
        Tag tag;
        tag.text = text;
        tag.elements = {2, "D", 5, 1};
        QTEST(groupOf(tag, grouping), "group");
    }

    void aDoubleClickWritesAfterConfirmation()
    {
        Line line;
        OpenWindow window(line, {"D100"});
        TRY_CELL(0, VALUE, QString("0"));
        doubleClick(window, 0, Model::VALUE);
        auto *dialog = child<WriteDialog>(window);
        auto *button = child<QPushButton>(*dialog, "write");
        QVERIFY(!button->isEnabled());
        QTest::keyClicks(child<QComboBox>(*dialog, "newValue"), "70000");
        QVERIFY(!button->isEnabled()); // not a word
        child<QComboBox>(*dialog, "newValue")->clearEditText();
        QTest::keyClicks(child<QComboBox>(*dialog, "newValue"), "250");
        QCOMPARE(child<QLabel>(*dialog, "sentence")->text(),
                 QString("D100 will be 250 instead of 0."));
        QCOMPARE(line.get("D", 100), 0U);
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(child<QLabel>(*dialog, "outcome")->text(),
                                  QString("Written: the controller has confirmed it."), PATIENCE);
        QCOMPARE(line.get("D", 100), 250U);
        TRY_CELL(0, VALUE, QString("250"));
    }

    void theKeyboardWritesToo()
    {
        Line line;
        OpenWindow window(line, {"Y0"});
        TRY_CELL(0, VALUE, QString("0"));
        mark(window, 0);
        QTest::keyClick(child<QTableView>(window, "values"), Qt::Key_F2);
        auto *dialog = child<WriteDialog>(window);
        QTest::keyClicks(child<QComboBox>(*dialog, "newValue"), "on");
        QTest::keyClick(child<QComboBox>(*dialog, "newValue")->lineEdit(), Qt::Key_Return);
        QCOMPARE(child<QLabel>(*dialog, "outcome")->text(), QString()); // not written yet
        QTest::keyClick(child<QPushButton>(*dialog, "write"), Qt::Key_Return);
        QTRY_COMPARE_WITH_TIMEOUT(line.get("Y", 0), 1U, PATIENCE);
    }

    void theDialogShowsWhatTheTagHoldsByNow()
    {
        Line line;
        OpenWindow window(line, {"D100"});
        TRY_CELL(0, VALUE, QString("0"));
        WriteDialog &dialog = typeValue(window, 0, "250");
        line.set("D", 100, 7);
        QTRY_COMPARE_WITH_TIMEOUT(child<QLabel>(dialog, "sentence")->text(),
                                  QString("D100 will be 250 instead of 7."), PATIENCE);
    }

    void aWriteThatFailsAfterItsDialogIsClosedIsReported()
    {
        Line line({"exception=4"});
        line.setHits(Line::Hits::None);
        OpenWindow window(line, {"D100"});
        TRY_CELL(0, VALUE, QString("0"));
        line.setHits(Line::Hits::Writes);
        WriteDialog &dialog = typeValue(window, 0, "1");
        confirm(dialog);
        dialog.setAttribute(Qt::WA_DeleteOnClose, false); // as if its deletion were late
        dialog.close();
        QTRY_VERIFY_WITH_TIMEOUT(window.findChild<QMessageBox *>() != nullptr, PATIENCE);
        QVERIFY(child<QMessageBox>(window)->text().startsWith("D100 = 1: Not written: refused"));
    }

    void aRefusedWriteSaysSo()
    {
        Line line({"exception=4"});
        line.setHits(Line::Hits::None);
        OpenWindow window(line, {"D100"});
        TRY_CELL(0, VALUE, QString("0"));
        line.setHits(Line::Hits::All);
        WriteDialog &dialog = typeValue(window, 0, "1");
        confirm(dialog);
        QTRY_VERIFY_WITH_TIMEOUT(
            child<QLabel>(dialog, "outcome")->text().startsWith("Not written: refused"), PATIENCE);
        QCOMPARE(line.get("D", 100), 0U);
    }

    void inputsAreNotWritten()
    {
        Line line;
        OpenWindow window(line, {"X0"});
        doubleClick(window, 0, Model::VALUE);
        QCOMPARE(child<QMessageBox>(window)->text(), QString("X0 can't be written: X are inputs"));
    }

    void aFormatOfTheMenuShowsTheSameValueAnew()
    {
        Line line;
        line.set("D", 5, 255);
        OpenWindow window(line, {"D5"});
        TRY_CELL(0, VALUE, QString("255"));
        mark(window, 0);
        QMenu *menu = child<ValuesView>(window)->menu();
        emit menu->aboutToShow();
        for (QAction *action : menu->findChildren<QAction *>()) {
            if (action->text() == "hex")
                action->trigger();
        }
        QCOMPARE(cell(window, 0, Model::VALUE), QString("0x00FF"));
        QCOMPARE(cell(window, 0, Model::TAG), QString("D5/hex"));
    }

    void tagsAreAddedWithTheDriversVerdictAndRemoved()
    {
        Line line;
        OpenWindow window(line, {"D5"});
        auto *edit = child<QLineEdit>(window, "tagText");
        QTest::keyClicks(edit, "D99999");
        QVERIFY(!child<QPushButton>(window, "addTag")->isEnabled());
        QVERIFY(child<QLabel>(window, "tagVerdict")->text().contains("D99999"));
        edit->clear();
        QTest::keyClicks(edit, "M7");
        QCOMPARE(child<QLabel>(window, "tagVerdict")->text(),
                 QString("station 1, M7: 1 bit(s), can be written"));
        QTest::keyClick(edit, Qt::Key_Return);
        TRY_CELL(1, VALUE, QString("0"));
        mark(window, 0);
        QTest::keyClick(child<QTableView>(window, "values"), Qt::Key_Delete);
        QTRY_COMPARE(cell(window, 0, Model::TAG), QString("M7"));
        addTag(window, "M8");
        addTag(window, "M9");
        auto *table = child<QTableView>(window, "values");
        table->clearSelection();
        for (const int row : {0, 1})
            table->selectionModel()->select(table->model()->index(row, 0),
                                            QItemSelectionModel::Select |
                                                QItemSelectionModel::Rows);
        QTest::keyClick(table, Qt::Key_Delete);
        QTRY_COMPARE(tags(window), QStringList{"M9"});
    }

private:
    // In the order that is shown.
    static QStringList tags(MainWindow &window)
    {
        QStringList texts;
        const int rows = child<QTableView>(window, "values")->model()->rowCount();
        for (int row = 0; row < rows; ++row)
            texts.append(cell(window, row, Model::TAG));
        return texts;
    }

    QTemporaryDir m_folder;
};

QTEST_MAIN(ValuesTest)
#include "values_test.moc"
