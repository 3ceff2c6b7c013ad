#include "kmr/connection.h"

#include "host/project/text_file.h"
#include "kmr/stop_signal.h"

#include <QCoreApplication>
#include <QDateTime>

namespace kmr {

namespace {

// On a serial line a request of another host may still be answered: this waits for the time of a
// long exchange and the controller's delay.
std::chrono::milliseconds quietBeforeUse(std::chrono::nanoseconds characterTime)
{
    using std::chrono::milliseconds;
    const bool isSerial = characterTime > std::chrono::nanoseconds::zero();
    return isSerial ? std::chrono::ceil<milliseconds>(64 * characterTime) + milliseconds(100)
                    : milliseconds(0);
}

} // namespace

std::unique_ptr<DriverLibrary> loadDriver(const Options &options)
{
    const QString path = options.driver.isEmpty()
                             ? findDriver(QCoreApplication::applicationDirPath())
                             : options.driver;
    try {
        return std::make_unique<DriverLibrary>(path);
    } catch (const Error &error) {
        throw Error(error.kind(), error.text() + "\nBuild it, or name another one with --driver "
                                                 "PATH or the environment variable KMR_DRIVER.");
    }
}

LinkAddress linkOf(const Options &options)
{
    if (options.link.isEmpty()) {
        throw Error(ErrorKind::Usage, "no link: give it with --link or the environment variable "
                                      "KMR_LINK, for example --link tcp://192.168.0.10:8888");
    }
    return parseLink(options.link);
}

TagReader tagReaderOf(const Options &options, const DriverLibrary &library)
{
    return TagReader(library.functions(), options.station, options.wordOrder, options.byteOrder);
}

NameTable loadNames(const QString &path)
{
    NameTable names = NameTable::parse(readTextFile(path), path);
    const std::size_t faults = names.faults().size();
    if (faults > 0)
        printError(QString("kmr: %1 has %2, which 'kmr tags check %1' explains")
                       .arg(path, faults == 1 ? QString("a bad line")
                                              : QString("%1 bad lines").arg(faults)));
    return names;
}

Connection::Connection(const Options &options)
    : m_options(options), m_library(loadDriver(options)), m_tags(tagReaderOf(options, *m_library))
{
    if (!options.names.isEmpty())
        m_tags = NamedTagReader(m_tags.unnamed(), loadNames(options.names));
}

std::vector<Tag> Connection::readTags(const QStringList &texts) const
{
    const QStringList &wanted = texts.isEmpty() ? m_options.tags : texts;
    if (wanted.isEmpty())
        throw Error(ErrorKind::Usage, "no tags: give some, for example D100, or list them in the "
                                      "project's kmr.toml: tags = [\"D100\"]");
    std::vector<Tag> tags;
    QStringList faults;
    for (const QString &text : wanted) {
        try {
            tags.push_back(m_tags.read(text));
        } catch (const Error &error) {
            faults.append(texts.isEmpty() ? m_options.tagsSource + ": " + error.text()
                                          : error.text());
        }
    }
    if (!faults.isEmpty())
        throw Error(ErrorKind::Usage, faults.join('\n'));
    return tags;
}

std::unique_ptr<CaptureWriter> beginCapture(const Options &options)
{
    constexpr qint64 MEGABYTE = 1000000;
    if (options.capture.isEmpty())
        return nullptr;
    return std::make_unique<CaptureWriter>(options.capture, options.link,
                                           MEGABYTE * options.captureLimit);
}

void capture(std::unique_ptr<CaptureWriter> &writer, bool isSent, const QByteArray &characters)
{
    if (!writer)
        return;
    try {
        writer->add(isSent, characters);
    } catch (const Error &error) {
        writer.reset();
        reportLoss(error.text() + "; further traffic is not captured");
    }
}

Session &Connection::open()
{
    m_address = linkOf(m_options);
    m_device = openLink(m_address, CONNECT_LIMIT, stopFlag());
    if (m_address.kind == LinkAddress::Kind::Serial)
        m_nameById = nameById(m_address.device);
    SessionSettings settings;
    settings.poll.characterTime = characterTime(m_address);
    settings.poll.firstQuiet = quietBeforeUse(settings.poll.characterTime);
    settings.poll.echo = m_options.echo;
    settings.poll.inStep = m_options.inStep;
    settings.poll.gap = m_options.gap;
    settings.retries = m_options.retries;
    tapLine(settings.poll);
    return begin(settings);
}

bool Connection::reconnect()
{
    if (!kmr::reconnect(*m_device, m_address, m_nameById, CONNECT_LIMIT, stopFlag()))
        return false;
    m_session->restart();
    return true;
}

Session &Connection::openOn(std::unique_ptr<QIODevice> device)
{
    if (m_options.trace || !m_options.capture.isEmpty())
        printError("kmr: no link is opened, so nothing is traced or captured");
    m_device = std::move(device);
    SessionSettings settings;
    settings.poll.echo = EchoMode::Off;
    settings.poll.inStep = false;
    settings.retries = 0;
    return begin(settings);
}

Session &Connection::begin(SessionSettings settings)
{
    settings.poll.timeout = m_options.timeout;
    settings.groupLimit = m_options.groupLimit;
    m_session = std::make_unique<Session>(m_library->functions(), *m_device, settings, stopFlag());
    return *m_session;
}

void Connection::tapLine(PollSettings &settings)
{
    if (m_options.trace)
        m_trace =
            std::make_unique<LineTrace>([](const TracedLine &line) { printError(toText(line)); });
    m_capture = beginCapture(m_options);
    if (!m_trace && !m_capture)
        return;
    settings.tap = [this](bool isSent, const QByteArray &characters) {
        const QDateTime now = QDateTime::currentDateTime();
        capture(m_capture, isSent, characters);
        if (m_trace)
            m_trace->add(now, isSent, characters);
    };
}

} // namespace kmr
