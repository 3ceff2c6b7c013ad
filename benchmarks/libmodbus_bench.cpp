// The same read of 8 words with libmodbus, in RTU, over a descriptor that does not exist. write,
// select and read are replaced for this descriptor, so that no system call is timed.
#include "benchmarks/panel.h"

#include <benchmark/benchmark.h>

#include <modbus.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

const int WIRE = 1000; // below FD_SETSIZE and never opened

const quint8 REQUEST[] = {0x01, 0x03, 0x10, 0x00, 0x00, 0x08, 0x40, 0xCC};
const quint8 REPLY[] = {0x01, 0x03, 0x10, 0, 1, 0, 2, 0, 3,    0,   4,
                        0,    5,    0,    6, 0, 7, 0, 8, 0x72, 0x98};

quint8 sent[sizeof REQUEST];
size_t taken = 0; // of the reply

} // namespace

extern "C" ssize_t write(int descriptor, const void *bytes, size_t size)
{
    if (descriptor != WIRE)
        return syscall(SYS_write, descriptor, bytes, size);
    memcpy(sent, bytes, std::min(size, sizeof sent));
    taken = 0;
    return static_cast<ssize_t>(size);
}

extern "C" int select(int end, fd_set *readable, fd_set *writable, fd_set *failed, timeval *timeout)
{
    if (end != WIRE + 1)
        return static_cast<int>(syscall(SYS_select, end, readable, writable, failed, timeout));
    return 1;
}

extern "C" ssize_t read(int descriptor, void *bytes, size_t size)
{
    if (descriptor != WIRE)
        return syscall(SYS_read, descriptor, bytes, size);
    const size_t given = std::min(size, sizeof REPLY - taken);
    memcpy(bytes, REPLY + taken, given);
    taken += given;
    return static_cast<ssize_t>(given);
}

namespace {

void libmodbusRead(benchmark::State &state)
{
    const std::unique_ptr<modbus_t, decltype(&modbus_free)> line(
        modbus_new_rtu("/dev/null", 115200, 'N', 8, 1), modbus_free);
    bench::require(line != nullptr, "libmodbus has a line");
    modbus_set_slave(line.get(), 1);
    modbus_set_socket(line.get(), WIRE);

    uint16_t values[8] = {};
    bench::require(modbus_read_registers(line.get(), 0x1000, 8, values) == 8, "8 words are read");
    bench::require(memcmp(sent, REQUEST, sizeof sent) == 0, "the request");
    bench::require(std::vector<int>(values, values + 8) == bench::READ_8_VALUES, "the values");
    for (auto _ : state)
        benchmark::DoNotOptimize(modbus_read_registers(line.get(), 0x1000, 8, values));
}
BENCHMARK(libmodbusRead)->Name("peer/libmodbus_rtu");

} // namespace
