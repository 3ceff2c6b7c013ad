// A library with two of a driver's names.
extern "C" __attribute__((visibility("default"))) void intf_getProtocolType(int *type)
{
    *type = 0;
}

extern "C" __attribute__((visibility("default"))) int intf_getSendFrame(void *)
{
    return 0;
}
