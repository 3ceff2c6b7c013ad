// Which lines the controller answers, and what each function does, answers and refuses.
#include "simulator/controller.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using simulator::Controller;
using simulator::isStation;
using simulator::Memory;

const char *const SILENCE = "";

Memory bits(const std::vector<int> &addresses)
{
    Memory memory;
    for (const int address : addresses)
        memory.setBit(static_cast<std::uint16_t>(address), true);
    return memory;
}

Memory registers(const std::vector<std::pair<int, std::uint32_t>> &values)
{
    Memory memory;
    for (const auto &[address, value] : values)
        memory.setValue(static_cast<std::uint16_t>(address), value);
    return memory;
}

// `line`, CR LF to be added, and the answer without them.
std::string answerOf(Controller &controller, const std::string &line)
{
    const QByteArray answer = controller.answer(QByteArray::fromStdString(line) + "\r\n");
    return answer.endsWith("\r\n") ? answer.chopped(2).toStdString() : answer.toStdString();
}

std::string times(int count, const char *text)
{
    return QByteArray(text).repeated(count).toStdString();
}

struct Read {
    const char *rule;
    Memory memory;
    std::string request;
    std::string answer;
};

// The memory after a write, if it was empty before.
struct Write {
    const char *rule;
    std::string request;
    std::string answer;
    Memory memory;
};

struct Refusal {
    const char *rule;
    std::string request;
    std::string answer;
};

void expectAnswers(const std::vector<Read> &rows)
{
    for (const Read &row : rows) {
        Controller controller("01");
        controller.memory() = row.memory;
        EXPECT_EQ(answerOf(controller, row.request), row.answer) << row.rule;
        EXPECT_TRUE(controller.memory() == row.memory) << row.rule;
    }
}

void expectWrites(const std::vector<Write> &rows)
{
    for (const Write &row : rows) {
        Controller controller("01");
        EXPECT_EQ(answerOf(controller, row.request), row.answer) << row.rule;
        EXPECT_TRUE(controller.memory() == row.memory) << row.rule;
    }
}

// Refused or ignored, with nothing changed.
void expectRefusals(const std::vector<Refusal> &rows)
{
    for (const Refusal &row : rows) {
        Controller controller("01");
        controller.memory() = bits({0x0500});
        EXPECT_EQ(answerOf(controller, row.request), row.answer) << row.rule << row.request;
        EXPECT_TRUE(controller.memory() == bits({0x0500})) << row.rule << row.request;
    }
}

} // namespace

TEST(Controller, ReadsBits)
{
    expectAnswers({
        {"lowest bit first", bits({0x0400, 0x0402, 0x040F}), ":010204000010E9", ":010202058076"},
        {"32 bits in four bytes", bits({0x0400, 0x0409, 0x0412, 0x041F}), ":010204000020D9",
         ":0102040102048072"},
        {"from any bit", bits({0x0401, 0x0408}), ":010204010008F0", ":010201817B"},
        {"zeros behind the last", bits({0x0400, 0x0401}), ":010204000001F8", ":01020101FB"},
        {"nine in two bytes", bits({0x0407, 0x0408, 0x0409}), ":010204000009F0", ":01020280017A"},
        {"quantity in hexadecimal", {}, ":010204000012E7", ":010203000000FA"},
        {"one", {}, ":010200000001FC", ":01020100FC"},
        {"2000", {}, ":0102000007D026", ":0102FA" + times(250, "00") + "03"},
        {"the last", bits({0xFFFF}), ":0102FFFF0001FE", ":01020101FB"},
        {"up to the last", bits({0xFFFF}), ":0102FFF00010FE", ":01020200807B"},
    });
}

TEST(Controller, ReadsRegisters)
{
    expectAnswers({
        {"high byte first", registers({{0x1064, 0x1234}, {0x1065, 0xABCD}}), ":01031064000286",
         ":0103041234ABCD3A"},
        // A panel that wants 12 words writes "0012" and gets 18.
        {"quantity in hexadecimal", {}, ":010310000012DA", ":010324" + times(36, "00") + "D8"},
        {"counter", registers({{0x0EC8, 0x12345678}}), ":01030EC8000125", ":01030412345678E4"},
        {"two counters", registers({{0x0EC8, 1}, {0x0EC9, 0x80000000}}), ":01030EC8000224",
         ":010308000000018000000073"},
        {"all counters", {}, ":01030EC80038EE", ":0103E0" + times(224, "00") + "1C"},
        {"before the counters", registers({{0x0EC7, 0x1111}}), ":01030EC7000126", ":0103021111D8"},
        {"last counter", registers({{0x0EFF, 0x22222222}}), ":01030EFF0001EE", ":0103042222222270"},
        {"behind the counters", registers({{0x0F00, 0x3333}}), ":01030F000001EC", ":010302333394"},
        {"125", {}, ":01030000007D7F", ":0103FA" + times(250, "00") + "02"},
        {"the last", registers({{0xFFFF, 0x4321}}), ":0103FFFF0001FD", ":010302432196"},
        {"up to the last", registers({{0xFFFF, 0x4321}}), ":0103FFFE0002FD", ":0103040000432194"},
    });
}

