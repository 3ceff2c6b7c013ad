// Serves the simulated controller over a pseudo-terminal, which programs open like a serial port.
#pragma once

#include "modbus/ascii.h"
#include "simulator/controller.h"

#include <QSocketNotifier>
#include <QString>

#include <memory>

namespace simulator {

// Makes a pseudo-terminal of its own. Programs may open, close and open it again. Needs a running
// Qt event loop. The controller must outlive it.
class PseudoTerminal {
public:
    explicit PseudoTerminal(Controller &controller);
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal &) = delete;
    PseudoTerminal &operator=(const PseudoTerminal &) = delete;

    // Makes the terminal, and `linkPath` a symbolic link to it until the end of this object. A link
    // that an earlier run left behind is replaced, anything else there is left alone. Returns an
    // empty text, or else what went wrong and what to do about it. To be called once.
    QString open(const QString &linkPath);

    // The terminal itself: "/dev/pts/3"; empty before open().
    const QString &devicePath() const
    {
        return m_devicePath;
    }

private:
    QString makeTerminal();
    QString makeLink(const QString &linkPath);
    void receive();

    Controller &m_controller;
    modbus::LineCollector m_collector;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QString m_devicePath;
    QString m_linkPath; // empty while there is no link of ours
    int m_master = -1;  // our end
    int m_slave = -1;   // the programs' end, kept open so that their closing ends nothing
};

} // namespace simulator
