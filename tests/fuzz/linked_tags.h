// What reads tags with the driver that is linked.
#pragma once

#include "host/tags/tag.h"

inline const kmr::DriverFunctions &linkedDriver()
{
    static const kmr::DriverFunctions FUNCTIONS = [] {
        kmr::DriverFunctions functions;
        functions.checkAddrValidity = intf_checkAddrValidity;
        functions.checkAddr = intf_checkAddr;
        functions.getRegDiscription = intf_getRegDiscription;
        functions.getRegListByType = intf_getRegListByType;
        return functions;
    }();
    return FUNCTIONS;
}
