// kmr/man/kmr.1 against the help of kmr.
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

// From a heading with this beginning to the next heading.
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

TEST(ManPage, HasASectionForEachCommandWithTheExamplesOfItsHelp)
{
    static const QRegularExpression EXAMPLE("\n  (kmr [^\n]*)");
    for (const HelpPage &page : helpPages()) {
        if (!page.commands.isEmpty())
            continue;
        auto examples = EXAMPLE.globalMatch(page.text.section("\nExamples:", 1));
        while (examples.hasNext()) {
            const QString example = examples.next().captured(1);
            EXPECT_TRUE(sectionOf(page).contains('\n' + example + '\n')) << qPrintable(example);
        }
    }
}

TEST(ManPage, ExplainsEachOptionWithItsCommandItsRangeAndItsDefault)
{
    // INT:INT in [1 - 9]=1, TEXT:{on,off}=on, TEXT=D0
    static const QRegularExpression VALUE(
        "^[A-Z]+(?::\\w+ in \\[(\\S+) - (\\S+)\\]|:\\{[^}]*\\})?(?:=(\\S+))?");
    for (const HelpPage &page : helpPages()) {
        const QString text = sectionOf(page).replace("\n.BR ", " ");
        for (const QString &option : page.options) {
            SCOPED_TRACE(qPrintable(page.command.join(' ') + ' ' + option));
            if (option == "--help" && !page.command.isEmpty())
                continue; // explained once
            const QString entry =
                text.section(QRegularExpression(option + "[\n ]"), 1).section("\n.TP", 0, 0);
            EXPECT_NE(entry, "");
            const auto value = VALUE.match(page.text.section("  " + option + ' ', 1));
            if (value.capturedLength(1) > 0) {
                EXPECT_TRUE(entry.contains(QRegularExpression("\\b" + value.captured(1) + " to " +
                                                              value.captured(2) + "\\b")));
            }
            if (value.capturedLength(3) > 0) {
                EXPECT_TRUE(entry.contains(
                    QRegularExpression("\\(default: " + value.captured(3) + "[ ),]")));
            }
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
