// Makes exchanges that read 8 words in turn, so that an emulator can count their instructions.
//   exchanges AREAS EXCHANGES    AREAS: words in the store, a multiple of 8, at most 8192
#include "ostrel_kmr.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    const int areas = argc > 1 ? atoi(argv[1]) : 8;
    const int exchanges = argc > 2 ? atoi(argv[2]) : 1;
    qint32 result = 0;
    intf_initProperty(nullptr, nullptr, nullptr, &result, "1#0#0#3#8", nullptr);
    QList<KEY_ADDRESS> keys;
    for (int first = 0; first < areas; first += 8) {
        KEY_ADDRESS key;
        key.station = 1;
        key.area = QString::fromLatin1("D");
        key.address = first;
        key.count = 8;
        keys.append(key);
    }
    intf_addrMerge(keys);
    FRAME_PRO request;
    QString error;
    for (int i = 0; i < exchanges; ++i) {
        QByteArray reply(":01031000000000000000000000000000000000EC\r\n"); // 8 words, all 0
        if (intf_getSendFrame(&request) != 1 || intf_dealRcvFrame(reply, error) != 1) {
            fprintf(stderr, "exchange %d failed\n", i);
            return 1;
        }
    }
    return 0;
}
