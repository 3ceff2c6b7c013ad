// The driver's functions linked into the program, with the members of LoadedDriver. Its state is
// that of a library just loaded.
#pragma once

#include "driver/ostrel_kmr.h"

struct LinkedDriver {
    LinkedDriver()
    {
        driver = Ostrel_kmr();
    }

    decltype(&intf_getProtocolType) getProtocolType = intf_getProtocolType;
    decltype(&intf_getDriverParameter) getDriverParameter = intf_getDriverParameter;
    decltype(&intf_getDriverPropertyPage) getDriverPropertyPage = intf_getDriverPropertyPage;
    decltype(&intf_SetDriverPropertyPage) SetDriverPropertyPage = intf_SetDriverPropertyPage;
    decltype(&intf_setAddrValueChangeCallBack) setAddrValueChangeCallBack =
        intf_setAddrValueChangeCallBack;
    decltype(&intf_initProperty) initProperty = intf_initProperty;
    decltype(&intf_setRcpAddress) setRcpAddress = intf_setRcpAddress;
    decltype(&intf_checkAddrValidity) checkAddrValidity = intf_checkAddrValidity;
    decltype(&intf_checkAddr) checkAddr = intf_checkAddr;
    decltype(&intf_getRegDiscription) getRegDiscription = intf_getRegDiscription;
    decltype(&intf_getRegListByType) getRegListByType = intf_getRegListByType;
    decltype(&intf_multiCopy) multiCopy = intf_multiCopy;
    decltype(&intf_addrMerge) addrMerge = intf_addrMerge;
    decltype(&intf_addConditionRead) addConditionRead = intf_addConditionRead;
    decltype(&intf_getSendFrame) getSendFrame = intf_getSendFrame;
    decltype(&intf_dealRcvFrame) dealRcvFrame = intf_dealRcvFrame;
    decltype(&intf_getData) getData = intf_getData;
    decltype(&intf_setData) setData = intf_setData;
};
