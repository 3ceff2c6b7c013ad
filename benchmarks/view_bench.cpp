// What kmr-view takes: its start, a frame, its share of a processor, and memory over hours.
//   view_bench start | polling BAUD [TAGS] | hours COUNT
// start    milliseconds from the start of the process until the window has been drawn
// polling  the share of a core that each thread takes in ten seconds; BAUD 0: no pace
// hours    hours of 50 tags at 20 changes a second on a test clock; a line for each 10 minutes,
// with
//          the memory and with processor time of a frame of a minute, and of one of everything
#include "view/built_in_controller.h"
#include "view/main_window.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <map>

#include <unistd.h>

using namespace kmr;

namespace {

constexpr int HOUR_TAGS = 50;
constexpr int CHANGES = 20; // a second

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The fields of a stat file of proc(5) that follow the name.
QList<QByteArray> statOf(const QString &path)
{
    const QByteArray text = contentsOf(path);
    return text.mid(text.lastIndexOf(')') + 2).split(' ');
}

double ticksToSeconds(double ticks)
{
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

double memoryInMegabytes()
{
    const double pages = contentsOf("/proc/self/statm").split(' ').value(1).toDouble();
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

// That this thread has had of a processor, in milliseconds.
double processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// Processor seconds of each thread, by number and name.
std::map<QString, double> threadTimes()
{
    std::map<QString, double> times;
    for (const QString &thread :
         QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString folder = "/proc/self/task/" + thread;
        const QList<QByteArray> stat = statOf(folder + "/stat");
        const QString name = QString::fromUtf8(contentsOf(folder + "/comm").trimmed());
        times[thread + ' ' + name] =
            ticksToSeconds(stat.value(11).toDouble() + stat.value(12).toDouble());
    }
    return times;
}

void wait(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

ProjectSettings project(const QString &link, int tags)
{
    ProjectSettings project;
    project.link = link;
    project.driver = DRIVER_LIBRARY;
    for (int tag = 0; tag < tags; ++tag)
        project.tags.append(QString("D%1").arg(tag));
    return project;
}

int measureStart()
{
    MainWindow window;
    window.show();
    window.start(project({}, 8));
    QApplication::processEvents();
    window.grab();
    const double begin = ticksToSeconds(statOf("/proc/self/stat").value(19).toDouble());
    const double now = contentsOf("/proc/uptime").split(' ').value(0).toDouble();
    std::printf("start: %.0f ms\n", (now - begin) * 1000);
    return 0;
}

int measurePolling(int baud, int tags)
{
    BuiltInSettings settings;
    settings.baud = baud;
    const BuiltInController controller(settings);
    MainWindow window;
    window.show();
    if (!window.start(project(controller.link(), tags)))
        return 1;
    auto *pages = window.findChild<QTabWidget *>();
    for (int page = 0; page < 3; ++page) {
        pages->setCurrentIndex(page);
        if (page == 0)
            emit window.findChild<ValuesView *>()->trendWanted({1, 101, 102, 103});
        wait(3000);
        const std::map<QString, double> before = threadTimes();
        wait(10000);
        std::printf("page %s:", qPrintable(pages->tabText(page).remove('&')));
        for (const auto &[thread, time] : threadTimes()) {
            const auto old = before.find(thread);
            const double share = (time - (old == before.end() ? 0 : old->second)) * 10;
            if (share > 0.05)
                std::printf("  %s %.1f %%", qPrintable(thread.section(' ', 1)), share);
        }
        std::printf("\n");
        std::fflush(stdout);
    }
    return 0;
}

void change(ValuesModel &model, History &history, int step)
{
    const double now = static_cast<double>(step) / CHANGES;
    for (int tag = 1; tag <= HOUR_TAGS; ++tag) {
        const auto value = static_cast<std::uint32_t>((step * 7 + tag * 13) % (100 + tag));
        model.take({tag, now, Quality::Good, {value}, {}});
        history.add(tag, now, value);
    }
}

// Everything at once; then the last minute again.
double processorTimeOfAll(TrendView &trends, double now)
{
    const double begin = processorTime();
    trends.plot().showAll();
    QApplication::processEvents();
    const double time = processorTime() - begin;
    trends.plot().show(now - 60, now);
    trends.plot().follow(true);
    return time;
}

int measureHours(int hours)
{
    History history;
    ValuesModel model;
    ValuesView values(model);
    TrendView trends(history);
    const Drivers drivers(DRIVER_LIBRARY);
    const NamedTagReader reader = tagReaderOf(ProjectSettings(), drivers);
    for (int tag = 1; tag <= HOUR_TAGS; ++tag) {
        model.add({{{tag, reader.read(QString("D%1").arg(tag))}, {}}});
        trends.add(tag, QString("D%1").arg(tag), {}, false);
    }
    values.resize(600, 700);
    trends.resize(740, 700);
    values.show();
    trends.show();
    trends.plot().show(0, 60);
    double longest = 0;
    double sum = 0;
    int frames = 0;
    for (int step = 1; step <= hours * 3600 * CHANGES; ++step) {
        const double now = static_cast<double>(step) / CHANGES;
        change(model, history, step);
        // A frame a second in the first hour; later, to keep it short, a frame a minute.
        const int pause = step <= 3600 * CHANGES ? CHANGES : 60 * CHANGES;
        if (step % pause == 0) {
            const double begin = processorTime();
            model.refresh(now);
            trends.refresh(now);
            QApplication::processEvents();
            const double time = processorTime() - begin;
            longest = std::max(longest, time);
            sum += time;
            ++frames;
        }
        if (step % (600 * CHANGES) != 0)
            continue;
        const double all = processorTimeOfAll(trends, now);
        std::printf(
            "%4d min: %.0f MB; a frame takes %.1f ms, the longest %.1f ms; all of it %.0f ms\n",
            step / CHANGES / 60, memoryInMegabytes(), sum / frames, longest, all);
        std::fflush(stdout);
    }
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const QTemporaryDir settings;
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    const QStringList arguments = QApplication::arguments();
    const QString what = arguments.value(1);
    if (what == "start")
        return measureStart();
    if (what == "polling")
        return measurePolling(arguments.value(2, "115200").toInt(),
                              arguments.value(3, "1000").toInt());
    if (what == "hours")
        return measureHours(arguments.value(2, "1").toInt());
    std::fprintf(stderr, "view_bench start | polling BAUD [TAGS] | hours COUNT\n");
    return 2;
}
