#include "host/driver_library.h"

#include "host/error.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace kmr;

namespace {

// The text of the error, which must be about the library.
std::string faultOf(const QString &path)
{
    try {
        DriverLibrary library(path);
    } catch (const Error &error) {
        EXPECT_EQ(error.kind(), ErrorKind::Library);
        return error.what();
    }
    return {};
}

bool names(const std::string &text, const char *part)
{
    return text.find(part) != std::string::npos;
}

} // namespace

TEST(DriverLibrary, ResolvesAllNamesOfTheDriver)
{
    const DriverLibrary library(DRIVER_LIBRARY);
    qint32 type = 7;
    library.functions().getProtocolType(&type);
    EXPECT_EQ(type, 0);
    EXPECT_NE(library.functions().setData, nullptr);
}

TEST(DriverLibrary, MissingFileIsNamed)
{
    const std::string fault = faultOf("/no/such/driver.so");
    EXPECT_TRUE(names(fault, "/no/such/driver.so")) << fault;
}

TEST(DriverLibrary, FileThatIsNoLibraryIsRefused)
{
    QTemporaryDir directory;
    QFile file(directory.filePath("driver.so"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("not a library");
    file.close();
    EXPECT_TRUE(names(faultOf(file.fileName()), "cannot load"));
}

TEST(DriverLibrary, EveryMissingNameIsNamed)
{
    const std::string fault = faultOf(STUB_LIBRARY);
    EXPECT_FALSE(names(fault, "intf_getProtocolType")) << fault;
    EXPECT_FALSE(names(fault, "intf_getSendFrame")) << fault;
    for (const char *name :
         {"intf_getDriverParameter", "intf_getDriverPropertyPage", "intf_SetDriverPropertyPage",
          "intf_setAddrValueChangeCallBack", "intf_initProperty", "intf_setRcpAddress",
          "intf_checkAddrValidity", "intf_checkAddr", "intf_getRegDiscription",
          "intf_getRegListByType", "intf_multiCopy", "intf_addrMerge", "intf_addConditionRead",
          "intf_dealRcvFrame", "intf_getData", "intf_setData"})
        EXPECT_TRUE(names(fault, name)) << name << " in: " << fault;
}

TEST(DriverLibrary, DriverForAnotherQtIsRefusedBeforeItIsLoaded)
{
    QTemporaryDir directory;
    QFile file(directory.filePath("driver.so"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QT_VERSION_MAJOR == 5 ? "libQt6Core.so.6" : "libQt5Core.so.5");
    file.close();
    EXPECT_TRUE(names(faultOf(file.fileName()), "is built for Qt"));
}

TEST(QtVersionOf, TellsMajorAndMinorOfALibraryOfQtAndNothingOfOthers)
{
    EXPECT_EQ(qtVersionOf(DRIVER_LIBRARY), QString(QT_VERSION_STR).section('.', 0, 1));
    EXPECT_EQ(qtVersionOf("/no/such/driver.so"), "");
    EXPECT_EQ(qtVersionOf("/bin/sh"), "");
}

TEST(FindDriver, BuildTreeIsSearchedBesideTheExecutable)
{
    QTemporaryDir directory;
    ASSERT_TRUE(QDir(directory.path()).mkpath("host"));
    ASSERT_TRUE(QDir(directory.path()).mkpath("driver"));
    QFile file(directory.filePath("driver/libostrel_kmr.so.1"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(findDriver(directory.filePath("host")), file.fileName());
}

TEST(FindDriver, OtherwiseTheSystemsLoaderSearches)
{
    EXPECT_EQ(findDriver("/nowhere"), "libostrel_kmr.so.1");
}
