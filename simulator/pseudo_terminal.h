// Serves the simulated controller, or another responder, over a pseudo-terminal, which programs
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

// A pseudo-terminal. Programs may open, close and open it again. Needs a running Qt event loop.
// What `respond` refers to must outlive it.
class PseudoTerminal {
public:
    // `respond`: answers the lines; respondAs() for a controller. A plan that closes the link
    // removes the terminal and the link to it; a new one replaces it later. `pacing`: the pace of
    // the line, whatever rate the programs set.
    explicit PseudoTerminal(Responder respond, Pacing pacing = Pacing());
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal &) = delete;
    PseudoTerminal &operator=(const PseudoTerminal &) = delete;

    // Creates the terminal, and `linkPath` as a symbolic link to it until this object is destroyed.
    // Replaces a link that an earlier run left, and nothing else. Returns an empty text, or what
    // went wrong and what to do about it. Must be called only once.
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
    std::unique_ptr<QObject> m_waiting; // owns the timers of pieces to send
    QTimer m_reopening;                 // while a fault keeps the link closed
    QString m_devicePath;
    QString m_linkPath;     // empty while this object has no link
    QString m_pathToReopen; // while a fault keeps the link closed
    int m_master = -1;      // our end
    int m_slave = -1;       // the programs' end, kept open so that they may close theirs
};

} // namespace simulator
