// A library with all of a driver's names that says it is built with a Qt that kmr never uses.
extern "C" {
extern const char builtWith[];
const char builtWith[] = "libQt4Core.so";

void intf_getProtocolType() {}
void intf_getDriverParameter() {}
void intf_getDriverPropertyPage() {}
void intf_SetDriverPropertyPage() {}
void intf_setAddrValueChangeCallBack() {}
void intf_initProperty() {}
void intf_setRcpAddress() {}
void intf_checkAddrValidity() {}
void intf_checkAddr() {}
void intf_getRegDiscription() {}
void intf_getRegListByType() {}
void intf_multiCopy() {}
void intf_addrMerge() {}
void intf_addConditionRead() {}
void intf_getSendFrame() {}
void intf_dealRcvFrame() {}
void intf_getData() {}
void intf_setData() {}
}
