// Loads the driver and opens the link, for all commands that need them.
#pragma once

#include "host/driver_library.h"
#include "host/line/line_trace.h"
#include "host/line/link.h"
#include "host/project/capture.h"
#include "host/project/named_tag_reader.h"
#include "host/session/session.h"
#include "host/tags/tag.h"
#include "kmr/options.h"
#include "kmr/outcome.h"
#include "kmr/output.h"

#include <QIODevice>

#include <memory>
#include <vector>

namespace kmr {

// Loads the driver of the options, else the one of findDriver(). Throws Error (Library).
std::unique_ptr<DriverLibrary> loadDriver(const Options &options);

// The link of the options. Throws Error (Usage) if it is missing or bad.
LinkAddress linkOf(const Options &options);

// A reader of tags with the settings of the options, without names.
TagReader tagReaderOf(const Options &options, const DriverLibrary &library);

// Reads the file of names. Reports on stderr if it has bad lines. Throws Error (Usage).
NameTable loadNames(const QString &path);

// The capture of the options, or null. Throws Error (Usage).
std::unique_ptr<CaptureWriter> beginCapture(const Options &options);

// Adds to the capture, if there is one. A full disk ends the capture, not the command.
void capture(std::unique_ptr<CaptureWriter> &writer, bool isSent, const QByteArray &characters);

// The driver and, once it is opened, the link.
class Connection {
public:
    // Loads the driver and the names, but opens nothing yet. Throws Error.
    explicit Connection(const Options &options);

    const NamedTagReader &tags() const
    {
        return m_tags;
    }

    const DriverFunctions &driver() const
    {
        return m_library->functions();
    }

    // Reads all tags, or the project's if there are none. Throws Error (Usage) that names all bad
    // ones.
    std::vector<Tag> readTags(const QStringList &texts) const;

    // Opens the link. Throws Error.
    Session &open();

    // Tries once to open the lost link again; then the session's poll plan must be set again.
    bool reconnect();

    // Instead of open(): a session on an open device that is not a line. It does not echo, needs no
    // pauses, and answers at once or never.
    Session &openOn(std::unique_ptr<QIODevice> device);

private:
    Session &begin(SessionSettings settings);
    void tapLine(PollSettings &settings);

    const Options m_options;
    std::unique_ptr<DriverLibrary> m_library;
    NamedTagReader m_tags;
    std::unique_ptr<CaptureWriter> m_capture;
    std::unique_ptr<LineTrace> m_trace;
    LinkAddress m_address; // of the open link
    QString m_nameById;    // of the open link, if it is a serial port
    std::unique_ptr<QIODevice> m_device;
    std::unique_ptr<Session> m_session;
};

} // namespace kmr
