// Linked to the installed driver: prints its areas.
#include <ostrel_kmr.h>

#include <cstdio>

int main()
{
    QStringList areas;
    intf_getRegListByType(1, areas);
    std::printf("%s\n", qPrintable(areas.join(QLatin1String(","))));
    return 0;
}
