// The pages of recordings, and the reading of their files.
#include "host/project/text_file.h"
#include "tests/view/line_fixture.h"

#include <QMessageBox>
#include <QProgressBar>

#include <sys/stat.h>

using namespace kmr;

class RecordedTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        useOwnSettings(m_folder);
    }

    void aRecordingHasAPageOfItsOwn()
    {
        const QString csv = m_folder.filePath("recording.csv");
        writeTextFile(csv, RECORDING);
        MainWindow window;
        window.show();
        window.openRecorded(csv);
        auto *pages = child<QTabWidget>(window);
        QCOMPARE(pages->tabText(pages->currentIndex()), QString("recording.csv"));
        const TrendView *view = nullptr;
        QTRY_VERIFY_WITH_TIMEOUT(
            (view = pages->currentWidget()->findChild<TrendView *>()) != nullptr, PATIENCE);
        QCOMPARE(view->styles().size(), std::size_t(1));
        QCOMPARE(view->styles()[0].unit, QString("bar"));
        const int count = pages->count();
        emit pages->tabCloseRequested(pages->currentIndex());
        QCOMPARE(pages->count(), count - 1);
    }

    void aFileIsReadWhileTheWindowGoesOn()
    {
        const QString slow = pipe("slow.csv");
        MainWindow window;
        window.show();
        window.openRecorded(slow);
        auto *pages = child<QTabWidget>(window);
        QVERIFY(pages->currentWidget()->findChild<QProgressBar *>() != nullptr);
        writeTextFile(slow, RECORDING);
        QTRY_VERIFY_WITH_TIMEOUT(pages->currentWidget()->findChild<TrendView *>() != nullptr,
                                 PATIENCE);
        QVERIFY(window.findChild<ReadingPage *>() == nullptr);
    }

    void readingIsCancelled()
    {
        const QString slow = pipe("cancelled.csv");
        MainWindow window;
        window.show();
        auto *pages = child<QTabWidget>(window);
        const int count = pages->count();
        window.openRecorded(slow);
        QTest::keyClick(child<QPushButton>(window, "cancelReading"), Qt::Key_Space);
        QCOMPARE(pages->count(), count);
        writeTextFile(slow, RECORDING);
        QTRY_VERIFY_WITH_TIMEOUT(window.findChild<ReadingPage *>() == nullptr, PATIENCE);
        QCOMPARE(pages->count(), count);
    }

    void aFileThatIsNoRecordingIsRefused()
    {
        const QString csv = m_folder.filePath("other.csv");
        writeTextFile(csv, "day,D1\n");
        MainWindow window;
        window.show();
        const int count = child<QTabWidget>(window)->count();
        window.openRecorded(csv);
        QTRY_VERIFY_WITH_TIMEOUT(window.findChild<QMessageBox *>() != nullptr, PATIENCE);
        QVERIFY(child<QMessageBox>(window)->text().startsWith(csv + " is not a recording"));
        QCOMPARE(child<QTabWidget>(window)->count(), count);
    }

private:
    static constexpr const char *RECORDING =
        "time,D1 [bar],D1 quality\n2026-11-22T10:00:00Z,1,good\n";

    // A file whose reader waits until somebody writes it.
    QString pipe(const QString &name) const
    {
        QString path = m_folder.filePath(name);
        if (::mkfifo(QFile::encodeName(path).constData(), 0600) != 0)
            qFatal("no pipe");
        return path;
    }

    QTemporaryDir m_folder;
};

QTEST_MAIN(RecordedTest)
#include "recorded_test.moc"
