#include "host/project/text_file.h"

#include "host/error.h"
#include "tests/kmr/file_size_limit.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace kmr {
namespace {

// Nothing when the function throws nothing.
template <typename Function> std::optional<ErrorKind> kindOf(Function function)
{
    try {
        function();
    } catch (const Error &error) {
        return error.kind();
    }
    return std::nullopt;
}

} // namespace

TEST(TextFile, WrittenTextReadsBackAndReplacesTheOld)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("recipe.csv");
    writeTextFile(path, QString::fromUtf8("D100,250 \u00b0C\n"));
    writeTextFile(path, QString::fromUtf8("\u00b0C\n"));
    EXPECT_EQ(readTextFile(path), QString::fromUtf8("\u00b0C\n"));
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files), QStringList("recipe.csv"));
}

TEST(TextFile, NewTextKeepsTheByteOrderMarkOfTheOld)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("recipe.csv");
    for (const char *typed : {"", "\xEF\xBB\xBF"}) {
        const QByteArray mark = typed;
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(mark + "D100,250\n") > 0);
        file.close();
        writeTextFile(path, "D100,7\n");
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), mark + "D100,7\n");
    }
}

TEST(TextFile, ReadsItsEncodingWithoutAByteOrderMarkAndRefusesAnotherOne)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("names.csv");
    const auto readBytes = [&path](const QByteArray &bytes, TextEncoding encoding) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        file.close();
        try {
            return readTextFile(path, encoding);
        } catch (const Error &error) {
            return error.text().mid(path.size());
        }
    };
    const QString text = QString::fromUtf8("\u00fc,D1\n");
    const QByteArray utf16("\xFF\xFE\xFC\0,\0D\0\x31\0\n\0", 12);
    EXPECT_EQ(readBytes("\xEF\xBB\xBF\xC3\xBC,D1\n", TextEncoding::Utf8), text);
    EXPECT_EQ(readBytes("\xFC,D1\n", TextEncoding::Latin1), text);
    EXPECT_EQ(readBytes(utf16, TextEncoding::Utf16), text);
    EXPECT_EQ(readBytes("a,D0\n\xFC,D1\n", TextEncoding::Utf8).toStdString(),
              ":2: not in UTF-8, maybe in Latin-1: \"\u00fc,D1\"; save it as UTF-8");
    EXPECT_EQ(readBytes(utf16, TextEncoding::Utf8),
              " is in UTF-16, expected UTF-8: save it as UTF-8");
}

TEST(TextFile, WhatDoesNotFitOnTheDiskLeavesTheOldFileAlone)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("recipe.csv");
    writeTextFile(path, "D100,250\n");
    {
        const FileSizeLimit limit(100);
        EXPECT_EQ(kindOf([&path] { writeTextFile(path, QString(101, 'x')); }), ErrorKind::Output);
    }
    EXPECT_EQ(readTextFile(path), "D100,250\n");
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files), QStringList("recipe.csv"));
}

TEST(TextFile, MissingFolderIsAnErrorNotALostText)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("no-such-folder/recipe.csv");
    EXPECT_EQ(kindOf([&path] { writeTextFile(path, "D100,250\n"); }), ErrorKind::Output);
}

TEST(TextFile, DeviceIsWrittenAndNotReplaced)
{
    writeTextFile("/dev/null", "D100,250\n");
    EXPECT_EQ(kindOf([] { writeTextFile("/dev/full", "D100,250\n"); }), ErrorKind::Output);
    for (const char *device : {"/dev/null", "/dev/full"}) {
        EXPECT_TRUE(QFileInfo::exists(device)) << device;
        EXPECT_FALSE(QFileInfo(device).isFile()) << device;
    }
}

TEST(TextFile, PlaceThatCannotBeWrittenIsKnownBefore)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("recipe.csv");
    EXPECT_EQ(kindOf([] { requireWritable("/no/such/directory/recipe.csv"); }), ErrorKind::Usage);
    EXPECT_EQ(kindOf([&directory] { requireWritable(directory.path()); }), ErrorKind::Usage);
    EXPECT_EQ(kindOf([&path] { requireWritable(path); }), std::nullopt);
    EXPECT_FALSE(QFileInfo::exists(path));
    EXPECT_EQ(kindOf([] { requireWritable("/dev/full"); }), std::nullopt);
}

TEST(TextFile, ReadOnlyFolderIsKnownBeforeAndLeavesTheOldFile)
{
    QTemporaryDir directory;
    const QString path = directory.filePath("recipe.csv");
    writeTextFile(path, "D100,250\n");
    const QByteArray file = path.toLocal8Bit();
    const QByteArray folder = directory.path().toLocal8Bit();
    chmod(file.constData(), 0666);
    chmod(folder.constData(), 0555);
    const uid_t user = geteuid();
    const bool isOther = user != 0 || seteuid(65534) == 0; // root may write everywhere
    EXPECT_EQ(kindOf([&path] { requireWritable(path); }), ErrorKind::Usage);
    EXPECT_EQ(kindOf([&path] { writeTextFile(path, "D100,7\n"); }), ErrorKind::Output);
    EXPECT_TRUE(isOther && seteuid(user) == 0);
    chmod(folder.constData(), 0700);
    EXPECT_EQ(readTextFile(path), "D100,250\n");
}

} // namespace kmr
