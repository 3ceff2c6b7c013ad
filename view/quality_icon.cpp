#include "view/quality_icon.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>

namespace kmr {

namespace {

constexpr int SIZE = 32; // drawn smaller

bool isDark()
{
    return QGuiApplication::palette().color(QPalette::Base).lightness() < 128;
}

void drawGood(QPainter &painter)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(goodColour());
    painter.drawEllipse(QRectF(6, 6, 20, 20));
}

void drawStale(QPainter &painter)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(badColour());
    painter.drawPolygon(QPolygonF({{16, 2}, {31, 29}, {1, 29}}));
    painter.setBrush(QGuiApplication::palette().color(QPalette::Base));
    painter.drawRect(QRectF(14.5, 11, 3, 9));
    painter.drawRect(QRectF(14.5, 22, 3, 3));
}

void drawPending(QPainter &painter)
{
    painter.setPen(QPen(QGuiApplication::palette().color(QPalette::Disabled, QPalette::Text), 3));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QRectF(7, 7, 18, 18));
}

} // namespace

QColor goodColour()
{
    return isDark() ? QColor(0x5c, 0xc0, 0x78) : QColor(0x1a, 0x7f, 0x37);
}

QColor badColour()
{
    return isDark() ? QColor(0xff, 0x7b, 0x72) : QColor(0xc6, 0x28, 0x28);
}

QColor doubtfulColour()
{
    return isDark() ? QColor(0xe3, 0xb3, 0x41) : QColor(0x9a, 0x67, 0x00);
}

QIcon qualityIcon(Quality quality)
{
    const QString key =
        QString("kmr-quality-%1-%2").arg(static_cast<int>(quality)).arg(isDark() ? 1 : 0);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return QIcon(pixmap);
    pixmap = QPixmap(SIZE, SIZE);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    if (quality == Quality::Good)
        drawGood(painter);
    else if (quality == Quality::Stale)
        drawStale(painter);
    else
        drawPending(painter);
    painter.end();
    QPixmapCache::insert(key, pixmap);
    return QIcon(pixmap);
}

} // namespace kmr
