// Runs the host library and the driver on a line with faults, and proves that
// - no value counts as good that the controller did not hold during its exchange,
//   A stray answer may come twice, or late by up to 20 timeouts; several at once may show a false
//   value until its next read, which --many would find,
// - a write that was acknowledged is in the controller's memory, and the controller carries out
//   only the request that the user is waiting for, with its value,
// - a request is given up after exactly the set number of bad exchanges, and that is reported,
// - all values are good and current one poll cycle after the faults stop,
// - the memory in use does not grow.
//
// All kinds of fault act at once, except those that can't be detected on a line whose
// messages have no number:
// - An answer later than three timeouts, after the answer to the second attempt: the host
//   waits no longer for it. Late answers here come within two and a half timeouts.
// - An echo now and then while bits are written: a bit write's answer equals its echo. So bits are
//   written on lines that always or never echo, and a line that echoes now and then sees only
//   words written.
// - A doubled character in an echo that comes now and then: it may make the echo of a bit read look
//   like an answer, as in ":01020400000020D9". Such a line doubles none.
// - Two damages in one answer, which may make it another valid one: the LRC has only eight bits.
//   The simulator never does this.
#include "host/driver_library.h"
#include "host/error.h"
#include "host/line/link.h"
#include "host/session/read_once.h"
#include "host/session/recipe_transfer.h"
#include "host/session/request_ranges.h"
#include "host/session/session.h"
#include "modbus/ascii.h"
#include "modbus/protocol.h"
#include "tests/soak/judge.h"
#include "tests/soak/plant.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QFile>
#include <QThread>

#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <random>
#include <string>
#include <unistd.h>

namespace soak {

namespace {

using namespace std::chrono_literals;
using simulator::Fault;
using simulator::FaultKind;

constexpr auto TIMEOUT = 20ms;
constexpr int LATE = 30;      // ms: more than one timeout, less than two
constexpr int VERY_LATE = 45; // more than two
constexpr int PAUSE = 8;      // ms between pieces
constexpr int CLOSED = 3;     // ms
constexpr int RETRIES = 1;
constexpr double PROBABILITY = 0.005; // of each fault
constexpr std::uint64_t ROUND_EXCHANGES = 500;
constexpr std::size_t MAX_GROWTH = 32 * 1024; // bytes in use
constexpr std::size_t MAX_RESIDENT_GROWTH = 4 * 1024 * 1024;

#ifdef KMR_SANITIZE
constexpr bool COUNTS_MEMORY = false; // the sanitizer has an allocator and a leak check of its own
#else
constexpr bool COUNTS_MEMORY = true;
#endif

// How the line of one round treats requests.
enum class EchoHabit { Never, Always, Sometimes };

std::vector<Fault> faultsOf(EchoHabit habit, bool isFaulty)
{
    std::vector<Fault> faults;
    if (habit == EchoHabit::Always)
        faults.push_back({FaultKind::Echo});
    if (!isFaulty)
        return faults;
    for (const FaultKind kind :
         {FaultKind::Deaf, FaultKind::Silence, FaultKind::Station, FaultKind::Long,
          FaultKind::NoLineFeed, FaultKind::Noise, FaultKind::Lose, FaultKind::Flip})
        faults.push_back({kind, 0, 1, PROBABILITY});
    faults.push_back({FaultKind::Exception, 6, 1, PROBABILITY});
    faults.push_back({FaultKind::Late, LATE, 1, PROBABILITY});
    faults.push_back({FaultKind::Late, VERY_LATE, 1, PROBABILITY});
    faults.push_back({FaultKind::Pieces, PAUSE, 1, PROBABILITY});
    faults.push_back({FaultKind::Close, CLOSED, 1, PROBABILITY / 2});
    faults.push_back({FaultKind::Silence, 0, 331, 1}); // by count
    faults.push_back(
        {habit == EchoHabit::Sometimes ? FaultKind::Echo : FaultKind::Double, 0, 1, PROBABILITY});
    return faults;
}

struct MemoryUse {
    std::size_t heap = 0;     // bytes in use
    std::size_t resident = 0; // bytes
};

MemoryUse memoryUse()
{
    QFile file("/proc/self/statm");
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const auto pages = file.readAll().split(' ').at(1).toULongLong();
    return {mallinfo2().uordblks, pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE))};
}

