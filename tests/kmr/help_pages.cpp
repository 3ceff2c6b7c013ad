#include "tests/kmr/help_pages.h"

#include "tests/kmr/kmr_process.h"

#include <QRegularExpression>

namespace {

// The first words of the lines under a heading.
QStringList listed(const QString &help, const QString &heading)
{
    static const QRegularExpression FIRST_WORD("^  (?:-[a-zA-Z],)?([a-z-]+)",
                                               QRegularExpression::MultilineOption);
    const auto begin = help.indexOf('\n' + heading + ":\n");
    QStringList words;
    if (begin < 0)
        return words;
    const QString list = help.mid(begin + 1, help.indexOf("\n\n", begin) - begin);
    auto matches = FIRST_WORD.globalMatch(list);
    while (matches.hasNext())
        words.append(matches.next().captured(1));
    return words;
}

void addPages(const QStringList &command, std::vector<HelpPage> &pages)
{
    const QString help = run(command + QStringList("--help")).out;
    const QStringList commands = listed(help, "Subcommands");
    pages.push_back({command, commands, listed(help, "Options"), help});
    for (const QString &name : commands)
        addPages(command + QStringList(name), pages);
}

} // namespace

const std::vector<HelpPage> &helpPages()
{
    static const std::vector<HelpPage> PAGES = [] {
        std::vector<HelpPage> pages;
        addPages({}, pages);
        return pages;
    }();
    return PAGES;
}
