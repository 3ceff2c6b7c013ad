// The pages of recordings, and the reading of their files.
#include "host/project/text_file.h"
#include "tests/view/line_fixture.h"

#include <QMessageBox>
#include <QProgressBar>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

using namespace kmr;

// A file whose reader waits until somebody writes it, or until the test ends.
class Pipe {
public:
    explicit Pipe(QString path) : m_path(std::move(path))
    {
        if (::mkfifo(QFile::encodeName(m_path).constData(), 0600) != 0)
            qFatal("no pipe");
    }

    ~Pipe()
    {
        ::close(::open(QFile::encodeName(m_path).constData(), O_RDWR | O_NONBLOCK));
    }

    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;

    const QString &path() const
    {
        return m_path;
    }

private:
    const QString m_path;
};

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
        const Pipe slow(m_folder.filePath("slow.csv"));
        MainWindow window;
        window.show();
        window.openRecorded(slow.path());
        auto *pages = child<QTabWidget>(window);
        QVERIFY(pages->currentWidget()->findChild<QProgressBar *>() != nullptr);
        writeTextFile(slow.path(), RECORDING);
        QTRY_VERIFY_WITH_TIMEOUT(pages->currentWidget()->findChild<TrendView *>() != nullptr,
                                 PATIENCE);
        QVERIFY(window.findChild<ReadingPage *>() == nullptr);
    }

    void readingIsCancelledThoughTheFileHangs()
    {
        const Pipe slow(m_folder.filePath("cancelled.csv"));
        MainWindow window;
        window.show();
        auto *pages = child<QTabWidget>(window);
        const int count = pages->count();
        window.openRecorded(slow.path());
        QTest::keyClick(child<QPushButton>(window, "cancelReading"), Qt::Key_Space);
        QCOMPARE(pages->count(), count);
        QTRY_VERIFY_WITH_TIMEOUT(window.findChild<ReadingPage *>() == nullptr, PATIENCE);
    }

    void theProgressOfACaptureRisesOnce()
    {
        const QString path = m_folder.filePath("bus.kmr");
        writeTextFile(path, "{\"kmr_capture\":1,\"begin\":\"2026-11-22T10:00:00.000Z\"}\n"
                            "{\"us\":1250,\"sent\":\":01031064000187\\r\\n\"}\n"
                            "{\"us\":2250,\"received\":\":010302000AF0\\r\\n\"}\n"
                            "{\"us\":3250,\"sent\":\":01031064000187\\r\\n\"}\n");
        std::vector<int> percents;
        readFile(path, [&](int percent) {
            percents.push_back(percent);
            return true;
        });
        QVERIFY(std::is_sorted(percents.begin(), percents.end()));
        QVERIFY(percents.front() == 0 && percents.back() > 66 && percents.back() <= 100);
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

    QTemporaryDir m_folder;
};

QTEST_MAIN(RecordedTest)
#include "recorded_test.moc"