QByteArray word(std::uint32_t value)
{
    return QByteArray(1, static_cast<char>(value >> 8)) + static_cast<char>(value);
}

// The request that writes `value` to a cell, or to its bit where `bit` is not negative.
QByteArray writeLine(const Cell &cell, std::uint32_t value, int bit = -1)
{
    QByteArray message("\x01", 1);
    if (bit >= 0) {
        message += static_cast<char>(modbus::WRITE_SINGLE_COIL);
        message += word(cell.address + static_cast<std::uint32_t>(bit));
        message += word(value != 0 ? modbus::COIL_ON : modbus::COIL_OFF);
    } else {
        message += static_cast<char>(modbus::WRITE_MULTIPLE_REGISTERS);
        message += word(cell.address) + word(1);
        if (cell.kind == CellKind::Counter)
            message += '\x04' + word(value >> 16) + word(value);
        else
            message += '\x02' + word(value);
    }
    return modbus::encodeLine(message);
}

// The request that writes words to the cells from `first` on.
QByteArray writeWords(const Cell &first, const std::vector<std::uint32_t> &values)
{
    const auto count = static_cast<std::uint32_t>(values.size());
    QByteArray message("\x01", 1);
    message += static_cast<char>(modbus::WRITE_MULTIPLE_REGISTERS);
    message += word(first.address) + word(count) + static_cast<char>(2 * count);
    for (const std::uint32_t value : values)
        message += word(value);
    return modbus::encodeLine(message);
}

// A host and its user, on a line with faults.
class Soak {
public:
    Soak(const kmr::DriverFunctions &driver, Plant::Link link, std::uint64_t seed,
         const StraySettings &strays)
        : m_driver(driver), m_strays(strays), m_random(seed), m_plant(link, m_cells, seed),
          m_judge(m_plant, m_cells, tags(), RETRIES),
          m_ranges(
              kmr::readRanges(tags(), kmr::SessionSettings().groupLimit, kmr::Neighbours::Unlike))
    {
    }

    Judge &judge()
    {
        return m_judge;
    }
    std::uint64_t reconnections() const
    {
        return m_reconnections;
    }
    std::uint64_t acknowledged() const
    {
        return m_acknowledged;
    }
    int strayed()
    {
        return m_plant.strays();
    }
    std::uint64_t transfers() const
    {
        return m_transfers;
    }

    // One line: faults for a while, then a cycle without.
    void round(EchoHabit habit)
    {
        m_habit = habit;
        m_plant.set(faultsOf(habit, m_strays.probability == 0), m_random(), true, m_strays);
        connect();
        const std::uint64_t end = m_judge.exchanges() + ROUND_EXCHANGES;
        while (m_judge.exchanges() < end && m_judge.faults().isEmpty())
            act();
        m_plant.set(faultsOf(habit, false), 0, false);
        if (kmr::isLost(*m_device))
            connect();
        for (int pass = 0; pass < 3; ++pass) { // answers may still be out of step
            for (std::size_t i = 0; i < m_ranges.size(); ++i)
                m_session->step();
            m_session->confirm();
        }
        m_judge.demandAllCurrent();
        disconnect();
        m_judge.forget(); // how much is kept must not count as growth
        m_plant.finish();
    }

private:
    std::vector<kmr::Tag> tags() const
    {
        const kmr::TagReader reader(m_driver, 1);
        std::vector<kmr::Tag> list;
        for (const Cell &cell : m_cells)
            list.push_back(reader.read(cell.tag));
        return list;
    }

