// kmr --version.
#include "tests/kmr/kmr_process.h"

#include <QFileInfo>
#include <gtest/gtest.h>

namespace {

const QString TOOL = QString("kmr %1, Qt %2\n").arg(KMR_VERSION, qVersion());
const QString DRIVER =
    QString("driver %1, Qt %2\n").arg(DRIVER_LIBRARY, QString(QT_VERSION_STR).section('.', 0, 1));

} // namespace

TEST(VersionCommand, TellsToolAndDriverEachWithItsQt)
{
    const Finished version = run({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out, TOOL + DRIVER);
    EXPECT_EQ(version.err, "");
}

TEST(VersionCommand, TellsWhereTheSystemsLoaderFoundTheDriver)
{
    qputenv("LD_LIBRARY_PATH", QFileInfo(DRIVER_LIBRARY).path().toLocal8Bit());
    const Finished version = run({"--version", "--driver", "libostrel_kmr.so.1"});
    qunsetenv("LD_LIBRARY_PATH");
    EXPECT_EQ(version.out, TOOL + DRIVER);
}

TEST(VersionCommand, SaysWhyThereIsNoDriver)
{
    const Finished version = run({"--version", "--driver", "/no/such/driver.so"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(version.out.startsWith(TOOL + "no driver: cannot load the driver /no/such/"));
    EXPECT_TRUE(version.out.contains("--driver PATH"));
}
