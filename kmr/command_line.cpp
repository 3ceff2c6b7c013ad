#include "kmr/command_line.h"

#include <CLI/CLI.hpp>

namespace kmr {

const char *const WANTED_TAGS = "what to look at (default: the tags of kmr.toml)";

const char *const TAG_HELP =
    R"(A TAG is [STATION#]AREA ADDRESS[..END | xCOUNT][/TYPE] written together:
  D100     word D 100                   2#M0x16   bits M 0 to M 15 of station 2
  X17      input X 17 (octal)           D100.3    bit 3 of the word D 100, read only
  CV2200   counter CV2 200              CV21      word CV 21 (CV2 begins at 200)
  D100..107  eight words                D100/float32  one value in D 100 and D 101
Types: int16, uint16, int32, uint32, float32, int64, uint64, float64, hex, bcd, text.
A name of --names is a tag, too, also as 2#NAME, NAMExCOUNT or NAME/TYPE.
'kmr areas' lists the areas, 'kmr tags check --help' explains names.)";

CLI::Validator aboveZero(double most)
{
    const auto check = [most](const std::string &text) {
        bool isNumber = false;
        const double number = toQString(text).toDouble(&isNumber);
        if (isNumber && number > 0 && number <= most)
            return std::string();
        return QString("expected a number above 0, at most %1, not \"%2\"")
            .arg(QString::number(most, 'f', 0), toQString(text))
            .toStdString();
    };
    return CLI::Validator(check, "POSITIVE");
}

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
