// A simulated controller in a thread of its own, for whoever has none at hand: as 'kmr sim
// --animate' serves it.
#pragma once

#include "simulator/faults.h"

#include <QStringList>
#include <QThread>

#include <chrono>
#include <vector>

namespace kmr {

struct BuiltInSettings {
    int baud = 19200; // its pace; 0: at once
    std::vector<simulator::Fault> faults = {};
};

class BuiltInController {
public:
    // Simulates the stations 1 and 2. Throws Error (Link) when it can't serve.
    explicit BuiltInController(const BuiltInSettings &settings = {});
    ~BuiltInController();
    BuiltInController(const BuiltInController &) = delete;
    BuiltInController &operator=(const BuiltInController &) = delete;

    // Where it serves: "tcp://127.0.0.1:40123".
    const QString &link() const
    {
        return m_link;
    }

    // Of the line that its pace imitates.
    std::chrono::nanoseconds characterTime() const;

    // Tags worth a look.
    static QStringList tags();

private:
    QThread m_thread;
    QObject *m_server; // lives in the thread
    int m_baud;
    QString m_link;
};

} // namespace kmr
