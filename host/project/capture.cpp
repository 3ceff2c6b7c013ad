#include "host/project/capture.h"

#include <QFileInfo>
#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kmr {

namespace {

using json = nlohmann::ordered_json;

constexpr int VERSION = 1;

const char *const NO_CAPTURE = "not a capture of kmr, which begins with {\"kmr_capture\":1, ...}";
const char *const NO_PIECE =
    "not a piece of traffic, such as {\"us\":1250,\"sent\":\":01031064000187\\r\\n\"}";

std::string toUtf8(const QByteArray &characters)
{
    // With its size: otherwise Qt 5 stops at the first zero byte.
    return QString::fromLatin1(characters.constData(), static_cast<int>(characters.size()))
        .toStdString();
}

// The name of a full capture.
QString olderPath(const QString &path)
{
    return path + ".1";
}

Error badLine(const QString &name, int line, const QString &why)
{
    return Error(ErrorKind::Usage, QString("%1:%2: %3").arg(name).arg(line).arg(why));
}

void readHeading(const json &heading, Capture &capture)
{
    if (heading.at("kmr_capture").get<int>() != VERSION)
        throw std::runtime_error("a capture of another version, this program reads version 1");
    capture.begin = QDateTime::fromString(
        QString::fromStdString(heading.at("begin").get<std::string>()), Qt::ISODateWithMs);
    if (!capture.begin.isValid())
        throw std::runtime_error("\"begin\" is not a time such as 2024-05-01T12:00:00.000+02:00");
    capture.link = QString::fromStdString(heading.value("link", std::string()));
}

CapturedPiece readPiece(const json &piece)
{
    const bool isSent = piece.contains("sent");
    const std::string text = piece.at(isSent ? "sent" : "received").get<std::string>();
    return {piece.at("us").get<std::int64_t>(), isSent, QString::fromStdString(text).toLatin1()};
}

} // namespace

CaptureWriter::CaptureWriter(const QString &path, const QString &link, qint64 limit)
    : m_path(path), m_link(link), m_limit(limit), m_file(path)
{
    for (const QString &name : {path, olderPath(path)}) {
        if (QFileInfo(name).size() > 0 && (name == path || limit > 0)) {
            throw Error(ErrorKind::Usage, QString("%1 is not empty, and a capture "
                                                  "would replace: move it away or name another "
                                                  "file")
                                              .arg(name));
        }
    }
    begin();
}

void CaptureWriter::begin()
{
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        throw Error(ErrorKind::Usage,
                    QString("cannot write the capture %1: %2").arg(m_path, m_file.errorString()));
    }
    const QDateTime now = QDateTime::currentDateTime();
    const QString time = now.toOffsetFromUtc(now.offsetFromUtc()).toString(Qt::ISODateWithMs);
    const json heading{
        {"kmr_capture", VERSION}, {"begin", time.toStdString()}, {"link", m_link.toStdString()}};
    m_clock.start();
    writeLine(QByteArray::fromStdString(heading.dump()), ErrorKind::Usage);
}

void CaptureWriter::add(bool isSent, const QByteArray &characters)
{
    const auto lineOf = [&] {
        const json piece{{"us", m_clock.nsecsElapsed() / 1000},
                         {isSent ? "sent" : "received", toUtf8(characters)}};
        return QByteArray::fromStdString(piece.dump());
    };
    QByteArray line = lineOf();
    if (m_limit > 0 && m_file.pos() + line.size() >= m_limit) {
        goOnAnew();
        line = lineOf();
    }
    writeLine(line, ErrorKind::Output);
}

void CaptureWriter::goOnAnew()
{
    m_file.close();
    const QString older = olderPath(m_path);
    if (std::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(older).constData()) !=
        0) {
        throw Error(ErrorKind::Output,
                    QString("cannot rename the capture %1 to %2: %3")
                        .arg(m_path, older, QString::fromLocal8Bit(std::strerror(errno))));
    }
    begin();
}

void CaptureWriter::writeLine(const QByteArray &line, ErrorKind failure)
{
    const qint64 begin = m_file.pos();
    if (writeAll(m_file, line + '\n'))
        return;
    const QString cause = m_file.errorString();
    m_file.resize(begin); // an incomplete line would make the whole capture bad
    throw Error(failure, QString("cannot write the capture %1: %2").arg(m_file.fileName(), cause));
}

Capture parseCapture(const QByteArray &text, const QString &name, const ReadProgress &progress)
{
    Capture capture;
    const QList<QByteArray> lines = text.split('\n');
    const int last = static_cast<int>(lines.size()) - 1; // empty, unless the text is incomplete
    for (int i = 0; i <= last; ++i) {
        if (!goesOn(progress, i, last))
            break;
        if (i > 0 && lines[i].trimmed().isEmpty())
            continue;
        try {
            const json record = json::parse(lines[i].constBegin(), lines[i].constEnd());
            if (i == 0)
                readHeading(record, capture);
            else
                capture.pieces.push_back(readPiece(record));
        } catch (const json::exception &) { // its text is about the JSON library
            if (i == 0 || i < last)
                throw badLine(name, i + 1, i == 0 ? NO_CAPTURE : NO_PIECE);
            capture.cut = QString("%1:%2: is incomplete and left out").arg(name).arg(i + 1);
        } catch (const std::runtime_error &error) {
            throw badLine(name, i + 1, error.what());
        }
    }
    return capture;
}

Capture readCapture(const QString &path, const ReadProgress &progress)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw Error(ErrorKind::Usage,
                    QString("cannot read the capture %1: %2").arg(path, file.errorString()));
    }
    return parseCapture(file.readAll(), path, progress);
}

} // namespace kmr