TEST(Controller, StrictOneRefusesRegistersThatNoAreaHas)
{
    Controller controller("01", simulator::Registers::OfAreas);
    const std::pair<std::string, std::string> ROWS[] = {
        {":010305FF0001F7", ":0183027A"},       // before TV
        {":010306000001F5", ":0103020000FA"},   // TV 0
        {":01032D0F0001BF", ":0103020000FA"},   // TV 9999
        {":01032D0F0002BE", ":0183027A"},       // and beyond
        {":0103AEDF00016E", ":0103020000FA"},   // D 11999
        {":0110AEE0000102AAAA0A", ":0190026D"}, // beyond D
    };
    for (const auto &[request, answer] : ROWS)
        EXPECT_EQ(answerOf(controller, request), answer);
}

TEST(Controller, WritesABitAndEchoesTheRequest)
{
    expectWrites({
        {"on", ":0105B000FF004B", ":0105B000FF004B", bits({0xB000})},
        {"first", ":01050000FF00FB", ":01050000FF00FB", bits({0x0000})},
        {"last", ":0105FFFFFF00FD", ":0105FFFFFF00FD", bits({0xFFFF})},
    });
    Controller controller("01");
    controller.memory() = bits({0x050E, 0x050F});
    EXPECT_EQ(answerOf(controller, ":0105050F0000E6"), ":0105050F0000E6");
    EXPECT_TRUE(controller.memory() == bits({0x050E}));
}

TEST(Controller, WritesRegistersAndAnswersAddressAndQuantity)
{
    expectWrites({
        {"two", ":0110100A00020412345678BB", ":0110100A0002D3",
         registers({{0x100A, 0x1234}, {0x100B, 0x5678}})},
        {"a counter", ":01100EC80001045678123400", ":01100EC8000118",
         registers({{0x0EC8, 0x56781234}})},
        {"two counters", ":01100EFE0002080000000189ABCDEFE8", ":01100EFE0002E1",
         registers({{0x0EFE, 1}, {0x0EFF, 0x89ABCDEF}})},
        {"the last", ":0110FFFF000102AAAA9A", ":0110FFFF0001F0", registers({{0xFFFF, 0xAAAA}})},
    });
    Controller controller("01");
    EXPECT_EQ(answerOf(controller, ":01101000007BF6" + times(123, "1234") + "CC"),
              ":01101000007B64");
    EXPECT_EQ(controller.memory().value(0x107A), 0x1234U);
    EXPECT_EQ(controller.memory().value(0x107B), 0U);
}

