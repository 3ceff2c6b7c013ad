#include "kmr/simulation/simulated_line.h"

#include <algorithm>
#include <cstring>

namespace kmr {

SimulatedLine::SimulatedLine()
{
    open(QIODevice::ReadWrite | QIODevice::Unbuffered);
}

bool SimulatedLine::waitForReadyRead(int)
{
    return !m_answers.isEmpty();
}

qint64 SimulatedLine::readData(char *data, qint64 size)
{
    const int count = static_cast<int>(std::min<qint64>(size, m_answers.size()));
    std::memcpy(data, m_answers.constData(), static_cast<std::size_t>(count));
    m_answers.remove(0, count);
    return count;
}

qint64 SimulatedLine::writeData(const char *data, qint64 size)
{
    for (const QByteArray &line : m_collector.take(QByteArray(data, static_cast<int>(size)))) {
        const QByteArray station = line.mid(1, 2);
        auto found = m_controllers.find(station);
        if (found == m_controllers.end())
            found = m_controllers.emplace(station, simulator::Controller(station)).first;
        m_answers.append(found->second.answer(line));
    }
    return size;
}

} // namespace kmr
