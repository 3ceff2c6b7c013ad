#include "host/commands/command_line.h"

namespace kmr {

QString toQString(const std::string &text)
{
    return QString::fromLocal8Bit(text.c_str());
}

QStringList toQStrings(const std::vector<std::string> &texts)
{
    QStringList list;
    for (const std::string &text : texts)
        list.append(toQString(text));
    return list;
}

} // namespace kmr
