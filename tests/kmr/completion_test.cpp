// kmr/completion/kmr.bash: the words that may come next.
#include "tests/kmr/help_pages.h"
#include "tests/kmr/kmr_process.h"
#include "tests/kmr/terminal.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

// The completions of the last word of a line that begins with kmr.
QStringList complete(const QString &words)
{
    const Finished bash = runShell(
        "exec bash -c '. " PROJECT_DIRECTORY "/kmr/completion/kmr.bash; COMP_WORDS=(\"$KMR\" " +
        words +
        "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _kmr; printf \"%s\\n\" \"${COMPREPLY[@]}\"'");
    EXPECT_EQ(bash.err, "");
    return bash.out.trimmed().split('\n');
}

} // namespace

TEST(Completion, OffersEachCommand)
{
    for (const HelpPage &page : helpPages()) {
        if (page.commands.isEmpty())
            continue;
        EXPECT_EQ(complete(page.command.join(' ') + " \"\""), page.commands);
    }
    EXPECT_EQ(complete("--station 2 --trace wa"), QStringList("watch"));
}

TEST(Completion, OffersEachOptionOfACommandAndTheGeneralOnes)
{
    const QStringList general = helpPages().front().options;
    for (const HelpPage &page : helpPages()) {
        if (page.options.size() == 1) // nothing but --help
            continue;
        const QStringList offered = complete(page.command.join(' ') + " --");
        for (const QString &option : page.options + general)
            EXPECT_TRUE(offered.contains(option)) << qPrintable(page.command.join(' ') + option);
    }
}

TEST(Completion, OffersTheChoicesOfAnOption)
{
    EXPECT_EQ(complete("--echo \"\""), (QStringList{"on", "off", "auto"}));
    EXPECT_EQ(complete("read D0 --format = j"), (QStringList{"json", "jsonl"}));
    EXPECT_EQ(complete("read --format ="), (QStringList{"plain", "table", "csv", "json", "jsonl"}));
    EXPECT_EQ(complete("--timeout \"\""), QStringList(""));
}

TEST(Completion, OffersFilesWhereFilesGo)
{
    const QTemporaryDir directory;
    saveFile(directory.filePath("mixer recipe.csv"), "D0,1\n");
    const QStringList file(directory.filePath("mixer recipe.csv"));
    const QString begin = directory.filePath("mix");
    for (const char *words : {"recipe upload ", "tags check ", "tags import --output ", "trace ",
                              "replay ", "run ", "--names ", "read --capture ", "sim --save ",
                              "run --junit ", "publish --spool ", "watch --config = "})
        EXPECT_EQ(complete(words + begin), file) << words;
}

TEST(Completion, OffersTheAreasForTags)
{
    EXPECT_EQ(complete("read --station 2 D0 T"), (QStringList{"T", "TV"}));
    EXPECT_EQ(complete("write C"), (QStringList{"C", "CV", "CV2"}));
    EXPECT_EQ(complete("series D"), QStringList("D"));
}

TEST(Completion, OffersNamesForTagsAlsoAfterAStation)
{
    const QTemporaryDir directory;
    const QString file = directory.filePath("names.csv");
    saveFile(file, "name,tag\nDamper [1],M0\nDrum,D7\npump,Y1\n");
    const QString words = "read --names " + file;
    EXPECT_EQ(complete(words + " D"), (QStringList{"D", "Damper\\ \\[1\\]", "Drum"}));
    EXPECT_EQ(complete(words + " 2#p"), QStringList("2#pump"));
    EXPECT_EQ(complete("read --names = " + file + " p"), QStringList("pump"));
    EXPECT_EQ(complete(words + " \\\"Dam"), QStringList("Damper [1]"));
}

TEST(Completion, WorksInAShell)
{
    Terminal terminal("PATH=$(dirname \"$KMR\"):$PATH PS1='$ ' bash --norc --noprofile", 80, 24);
    terminal.waitFor("^\\$");
    terminal.type(". " PROJECT_DIRECTORY "/kmr/completion/kmr.bash");
    terminal.press("Enter");
    terminal.type("kmr rec");
    terminal.press("Tab");
    terminal.waitFor("kmr recipe\\b");
    terminal.type("up");
    terminal.press("Tab");
    terminal.waitFor("kmr recipe upload\\b");
}