    void disconnect()
    {
        m_session.reset();
        m_device.reset();
    }

    // Begins again, as a host whose line was lost. The line may be closed for a moment.
    void connect()
    {
        disconnect();
        const kmr::LinkAddress address = kmr::parseLink(m_plant.link());
        for (int attempt = 0; !m_device; ++attempt) {
            try {
                m_device = kmr::openLink(address, 5s, m_stop);
            } catch (const kmr::Error &error) {
                if (attempt == 5000)
                    throw;
                QThread::msleep(1);
            }
        }
        kmr::SessionSettings settings;
        settings.poll.timeout = TIMEOUT;
        settings.poll.echo =
            m_habit == EchoHabit::Sometimes ? kmr::EchoMode::Off : kmr::EchoMode::Auto;
        settings.retries = RETRIES;
        m_session =
            std::make_unique<kmr::Session>(m_driver, *m_device, settings, m_stop, m_plant.clock());
        m_judge.watch(*m_session);
        m_session->poll(m_ranges);
    }

    int random(int below)
    {
        return static_cast<int>(m_random() % static_cast<std::uint64_t>(below));
    }

    // A cell of the owner's, of any kind.
    std::size_t randomCell(Owner owner)
    {
        for (;;) {
            const std::size_t cell = m_random() % m_cells.size();
            if (m_cells[cell].owner == owner)
                return cell;
        }
    }

    void act()
    {
        const int choice = random(100);
        if (choice < 70)
            m_session->step();
        else if (choice < 78)
            read();
        else if (choice < 80)
            readAllOfHosts();
        else if (choice < 81)
            pollOneBlock();
        else if (choice < 83)
            transfer();
        else
            write(randomCell(Owner::Host));
        if (kmr::isLost(*m_device)) {
            ++m_reconnections;
            connect();
        }
    }

    void read()
    {
        const std::size_t index = randomCell(random(2) == 0 ? Owner::Host : Owner::Controller);
        m_judge.begin({});
        const kmr::ElementRange run{1, m_cells[index].area, m_cells[index].number,
                                    m_cells[index].kind == CellKind::Bits ? 16 : 1};
        m_judge.end(m_session->readOnce(run), {});
    }

