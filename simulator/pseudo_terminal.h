// Serves the simulated controller, or whatever else answers, over a pseudo-terminal, which programs
// open like a serial port.
#pragma once

#include "modbus/ascii.h"
#include "simulator/pacing.h"
#include "simulator/responder.h"

#include <QSocketNotifier>
#include <QString>
#include <QTimer>

#include <memory>

namespace simulator {

// Makes a pseudo-terminal of its own. Programs may open, close and open it again. Needs a running
// Qt event loop. What it is handed by reference must outlive it.
class PseudoTerminal {
public:
    // `respond`: what answers, for a controller respondAs(). A plan that closes the link makes the
    // terminal vanish, with the link to it, and a new one takes its place. `pacing`: the pace of
    // the line, whatever rate the programs set.
    explicit PseudoTerminal(Responder respond, Pacing pacing = Pacing());
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal &) = delete;
    PseudoTerminal &operator=(const PseudoTerminal &) = delete;

    // Makes the terminal, and `linkPath` a symbolic link to it until the end of this object. A link
    // that an earlier run left behind is replaced, anything else there is left alone. Returns an
    // empty text, or else what went wrong and what to do about it. To be called once.
    QString open(const QString &linkPath);

    // The terminal itself: "/dev/pts/3"; empty before open(), the last one while a fault keeps the
    // link closed.
    const QString &devicePath() const
    {
        return m_devicePath;
    }

private:
    QString makeTerminal();
    QString makeLink(const QString &linkPath);
    void close();
    void receive();
    void reopen();

    const Responder m_respond;
    const Pacing m_pacing;
    modbus::LineCollector m_collector;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::unique_ptr<QObject> m_waiting; // whom timers of pieces to send belong to
    QTimer m_reopening;                 // while a fault keeps the link closed
    QString m_devicePath;
    QString m_linkPath;     // empty while there is no link of ours
    QString m_pathToReopen; // while a fault keeps the link closed
    int m_master = -1;      // our end
    int m_slave = -1;       // the programs' end, kept open so that their closing ends nothing
};

} // namespace simulator
