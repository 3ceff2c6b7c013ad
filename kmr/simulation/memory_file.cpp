#include "kmr/simulation/memory_file.h"

#include "host/error.h"
#include "host/project/csv.h"
#include "host/tags/values.h"
#include "modbus/areas.h"

#include <QRegularExpression>
#include <QStringList>

#include <map>
#include <optional>
#include <tuple>
#include <utility>

namespace kmr {

namespace {

using modbus::Place;
using modbus::Table;
using simulator::Memory;

const char *const HEADING = "tag,value";
const char *const BIT = "bit"; // by Modbus address
const char *const REGISTER = "register";

std::optional<Place> placeByAddress(Table table, int address)
{
    if (address >= Memory::SIZE)
        return std::nullopt;
    return Place{table, static_cast<std::uint16_t>(address)};
}

// CV2200 is the counter CV2 200, CV21 the word CV 21.
std::optional<Place> placeOfName(const QString &name)
{
    static const QRegularExpression PARTS("^([A-Za-z]+)([0-9]{1,6})$");
    const QRegularExpressionMatch match = PARTS.match(name);
    const QString area = match.captured(1);
    const QString digits = match.captured(2);
    if (!match.hasMatch())
        return std::nullopt;
    if (area == BIT)
        return placeByAddress(Table::Bits, digits.toInt());
    if (area == REGISTER)
        return placeByAddress(Table::Registers, digits.toInt());
    if (area == "CV" && digits.size() == 4 && digits.startsWith('2'))
        return modbus::placeOf("CV2", digits.mid(1).toInt());
    return modbus::placeOf(area, modbus::linearNumber(area, digits.toInt()));
}

// The name and the line of each element so far.
using Given = std::map<std::tuple<int, Table, int>, std::pair<QString, int>>;

void noteGiven(Given &given, const Setting &setting, const QString &name, int number)
{
    const Place &place = setting.place;
    const auto [first, isNew] =
        given.try_emplace({setting.station, place.table, place.address}, name, number);
    if (isNew)
        return;
    const auto &[other, line] = first->second;
    throw Error(
        ErrorKind::Usage,
        other == name
            ? QString("%1 is already in line %2").arg(name).arg(line)
            : QString("%1 is the same element as %2 in line %3").arg(name, other).arg(line));
}

std::uint32_t readValue(const QString &text, const QString &name, const Place &place)
{
    bool isNumber = false;
    const qulonglong value = text.toULongLong(&isNumber);
    if (!isNumber || value > modbus::highestValue(place)) {
        throw Error(ErrorKind::Usage, QString("bad value \"%1\" for %2: expected 0 to %3")
                                          .arg(text, name)
                                          .arg(modbus::highestValue(place)));
    }
    return static_cast<std::uint32_t>(value);
}

// Reads files into the memories of a plant.
class MemoryReader {
public:
    MemoryReader(Plant &plant, const NamedTagReader *names) : m_plant(plant), m_names(names) {}

    // Throws Error (Usage) that says what is wrong.
    void readLine(const QString &line, int number)
    {
        const QStringList fields = splitCsv(line);
        const QString &name = fields.front();
        const std::vector<Setting> settings = settingsOf(name, fields.mid(1).join(','));
        for (const Setting &setting : settings)
            noteGiven(m_given, setting, name, number);
        m_plant.set(settings);
    }

private:
    // An element as it is saved, else a name or another tag.
    std::vector<Setting> settingsOf(const QString &name, const QString &text)
    {
        static const QRegularExpression STATION("^([0-9]{1,2})#");
        const QRegularExpressionMatch match = STATION.match(name);
        const int station = match.hasMatch() ? match.captured(1).toInt() : m_plant.firstStation();
        if (const auto place = placeOfName(name.mid(match.capturedLength()))) {
            m_plant.memory(station); // throws if there is none
            return {{station, *place, readValue(text, name, *place)}};
        }
        if (m_names == nullptr) {
            throw Error(ErrorKind::Usage,
                        QString("\"%1\" is not an element of the controller: expected one, for "
                                "example D100, X17 (octal) or CV2200")
                            .arg(name));
        }
        const Tag tag = m_names->read(name);
        return m_plant.settingsOf(tag, parseValues(tag, text));
    }

    Plant &m_plant;
    const NamedTagReader *m_names;
    Given m_given;
};

QString nameOf(Table table, int address)
{
    QString name = modbus::elementAt(table, address);
    if (!name.isEmpty())
        return name;
    return (table == Table::Bits ? BIT : REGISTER) + QString::number(address);
}

void appendMemory(QString &text, const Memory &memory, const QString &station)
{
    for (int address = 0; address < Memory::SIZE; ++address) {
        if (memory.bit(static_cast<std::uint16_t>(address)))
            text += station + nameOf(Table::Bits, address) + ",1\n";
    }
    for (int address = 0; address < Memory::SIZE; ++address) {
        const std::uint32_t value = memory.value(static_cast<std::uint16_t>(address));
        if (value != 0)
            text += QString("%1%2,%3\n").arg(station, nameOf(Table::Registers, address)).arg(value);
    }
}

} // namespace

void loadMemory(const QString &text, const QString &file, Plant &plant, const NamedTagReader *names)
{
    MemoryReader reader(plant, names);
    const QStringList faults =
        readLines(text, file, HEADING,
                  [&reader](const QString &line, int number) { reader.readLine(line, number); });
    if (!faults.isEmpty())
        throw Error(ErrorKind::Usage, faults.join('\n'));
}

QString formatMemory(const Plant &plant)
{
    QString text = QString(HEADING) + '\n';
    for (const auto &[station, controller] : plant.controllers()) {
        const bool isFirst = station == plant.firstStation();
        appendMemory(text, controller.memory(), isFirst ? QString() : QString("%1#").arg(station));
    }
    return text;
}

} // namespace kmr
