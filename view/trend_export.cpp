#include "view/trend_export.h"

#include "host/error.h"
#include "host/line/line_trace.h"
#include "host/project/csv.h"
#include "host/project/text_file.h"

#include <QDateTime>
#include <QImage>
#include <QPainter>
#include <QSvgGenerator>

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

// The times of all samples in the span, and its two ends.
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
    for (const double time : timesOf(history, styles, from, to)) {
        QStringList fields{timeText(QDateTime::fromMSecsSinceEpoch(std::llround(time * 1000)))};
        for (const TrendStyle &style : styles) {
            const auto value = history.series(style.id).at(time);
            fields.append(value ? QString::number(*value, 'g', 15) : QString());
            fields.append(value ? "good" : "stale");
        }
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
        throw Error(ErrorKind::Output, QString("cannot write %1").arg(path));
}

} // namespace kmr
