#include "host/project/text_file.h"

#include "host/error.h"
#include "tests/kmr/file_size_limit.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace kmr {
namespace {

template <typename Function> ExitCode codeOf(Function function)
{
    try {
        function();
    } catch (const Error &error) {
        return error.code();
    }
    return ExitCode::Ok;
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

TEST(TextFile, WhatDoesNotFitOnTheDiskLeavesTheOldFileAlone)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("recipe.csv");
    writeTextFile(path, "D100,250\n");
    {
        const FileSizeLimit limit(100);
        EXPECT_EQ(codeOf([&path] { writeTextFile(path, QString(101, 'x')); }),
                  ExitCode::ItemFailed);
    }
    EXPECT_EQ(readTextFile(path), "D100,250\n");
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files), QStringList("recipe.csv"));
}

TEST(TextFile, MissingFolderIsAnErrorNotALostText)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("no-such-folder/recipe.csv");
    EXPECT_EQ(codeOf([&path] { writeTextFile(path, "D100,250\n"); }), ExitCode::ItemFailed);
}

TEST(TextFile, DeviceIsWrittenAndNotReplaced)
{
    writeTextFile("/dev/null", "D100,250\n");
    EXPECT_EQ(codeOf([] { writeTextFile("/dev/full", "D100,250\n"); }), ExitCode::ItemFailed);
    for (const char *device : {"/dev/null", "/dev/full"}) {
        EXPECT_TRUE(QFileInfo::exists(device)) << device;
        EXPECT_FALSE(QFileInfo(device).isFile()) << device;
    }
}

TEST(TextFile, PlaceThatCannotBeWrittenIsKnownBefore)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("recipe.csv");
    EXPECT_EQ(codeOf([] { requireWritable("/no/such/directory/recipe.csv"); }), ExitCode::Usage);
    EXPECT_EQ(codeOf([&directory] { requireWritable(directory.path()); }), ExitCode::Usage);
    EXPECT_EQ(codeOf([&path] { requireWritable(path); }), ExitCode::Ok);
    EXPECT_FALSE(QFileInfo::exists(path));
    EXPECT_EQ(codeOf([] { requireWritable("/dev/full"); }), ExitCode::Ok);
}

} // namespace kmr
