// The driver, loaded at run time.
#pragma once

#include "ostrel_kmr.h"

#include <QLibrary>
#include <QString>

namespace kmr {

// The eighteen functions of the driver, each by its exported name without "intf_". ostrel_kmr.h
// describes them.
struct DriverFunctions {
    decltype(&intf_getProtocolType) getProtocolType = nullptr;
    decltype(&intf_getDriverParameter) getDriverParameter = nullptr;
    decltype(&intf_getDriverPropertyPage) getDriverPropertyPage = nullptr;
    decltype(&intf_SetDriverPropertyPage) setDriverPropertyPage = nullptr;
    decltype(&intf_setAddrValueChangeCallBack) setAddrValueChangeCallBack = nullptr;
    decltype(&intf_initProperty) initProperty = nullptr;
    decltype(&intf_setRcpAddress) setRcpAddress = nullptr;
    decltype(&intf_checkAddrValidity) checkAddrValidity = nullptr;
    decltype(&intf_checkAddr) checkAddr = nullptr;
    decltype(&intf_getRegDiscription) getRegDiscription = nullptr;
    decltype(&intf_getRegListByType) getRegListByType = nullptr;
    decltype(&intf_multiCopy) multiCopy = nullptr;
    decltype(&intf_addrMerge) addrMerge = nullptr;
    decltype(&intf_addConditionRead) addConditionRead = nullptr;
    decltype(&intf_getSendFrame) getSendFrame = nullptr;
    decltype(&intf_dealRcvFrame) dealRcvFrame = nullptr;
    decltype(&intf_getData) getData = nullptr;
    decltype(&intf_setData) setData = nullptr;
};

// One loaded driver. It stays in memory until the program ends, because all code that loads the
// same file shares the driver's one object.
class DriverLibrary {
public:
    // Loads `path`, a file or a name for the system's loader. Throws Error (Library) with the
    // reason if it does not load, lacks one of the eighteen names or is built for another Qt.
    explicit DriverLibrary(const QString &path);

    const DriverFunctions &functions() const
    {
        return m_functions;
    }

    // The path of the loaded file, also if the system's loader found it.
    QString fileName() const;

private:
    QLibrary m_library;
    DriverFunctions m_functions;
};

// The version of Qt that the library was built with: "5.15", or "5" if the file does not say more.
// Empty if the file can't be read or does not use Qt.
QString qtVersionOf(const QString &path);

// The library to load by default: the first that exists in `directory`, `directory`/../driver (a
// build tree) and `directory`/../lib, else the bare name for the system's loader. `directory` is
// that of the executable.
QString findDriver(const QString &directory);

} // namespace kmr
