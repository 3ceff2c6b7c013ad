// A line with simulated controllers of all stations, so that the driver's frames can be shown
// without sending them.
#pragma once

#include "modbus/ascii.h"
#include "simulator/controller.h"

#include <QIODevice>

#include <map>

namespace kmr {

class SimulatedLine : public QIODevice {
public:
    // Is open at once.
    SimulatedLine();

    bool isSequential() const override
    {
        return true;
    }
    qint64 bytesAvailable() const override
    {
        return m_answers.size() + QIODevice::bytesAvailable();
    }
    bool waitForReadyRead(int timeout) override;

protected:
    qint64 readData(char *data, qint64 size) override;
    qint64 writeData(const char *data, qint64 size) override;

private:
    std::map<QByteArray, simulator::Controller> m_controllers; // by the station's characters
    modbus::LineCollector m_collector;
    QByteArray m_answers;
};

} // namespace kmr
