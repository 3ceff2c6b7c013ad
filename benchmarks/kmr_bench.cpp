// Runs the benchmarks; see --help. The report names the versions given here.
#include <QtGlobal>
#include <benchmark/benchmark.h>
#include <modbus.h>

int main(int argc, char **argv)
{
    benchmark::AddCustomContext("compiler", __VERSION__);
    benchmark::AddCustomContext("qt", qVersion());
    benchmark::AddCustomContext("libmodbus", LIBMODBUS_VERSION_STRING);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