TEST(Controller, RefusesWhatItDoesNotServeAndChangesNothing)
{
    expectRefusals({
        {"no bits", ":010200000000FD", ":0182037A"},
        {"2001 bits", ":0102000007D125", ":0182037A"},
        {"all bits", ":01020000FFFFFF", ":0182037A"},
        {"bits beyond the last", ":0102FFFF0002FD", ":0182027B"},
        {"bits beyond the last", ":0102FFF00011FD", ":0182027B"},
        {"bits: quantity before address", ":0102FFFF07D127", ":0182037A"},
        {"bits: too short", ":0102000000FD", ":0182037A"},
        {"bits: too long", ":01020000000100FC", ":0182037A"},
        {"no registers", ":010300000000FC", ":01830379"},
        {"126 registers", ":01030000007E7E", ":01830379"},
        {"all registers", ":01030000FFFFFE", ":01830379"},
        {"registers beyond the last", ":0103FFFF0002FC", ":0183027A"},
        {"registers: quantity before address", ":0103FFFF007E80", ":01830379"},
        {"registers: too short", ":0103100000EC", ":01830379"},
        {"registers: too long", ":01031000000100EB", ":01830379"},
        {"counters and others", ":01030EC7000225", ":0183027A"},
        {"counters and others", ":01030EFF0002ED", ":0183027A"},
        {"counters and others", ":01030EC80039ED", ":0183027A"},
        {"counters and others", ":01030EC00048E6", ":0183027A"},
        {"neither on nor off", ":010505000001F4", ":01850377"},
        {"neither on nor off", ":01050500FF01F5", ":01850377"},
        {"neither on nor off", ":01050501FFFFF6", ":01850377"},
        {"bit: too short", ":01050500FFF6", ":01850377"},
        {"bit: too long", ":01050500FF0000F6", ":01850377"},
        // A panel that writes two counters at once announces eight bytes and sends four.
        {"fewer bytes than counted", ":01100EC8000208000400010A", ":0190036C"},
        {"fewer bytes than counted", ":0110100000010212CA", ":0190036C"},
        {"more bytes than counted", ":0110100000010212345640", ":0190036C"},
        {"more bytes than counted", ":01101000000100123498", ":0190036C"},
        {"no byte count", ":011010000001DE", ":0190036C"},
        {"count of another quantity", ":011010000001041234ABCD1C", ":0190036C"},
        {"count of another quantity", ":01101000000202123495", ":0190036C"},
        {"count of a word for a counter", ":01100EC80001021234D0", ":0190036C"},
        {"124 registers", ":01101000007CF8" + times(124, "1234") + "83", ":0190036C"},
        {"write of none", ":01101000000000DF", ":0190036C"},
        {"write beyond the last", ":0110FFFF000204AAAABBBB21", ":0190026D"},
        {"write of counters and others", ":01100EC700020411112222AE", ":0190026D"},
        {"write of counters and others", ":01100EFF00020811111111222222220C", ":0190026D"},
        {"write: count before address", ":0110FFFF000202AAAA99", ":0190036C"},
        {"write: count before address", ":01100EC700020611112222222268", ":0190036C"},
        {"other functions", ":0100FF", ":0180017E"},
        {"other functions", ":010100000001FD", ":0181017D"},
        {"other functions", ":010400000001FA", ":0184017A"},
        {"other functions", ":010610000001E8", ":01860178"},
        {"other functions", ":010F000000010101ED", ":018F016F"},
        {"other functions", ":017F80", ":01FF01FF"},
        {"its own refusal", ":0183027A", ":0183017B"},
        {"no data", ":0102FD", ":0182037A"},
        {"no data", ":0103FC", ":01830379"},
        {"no data", ":0105FA", ":01850377"},
        {"no data", ":0110EF", ":0190036C"},
    });
}

TEST(Controller, IsSilentToBadLinesAndOtherStations)
{
    expectRefusals({
        {"no colon", "010310000001EB", SILENCE},
        {"wrong LRC", ":010310000001EC", SILENCE},
        {"write with a wrong LRC", ":01050501FF00F6", SILENCE},
        {"no digits", ":0103100000G1EB", SILENCE},
        {"station and LRC alone", ":01FF", SILENCE},
        {"longer than any line", ":0110" + times(1014, "0") + "EF00", SILENCE},
        {"station 02", ":020310000001EA", SILENCE},
        {"station 11", ":110310000001DB", SILENCE},
        {"write to station 02", ":02050501FF00F4", SILENCE},
        {"broadcast that is refused", ":0007F9", SILENCE},
        {"broadcast that is refused", ":00050501FF01F5", SILENCE},
        {"broadcast that reads", ":000310000001EC", SILENCE},
    });
    Controller controller("01");
    EXPECT_TRUE(controller.answer(":010310000001EB").isEmpty());
}

TEST(Controller, ObeysABroadcastInSilence)
{
    expectWrites({
        {"bit", ":00050500FF00F7", SILENCE, bits({0x0500})},
        {"register", ":00101000000102123497", SILENCE, registers({{0x1000, 0x1234}})},
    });
}

TEST(Station, IsComparedAsTheTwoCharactersOnTheWire)
{
    Controller controller("12");
    EXPECT_EQ(answerOf(controller, ":120310000001DA"), ":1203020000E9");
    EXPECT_EQ(answerOf(controller, ":0C0310000001E0"), SILENCE); // 12 in hexadecimal
    Controller last("F7");
    EXPECT_EQ(answerOf(last, ":F70310000001F5"), ":F70302000004");
}

TEST(Station, IsTwoUpperCaseDigitsFrom01ToF7)
{
    for (const char *text : {"01", "12", "99", "0A", "F7"})
        EXPECT_TRUE(isStation(text)) << text;
    for (const char *text :
         {"00", "F8", "FF", "", "1", "001", "123", "1a", "+1", "-1", " 1", "1 ", "G1", "0x1"})
        EXPECT_FALSE(isStation(text)) << text;
}
