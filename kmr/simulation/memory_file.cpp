#include "kmr/simulation/memory_file.h"

#include "host/error.h"
#include "host/project/csv.h"
#include "modbus/areas.h"

#include <QRegularExpression>
#include <QStringList>

#include <map>
#include <optional>
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

// The name and the line of each place so far.
using Given = std::map<std::pair<Table, int>, std::pair<QString, int>>;

void noteGiven(Given &given, const Place &place, const QString &name, int number)
{
    const auto [first, isNew] = given.try_emplace({place.table, place.address}, name, number);
    if (isNew)
        return;
    const auto &[other, line] = first->second;
    throw Error(ErrorKind::Usage,
                other == name
                    ? QString("%1 stands in line %2 already").arg(name).arg(line)
                    : QString("%1 is the same place as %2 in line %3").arg(name, other).arg(line));
}

// Throws Error (Usage) that says what is wrong.
void readLine(const QString &line, int number, Memory &memory, Given &given)
{
    const QStringList fields = splitCsv(line);
    const std::optional<Place> place = placeOfName(fields.front());
    if (!place) {
        throw Error(ErrorKind::Usage,
                    QString("\"%1\" is not an element of the controller: expected "
                            "one, for example D100, X17 (octal) or CV2200")
                        .arg(fields.front()));
    }
    bool isNumber = false;
    const QString text = fields.mid(1).join(',');
    const qulonglong value = text.toULongLong(&isNumber);
    if (!isNumber || value > modbus::highestValue(*place)) {
        throw Error(ErrorKind::Usage, QString("bad value \"%1\" for %2: expected 0 to %3")
                                          .arg(text, fields.front())
                                          .arg(modbus::highestValue(*place)));
    }
    noteGiven(given, *place, fields.front(), number);
    simulator::setElement(memory, *place, static_cast<std::uint32_t>(value));
}

QString nameOf(Table table, int address)
{
    QString name = modbus::elementAt(table, address);
    if (!name.isEmpty())
        return name;
    return (table == Table::Bits ? BIT : REGISTER) + QString::number(address);
}

} // namespace

Memory parseMemory(const QString &text, const QString &name)
{
    Memory memory;
    Given given;
    const QStringList faults = readLines(text, name, HEADING, [&](const QString &line, int number) {
        readLine(line, number, memory, given);
    });
    if (!faults.isEmpty())
        throw Error(ErrorKind::Usage, faults.join('\n'));
    return memory;
}

QString formatMemory(const Memory &memory)
{
    QString text = QString(HEADING) + '\n';
    for (int address = 0; address < Memory::SIZE; ++address) {
        if (memory.bit(static_cast<std::uint16_t>(address)))
            text += nameOf(Table::Bits, address) + ",1\n";
    }
    for (int address = 0; address < Memory::SIZE; ++address) {
        const std::uint32_t value = memory.value(static_cast<std::uint16_t>(address));
        if (value != 0)
            text += QString("%1,%2\n").arg(nameOf(Table::Registers, address)).arg(value);
    }
    return text;
}

} // namespace kmr
