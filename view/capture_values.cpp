#include "view/capture_values.h"

#include "host/line/reply_filter.h"
#include "modbus/areas.h"
#include "modbus/ascii.h"
#include "modbus/protocol.h"
#include "view/traffic_model.h"

#include <QCoreApplication>

#include <map>
#include <tuple>
#include <utility>

namespace kmr {

namespace {

struct Captures {
    Q_DECLARE_TR_FUNCTIONS(Captures)
};

modbus::Table tableOf(int function)
{
    const bool isBits =
        function == modbus::READ_DISCRETE_INPUTS || function == modbus::WRITE_SINGLE_COIL;
    return isBits ? modbus::Table::Bits : modbus::Table::Registers;
}

class Replay {
public:
    explicit Replay(Recording &recording) : m_recording(recording) {}

    void take(const TrafficNews &traffic)
    {
        m_request = modbus::decodeLine(traffic.sent).message;
        if (m_request.size() < 6)
            return;
        m_station = modbus::stationOf(traffic.sent).toInt();
        m_function = modbus::byteAt(m_request, 1);
        m_address = modbus::wordAt(m_request, 2);
        m_time = traffic.lastReceived > 0 ? traffic.lastReceived : traffic.time;
        ReplyFilter filter(traffic.sent, m_echo);
        auto verdict = ReplyFilter::Verdict::MoreWanted;
        if (!traffic.received.isEmpty())
            verdict = filter.take(traffic.received);
        if (verdict == ReplyFilter::Verdict::MoreWanted)
            verdict = filter.end();
        const bool isGood = verdict == ReplyFilter::Verdict::Good && filter.exceptionCode() == 0;
        if (!modbus::isRead(m_function))
            noteWrite(isGood);
        else if (isGood)
            noteRead(modbus::decodeLine(filter.reply()).message.mid(3));
        else
            noteGap();
    }

    // Names say the station if there are several.
    void nameStations()
    {
        const auto station = [](const auto &entry) { return std::get<0>(entry.first); };
        if (m_ids.empty() || station(*m_ids.begin()) == station(*m_ids.rbegin()))
            return;
        for (const auto &entry : m_ids) {
            QString &name = m_recording.tags[static_cast<std::size_t>(entry.second) - 1].name;
            name = QString("%1#%2").arg(station(entry)).arg(name);
        }
    }

private:
    using Key = std::tuple<int, modbus::Table, int>; // station, table and address

    Key key(int address) const
    {
        return {m_station, tableOf(m_function), address};
    }

    void note(int address, double value)
    {
        int &id = m_ids[key(address)];
        if (id == 0) {
            id = static_cast<int>(m_recording.tags.size()) + 1;
            const modbus::Table table = tableOf(m_function);
            m_recording.tags.push_back(
                {id, modbus::elementAt(table, address), {}, table == modbus::Table::Bits});
        }
        m_recording.history.add(id, m_time, value);
    }

    void noteRead(const QByteArray &data)
    {
        if (tableOf(m_function) == modbus::Table::Bits) {
            const int count = std::min(quantity(), 8 * static_cast<int>(data.size()));
            for (int bit = 0; bit < count; ++bit)
                note(m_address + bit, modbus::byteAt(data, bit / 8) >> bit % 8 & 1);
            return;
        }
        int place = 0;
        for (int address = m_address; place < data.size(); ++address) {
            const int bytes =
                std::min(static_cast<int>(data.size()) - place, modbus::registerBytes(address));
            note(address, modbus::valueAt(data, place, bytes));
            place += bytes;
        }
    }

    // Only what was read before can have a gap.
    void noteGap()
    {
        const auto end = m_ids.lower_bound(key(m_address + quantity()));
        for (auto entry = m_ids.lower_bound(key(m_address)); entry != end; ++entry)
            m_recording.history.addGap(entry->second, m_time);
    }

    void noteWrite(bool isGood)
    {
        const auto found = m_ids.find(key(m_address));
        if (isGood && found != m_ids.end())
            m_recording.history.mark({found->second, m_time, Captures::tr("written")});
    }

    int quantity() const
    {
        return modbus::wordAt(m_request, 4);
    }

    Recording &m_recording;
    Echo m_echo;
    std::map<Key, int> m_ids;
    QByteArray m_request;
    int m_station = 0;
    int m_function = 0;
    int m_address = 0;
    double m_time = 0;
};

} // namespace

bool readValues(const std::vector<TrafficNews> &traffic, Recording &recording,
                const ReadProgress &progress)
{
    Replay replay(recording);
    qint64 done = 0;
    for (const TrafficNews &exchange : traffic) {
        if (!goesOn(progress, done++, static_cast<qint64>(traffic.size())))
            break;
        replay.take(exchange);
    }
    replay.nameStations();
    return !recording.tags.empty();
}

} // namespace kmr