    // As `kmr read` does, which polls the bits.
    void readAllOfHosts()
    {
        const std::vector<std::size_t> cells = hostsCells();
        std::vector<kmr::Tag> chosen;
        for (const std::size_t cell : cells)
            chosen.push_back(tags()[cell]);
        m_judge.begin({});
        const std::vector<kmr::Reading> readings = kmr::readNow(*m_session, chosen);
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (readings[i].result.isDone())
                m_judge.checkCertain({{cells[i], fromElements(readings[i].values)}});
        }
        m_session->poll(m_ranges);
    }

    void pollOneBlock()
    {
        m_session->poll({m_ranges[m_random() % m_ranges.size()]});
        for (int i = 0; i < 10; ++i)
            m_session->step();
        m_session->confirm();
        m_session->poll(m_ranges);
    }

    void transfer()
    {
        std::vector<std::size_t> cells;
        std::vector<kmr::RecipeItem> items;
        for (const std::size_t cell : hostsCells()) {
            if (m_cells[cell].kind == CellKind::Bits || random(2) == 0)
                continue;
            const std::uint32_t value =
                m_cells[cell].mark | static_cast<std::uint32_t>(random(256));
            cells.push_back(cell);
            items.push_back({tags()[cell], {value}});
        }
        const bool isDownload = random(2) == 0;
        std::vector<std::size_t> ends{0};
        m_judge.begin(isDownload ? linesOf(cells, items, ends) : std::vector<QByteArray>(), true);
        const kmr::TransferResult result =
            isDownload ? kmr::download(*m_session, items) : kmr::upload(*m_session, items);
        const std::size_t certain = isDownload ? ends.at(static_cast<std::size_t>(result.finished))
                                               : (result.result.isDone() ? cells.size() : 0);
        Judge::CellValues values;
        for (std::size_t i = 0; i < certain; ++i)
            values.emplace_back(cells[i], fromElements(items[i].values));
        m_judge.end(result.result, values);
        m_transfers += result.result.isDone() ? 1 : 0;
    }

    // The requests of a download, one for neighbouring words. `ends` receives for each how many
    // cells are written after it.
    std::vector<QByteArray> linesOf(const std::vector<std::size_t> &cells,
                                    const std::vector<kmr::RecipeItem> &items,
                                    std::vector<std::size_t> &ends) const
    {
        std::vector<QByteArray> lines;
        for (std::size_t begin = 0; begin < cells.size(); begin = ends.back()) {
            const Cell &first = m_cells[cells[begin]];
            std::vector<std::uint32_t> values{fromElements(items[begin].values)};
            std::size_t end = begin + 1;
            for (; first.kind == CellKind::Word && end < cells.size() &&
                   m_cells[cells[end]].address == first.address + (end - begin);
                 ++end)
                values.push_back(fromElements(items[end].values));
            lines.push_back(first.kind == CellKind::Word ? writeWords(first, values)
                                                         : writeLine(first, values.front()));
            ends.push_back(end);
        }
        return lines;
    }

    std::vector<std::size_t> hostsCells() const
    {
        std::vector<std::size_t> list;
        for (std::size_t i = 0; i < m_cells.size(); ++i) {
            if (m_cells[i].owner == Owner::Host)
                list.push_back(i);
        }
        return list;
    }

    void write(std::size_t index)
    {
        const Cell &cell = m_cells[index];
        if (cell.kind == CellKind::Bits) {
            if (m_habit != EchoHabit::Sometimes)
                writeBit(index);
            return;
        }
        const std::uint32_t value = cell.mark | static_cast<std::uint32_t>(random(256));
        m_judge.begin({writeLine(cell, value)});
        end(m_session->write({1, cell.area, cell.number, 1}, {value}), index, value);
    }

    void writeBit(std::size_t index)
    {
        const Cell &cell = m_cells[index];
        const int bit = random(8);
        const auto value = static_cast<std::uint32_t>(random(2));
        const std::uint32_t others = m_plant.value(index) & ~(1U << bit);
        m_judge.begin({writeLine(cell, value, bit)});
        end(m_session->write({1, cell.area, cell.number + bit, 1}, {value}), index,
            others | value << bit);
    }

    void end(const kmr::RequestResult &result, std::size_t cell, std::uint32_t value)
    {
        m_judge.end(result,
                    result.isDone() ? Judge::CellValues{{cell, value}} : Judge::CellValues());
        m_acknowledged += result.isDone() ? 1 : 0;
    }

    const kmr::DriverFunctions &m_driver;
    const StraySettings m_strays;
    const std::vector<Cell> m_cells = makeCells();
    std::mt19937_64 m_random;
    Plant m_plant;
    Judge m_judge;
    const std::vector<kmr::ElementRange> m_ranges;
    const std::atomic<bool> m_stop{false};
    EchoHabit m_habit = EchoHabit::Never;
    std::unique_ptr<QIODevice> m_device;
    std::unique_ptr<kmr::Session> m_session;
    std::uint64_t m_reconnections = 0;
    std::uint64_t m_acknowledged = 0;
    std::uint64_t m_transfers = 0;
};

void checkGrowth(const MemoryUse &early, const MemoryUse &late, Judge &judge)
{
    std::printf("memory: %zu bytes in use after a fifth, %zu at the end; resident %zu and %zu kB\n",
                early.heap, late.heap, early.resident / 1024, late.resident / 1024);
    if (COUNTS_MEMORY && (late.heap > early.heap + MAX_GROWTH ||
                          late.resident > early.resident + MAX_RESIDENT_GROWTH))
        judge.blame("the memory grows");
}

