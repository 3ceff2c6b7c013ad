#include "view/trend_export.h"

#include "host/error.h"
#include "host/line/line_trace.h"
#include "host/project/csv.h"
#include "host/project/text_file.h"
#include "view/trend_view.h"

#include <QDateTime>
#include <QImage>
#include <QPainter>
#include <QSvgGenerator>

#include <algorithm>
#include <cmath>
#include <set>

namespace kmr {

namespace {

constexpr QSize PICTURE_SIZE(1600, 900);

QString lineOf(const QStringList &fields)
{
    QStringList texts;
    for (const QString &field : fields)
        texts.append(csvField(field));
    return texts.join(',') + '\n';
}

// Value and quality. Only what was measured at that time has a value, but at the ends of the span
// also what still held.
QStringList cellOf(const Series &series, double time, bool isEnd)
{
    const auto after =
        std::upper_bound(series.samples().begin(), series.samples().end(), time,
                         [](double at, const Sample &sample) { return at < sample.time; });
    if (after == series.samples().begin())
        return {QString(), "pending"};
    const Sample &sample = *(after - 1);
    if (std::isnan(sample.value))
        return {QString(), "stale"};
    const bool isShown = sample.time == time || (isEnd && series.heldAt(time));
    return {isShown ? QString::number(sample.value, 'g', 15) : QString(),
            isShown ? "good" : "not read"};
}

// The times of all samples in the span.
std::set<double> timesOf(const History &history, const std::vector<TrendStyle> &styles, double from,
                         double to)
{
    std::set<double> times;
    for (const TrendStyle &style : styles) {
        for (const Sample &sample : history.series(style.id).samples()) {
            if (sample.time >= from && sample.time <= to)
                times.insert(sample.time);
        }
    }
    return times;
}

} // namespace

void writeCsv(const QString &path, const History &history, const std::vector<TrendStyle> &styles,
              double from, double to)
{
    QStringList heading{"time"};
    for (const TrendStyle &style : styles) {
        heading.append(style.unit.isEmpty() ? style.name : style.name + " [" + style.unit + ']');
        heading.append(style.name + " quality");
    }
    QString text = lineOf(heading);
    const std::set<double> times = timesOf(history, styles, from, to);
    for (const double time : times) {
        const bool isEnd = time == *times.begin() || time == *times.rbegin();
        QStringList fields{timeText(QDateTime::fromMSecsSinceEpoch(std::llround(time * 1000)))};
        for (const TrendStyle &style : styles)
            fields += cellOf(history.series(style.id), time, isEnd);
        text += lineOf(fields);
    }
    writeTextFile(path, text);
}

void writePicture(const QString &path, TrendPlot &plot)
{
    const QRect box(QPoint(0, 0), PICTURE_SIZE);
    if (path.endsWith(".svg", Qt::CaseInsensitive)) {
        requireWritable(path);
        QSvgGenerator picture;
        picture.setFileName(path);
        picture.setSize(PICTURE_SIZE);
        picture.setViewBox(box);
        QPainter painter(&picture);
        plot.render(painter, box);
        return;
    }
    QImage picture(PICTURE_SIZE, QImage::Format_ARGB32);
    picture.fill(plot.palette().color(QPalette::Base));
    QPainter painter(&picture);
    plot.render(painter, box);
    painter.end();
    if (!picture.save(path, "PNG"))
        throw Error(ErrorKind::Output, TrendView::tr("cannot write %1").arg(path));
}

} // namespace kmr
