// kmr/man/kmr.1 against what kmr shows of itself.
#include "tests/kmr/help_pages.h"
#include "tests/kmr/kmr_process.h"

#include <QRegularExpression>
#include <QSet>
#include <gtest/gtest.h>

namespace {

// The page with plain hyphens.
const QString &manPage()
{
    static const QString PAGE =
        QString::fromUtf8(loadFile(PROJECT_DIRECTORY "/kmr/man/kmr.1")).replace("\\-", "-");
    return PAGE;
}

// From a heading that begins so to the next heading.
QString section(const QString &heading)
{
    const auto begin = manPage().indexOf('\n' + heading);
    if (begin < 0)
        return {};
    return manPage().mid(begin, manPage().indexOf("\n.S", begin + 1) - begin);
}

QString sectionOf(const HelpPage &page)
{
    if (page.command.isEmpty())
        return section(".SH OPTIONS");
    const QString heading = ".SS \"kmr " + page.command.join(' ');
    const QString withArguments = section(heading + ' ');
    return withArguments.isEmpty() ? section(heading + '"') : withArguments;
}

} // namespace

TEST(ManPage, HasASectionWithTwoExamplesForEachCommand)
{
    ASSERT_GT(helpPages().size(), 18U);
    for (const HelpPage &page : helpPages()) {
        if (!page.commands.isEmpty())
            continue;
        const QString text = sectionOf(page);
        EXPECT_GE(text.section(".EX", 1).count("\nkmr "), 2) << qPrintable(page.command.join(' '));
    }
}

TEST(ManPage, ExplainsEachOptionWithItsCommand)
{
    for (const HelpPage &page : helpPages()) {
        for (const QString &option : page.options) {
            const bool isGeneral = option == "--help" && !page.command.isEmpty();
            EXPECT_TRUE(isGeneral || sectionOf(page).contains(option + '\n') ||
                        sectionOf(page).contains(option + ' '))
                << qPrintable(page.command.join(' ') + ' ' + option);
        }
    }
}

TEST(ManPage, NamesNoOptionThatKmrLacks)
{
    QSet<QString> known;
    for (const HelpPage &page : helpPages()) {
        for (const QString &option : page.options)
            known.insert(option);
    }
    static const QRegularExpression OPTION("--[a-z][a-z-]*");
    auto matches = OPTION.globalMatch(manPage());
    EXPECT_TRUE(matches.hasNext());
    while (matches.hasNext()) {
        const QString option = matches.next().captured();
        EXPECT_TRUE(known.contains(option)) << qPrintable(option);
    }
}

TEST(ManPage, IsFormattedWithoutAWarning)
{
    const Finished groff = runShell("groff -ww -man -Tutf8 -z " PROJECT_DIRECTORY "/kmr/man/kmr.1");
    EXPECT_EQ(groff.exitCode, 0);
    EXPECT_EQ(groff.err, "");
}