// The allocator keeps free blocks for each thread, which count as in use. It can be told not to
// only when a program begins, so this one begins again.
void countMemoryExactly(char *argv[])
{
    constexpr const char *TUNABLES = "GLIBC_TUNABLES";
    if (getenv(TUNABLES))
        return;
    setenv(TUNABLES, "glibc.malloc.tcache_count=0", 1);
    execv("/proc/self/exe", argv);
}

// Returns the exit code.
int run(Plant::Link link, std::uint64_t exchanges, std::uint64_t seed, const StraySettings &strays)
{
    const kmr::DriverLibrary library(DRIVER_LIBRARY);
    Soak soak(library.functions(), link, seed, strays);
    Judge &judge = soak.judge();
    std::optional<MemoryUse> early;
    for (int round = 0; judge.exchanges() < exchanges && judge.faults().isEmpty(); ++round) {
        constexpr EchoHabit HABITS[] = {EchoHabit::Never, EchoHabit::Always, EchoHabit::Sometimes};
        soak.round(HABITS[round % 3]);
        if (!early && judge.exchanges() >= exchanges / 5)
            early = memoryUse();
    }
    if (early)
        checkGrowth(*early, memoryUse(), judge);
    if (strays.probability > 0 && soak.strayed() == 0)
        judge.blame("no answer strayed");
    std::printf("%llu values confirmed, %d stray answers\n",
                static_cast<unsigned long long>(judge.confirmed()), soak.strayed());
    std::printf("%llu exchanges, %llu given up, %llu writes acknowledged, %llu recipes, "
                "%llu new connections\n",
                static_cast<unsigned long long>(judge.exchanges()),
                static_cast<unsigned long long>(judge.givenUp()),
                static_cast<unsigned long long>(soak.acknowledged()),
                static_cast<unsigned long long>(soak.transfers()),
                static_cast<unsigned long long>(soak.reconnections()));
    for (const QString &fault : judge.faults())
        std::printf("WRONG %s\n", qPrintable(fault));
    std::printf("%s\n", judge.faults().isEmpty() ? "passed" : "FAILED");
    return judge.faults().isEmpty() ? 0 : 1;
}

} // namespace

} // namespace soak

int main(int argc, char *argv[])
{
    soak::countMemoryExactly(argv);
    const QCoreApplication application(argc, argv);
    std::uint64_t exchanges = 10000;
    std::uint64_t seed = 1;
    std::string link = "tcp";
    soak::StraySettings strays;
    strays.timeout = soak::TIMEOUT;
    bool areMany = false;
    CLI::App app("Soaks the host and the driver in faults of the line.");
    app.add_option("--exchanges", exchanges, "requests to send, at least")->capture_default_str();
    app.add_option("--seed", seed, "draws faults, reads and writes")->capture_default_str();
    app.add_option("--link", link, "tcp or pty")
        ->check(CLI::IsMember({"tcp", "pty"}))
        ->capture_default_str();
    app.add_option(
           "--strays", strays.probability,
           "instead of other faults: share of the answers that come twice, late or together")
        ->check(CLI::Range(0.0, 1.0));
    app.add_flag("--many", areMany, "several strays at once");
    CLI11_PARSE(app, argc, argv);
    strays.isAlone = !areMany;
    std::printf("soak: --link %s --exchanges %llu --seed %llu\n", link.c_str(),
                static_cast<unsigned long long>(exchanges), static_cast<unsigned long long>(seed));
    std::fflush(stdout);
    try {
        return soak::run(link == "tcp" ? soak::Plant::Link::Tcp : soak::Plant::Link::Pty, exchanges,
                         seed, strays);
    } catch (const kmr::Error &error) {
        std::printf("FAILED: %s\n", qPrintable(error.text()));
        return 1;
    }
}
