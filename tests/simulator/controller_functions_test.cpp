// What each function of the controller does, answers and refuses.
#include "simulator/controller.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using simulator::Memory;

class Function : public testing::Test {
protected:
    std::string answerTo(const QByteArray &line)
    {
        return controller.answer(line).toStdString();
    }

    simulator::Controller controller{"01"};
    Memory &memory = controller.memory();
};

using ReadBits = Function;
using ReadRegisters = Function;
using WriteBit = Function;
using WriteRegisters = Function;

TEST_F(ReadBits, AnswersTheLowestBitFirst)
{
    memory.setBit(0x0400, true);
    memory.setBit(0x0402, true);
    memory.setBit(0x040F, true);
    EXPECT_EQ(answerTo(":010204000010E9\r\n"), ":010202058076\r\n");
}

TEST_F(ReadBits, Answers32BitsInFourBytes)
{
    memory.setBit(0x0400, true);
    memory.setBit(0x0409, true);
    memory.setBit(0x0412, true);
    memory.setBit(0x041F, true);
    EXPECT_EQ(answerTo(":010204000020D9\r\n"), ":0102040102048072\r\n");
}

TEST_F(ReadBits, StartsAtAnyBit)
{
    memory.setBit(0x0401, true);
    memory.setBit(0x0408, true);
    EXPECT_EQ(answerTo(":010204010008F0\r\n"), ":010201817B\r\n");
}

TEST_F(ReadBits, FillsTheLastByteWithZeros)
{
    for (std::uint16_t address = 0x0400; address < 0x0420; ++address)
        memory.setBit(address, true);
    EXPECT_EQ(answerTo(":010204000001F8\r\n"), ":01020101FB\r\n");
    EXPECT_EQ(answerTo(":010204000009F0\r\n"), ":010202FF01FB\r\n");
}

TEST_F(ReadBits, TakesTheQuantityInHexadecimal)
{
    EXPECT_EQ(answerTo(":010204000012E7\r\n"), ":010203000000FA\r\n");
}

TEST_F(ReadBits, Answers1To2000Bits)
{
    const std::string answerTo2000 = ":0102FA" + std::string(500, '0') + "03\r\n";
    EXPECT_EQ(answerTo(":010200000001FC\r\n"), ":01020100FC\r\n");
    EXPECT_EQ(answerTo(":0102000007D026\r\n"), answerTo2000);
}

TEST_F(ReadBits, RefusesNoneAndMoreThan2000Bits)
{
    EXPECT_EQ(answerTo(":010200000000FD\r\n"), ":0182037A\r\n");
    EXPECT_EQ(answerTo(":0102000007D125\r\n"), ":0182037A\r\n");
    EXPECT_EQ(answerTo(":01020000FFFFFF\r\n"), ":0182037A\r\n");
}

TEST_F(ReadBits, EndsAtTheLastAddress)
{
    memory.setBit(0xFFFF, true);
    EXPECT_EQ(answerTo(":0102FFFF0001FE\r\n"), ":01020101FB\r\n");
    EXPECT_EQ(answerTo(":0102FFF00010FE\r\n"), ":01020200807B\r\n");
    EXPECT_EQ(answerTo(":0102FFFF0002FD\r\n"), ":0182027B\r\n");
    EXPECT_EQ(answerTo(":0102FFF00011FD\r\n"), ":0182027B\r\n");
}

TEST_F(ReadBits, ChecksTheQuantityBeforeTheAddress)
{
    EXPECT_EQ(answerTo(":0102FFFF07D127\r\n"), ":0182037A\r\n");
}

TEST_F(ReadBits, RefusesARequestOfAnotherLength)
{
    EXPECT_EQ(answerTo(":0102000000FD\r\n"), ":0182037A\r\n");
    EXPECT_EQ(answerTo(":01020000000100FC\r\n"), ":0182037A\r\n");
}

TEST_F(ReadRegisters, AnswersTheHighByteFirst)
{
    memory.setValue(0x1064, 0x1234);
    memory.setValue(0x1065, 0xABCD);
    EXPECT_EQ(answerTo(":01031064000286\r\n"), ":0103041234ABCD3A\r\n");
}

TEST_F(ReadRegisters, TakesTheQuantityInHexadecimal)
{
    // A panel that wants 12 words writes "0012" and gets 18.
    const std::string answer = ":010324" + std::string(72, '0') + "D8\r\n";
    EXPECT_EQ(answerTo(":010310000012DA\r\n"), answer);
}

TEST_F(ReadRegisters, AnswersFourBytesOfACounter)
{
    memory.setValue(0x0EC8, 0x12345678);
    EXPECT_EQ(answerTo(":01030EC8000125\r\n"), ":01030412345678E4\r\n");
}

TEST_F(ReadRegisters, CountsCounters)
{
    memory.setValue(0x0EC8, 0x00000001);
    memory.setValue(0x0EC9, 0x80000000);
    EXPECT_EQ(answerTo(":01030EC8000224\r\n"), ":010308000000018000000073\r\n");
}

TEST_F(ReadRegisters, AnswersAllCountersAtOnce)
{
    const std::string answer = ":0103E0" + std::string(448, '0') + "1C\r\n";
    EXPECT_EQ(answerTo(":01030EC80038EE\r\n"), answer);
}

TEST_F(ReadRegisters, AnswersTwoBytesBesideTheCounters)
{
    memory.setValue(0x0EC7, 0x1111);
    memory.setValue(0x0EFF, 0x22222222);
    memory.setValue(0x0F00, 0x3333);
    EXPECT_EQ(answerTo(":01030EC7000126\r\n"), ":0103021111D8\r\n");
    EXPECT_EQ(answerTo(":01030EFF0001EE\r\n"), ":0103042222222270\r\n");
    EXPECT_EQ(answerTo(":01030F000001EC\r\n"), ":010302333394\r\n");
}

TEST_F(ReadRegisters, RefusesCountersMixedWithOthers)
{
    EXPECT_EQ(answerTo(":01030EC7000225\r\n"), ":0183027A\r\n");
    EXPECT_EQ(answerTo(":01030EFF0002ED\r\n"), ":0183027A\r\n");
    EXPECT_EQ(answerTo(":01030EC80039ED\r\n"), ":0183027A\r\n");
    EXPECT_EQ(answerTo(":01030EC00048E6\r\n"), ":0183027A\r\n");
}

TEST_F(ReadRegisters, Answers1To125Registers)
{
    const std::string answerTo125 = ":0103FA" + std::string(500, '0') + "02\r\n";
    EXPECT_EQ(answerTo(":010300000001FB\r\n"), ":0103020000FA\r\n");
    EXPECT_EQ(answerTo(":01030000007D7F\r\n"), answerTo125);
}

TEST_F(ReadRegisters, RefusesNoneAndMoreThan125Registers)
{
    EXPECT_EQ(answerTo(":010300000000FC\r\n"), ":01830379\r\n");
    EXPECT_EQ(answerTo(":01030000007E7E\r\n"), ":01830379\r\n");
    EXPECT_EQ(answerTo(":01030000FFFFFE\r\n"), ":01830379\r\n");
}

TEST_F(ReadRegisters, EndsAtTheLastAddress)
{
    memory.setValue(0xFFFF, 0x4321);
    EXPECT_EQ(answerTo(":0103FFFF0001FD\r\n"), ":010302432196\r\n");
    EXPECT_EQ(answerTo(":0103FFFE0002FD\r\n"), ":0103040000432194\r\n");
    EXPECT_EQ(answerTo(":0103FFFF0002FC\r\n"), ":0183027A\r\n");
}

TEST_F(ReadRegisters, ChecksTheQuantityBeforeTheAddress)
{
    EXPECT_EQ(answerTo(":0103FFFF007E80\r\n"), ":01830379\r\n");
}

TEST_F(ReadRegisters, RefusesARequestOfAnotherLength)
{
    EXPECT_EQ(answerTo(":0103100000EC\r\n"), ":01830379\r\n");
    EXPECT_EQ(answerTo(":01031000000100EB\r\n"), ":01830379\r\n");
}

TEST_F(WriteBit, SetsTheBitAndEchoesTheRequest)
{
    EXPECT_EQ(answerTo(":0105B000FF004B\r\n"), ":0105B000FF004B\r\n");
    EXPECT_TRUE(memory.bit(0xB000));
    EXPECT_FALSE(memory.bit(0xAFFF));
    EXPECT_FALSE(memory.bit(0xB001));
}

TEST_F(WriteBit, ClearsTheBitAndEchoesTheRequest)
{
    memory.setBit(0x050F, true);
    EXPECT_EQ(answerTo(":0105050F0000E6\r\n"), ":0105050F0000E6\r\n");
    EXPECT_FALSE(memory.bit(0x050F));
}

TEST_F(WriteBit, ReachesTheFirstAndLastBit)
{
    EXPECT_EQ(answerTo(":01050000FF00FB\r\n"), ":01050000FF00FB\r\n");
    EXPECT_EQ(answerTo(":0105FFFFFF00FD\r\n"), ":0105FFFFFF00FD\r\n");
    EXPECT_TRUE(memory.bit(0x0000));
    EXPECT_TRUE(memory.bit(0xFFFF));
}

TEST_F(WriteBit, IsSeenByTheNextRead)
{
    answerTo(":01050500FF00F6\r\n");
    EXPECT_EQ(answerTo(":010205000010E8\r\n"), ":0102020100FA\r\n");
}

TEST_F(WriteBit, RefusesOtherValuesThanOnAndOff)
{
    memory.setBit(0x0500, true);
    const Memory before = memory;
    EXPECT_EQ(answerTo(":010505000001F4\r\n"), ":01850377\r\n");
    EXPECT_EQ(answerTo(":01050500FF01F5\r\n"), ":01850377\r\n");
    EXPECT_EQ(answerTo(":01050501FFFFF6\r\n"), ":01850377\r\n");
    EXPECT_TRUE(memory == before);
}

TEST_F(WriteBit, RefusesARequestOfAnotherLength)
{
    EXPECT_EQ(answerTo(":01050500FFF6\r\n"), ":01850377\r\n");
    EXPECT_EQ(answerTo(":01050500FF0000F6\r\n"), ":01850377\r\n");
    EXPECT_TRUE(memory == Memory());
}

TEST_F(WriteRegisters, StoresTheWordsAndAnswersAddressAndQuantity)
{
    EXPECT_EQ(answerTo(":0110100A00020412345678BB\r\n"), ":0110100A0002D3\r\n");
    EXPECT_EQ(memory.value(0x1009), 0U);
    EXPECT_EQ(memory.value(0x100A), 0x1234U);
    EXPECT_EQ(memory.value(0x100B), 0x5678U);
    EXPECT_EQ(memory.value(0x100C), 0U);
}

TEST_F(WriteRegisters, AnswersWith17Characters)
{
    EXPECT_EQ(answerTo(":0110100A00020412345678BB\r\n").size(), 17);
}

TEST_F(WriteRegisters, StoresFourBytesOfACounter)
{
    EXPECT_EQ(answerTo(":01100EC80001045678123400\r\n"), ":01100EC8000118\r\n");
    EXPECT_EQ(memory.value(0x0EC8), 0x56781234U);
    EXPECT_EQ(memory.value(0x0EC9), 0U);
}

TEST_F(WriteRegisters, CountsCounters)
{
    EXPECT_EQ(answerTo(":01100EFE0002080000000189ABCDEFE8\r\n"), ":01100EFE0002E1\r\n");
    EXPECT_EQ(memory.value(0x0EFE), 0x00000001U);
    EXPECT_EQ(memory.value(0x0EFF), 0x89ABCDEFU);
}

TEST_F(WriteRegisters, RefusesCountersThatCarryFewerBytesThanAnnounced)
{
    // A panel that writes two counters at once announces eight bytes and sends four.
    EXPECT_EQ(answerTo(":01100EC8000208000400010A\r\n"), ":0190036C\r\n");
    EXPECT_TRUE(memory == Memory());
}

TEST_F(WriteRegisters, RefusesAByteCountThatIsNotThatOfTheQuantity)
{
    EXPECT_EQ(answerTo(":011010000001041234ABCD1C\r\n"), ":0190036C\r\n");
    EXPECT_EQ(answerTo(":01101000000202123495\r\n"), ":0190036C\r\n");
    EXPECT_EQ(answerTo(":01100EC80001021234D0\r\n"), ":0190036C\r\n");
    EXPECT_TRUE(memory == Memory());
}

TEST_F(WriteRegisters, RefusesMoreOrFewerBytesThanTheByteCountSays)
{
    EXPECT_EQ(answerTo(":0110100000010212CA\r\n"), ":0190036C\r\n");
    EXPECT_EQ(answerTo(":0110100000010212345640\r\n"), ":0190036C\r\n");
    EXPECT_EQ(answerTo(":011010000001DE\r\n"), ":0190036C\r\n");
    EXPECT_TRUE(memory == Memory());
}

TEST_F(WriteRegisters, RefusesAByteCountThatTheQuantityAloneWouldAllow)
{
    // Two bytes are there for one register, but the count announces none.
    EXPECT_EQ(answerTo(":01101000000100123498\r\n"), ":0190036C\r\n");
    EXPECT_TRUE(memory == Memory());
}

TEST_F(WriteRegisters, Takes123RegistersAndNoMore)
{
    const QByteArray line123 = ":01101000007BF6" + QByteArray("1234").repeated(123) + "CC\r\n";
    const QByteArray line124 = ":01101000007CF8" + QByteArray("1234").repeated(124) + "83\r\n";
    EXPECT_EQ(answerTo(line124), ":0190036C\r\n");
    EXPECT_TRUE(memory == Memory());
    EXPECT_EQ(answerTo(line123), ":01101000007B64\r\n");
    EXPECT_EQ(memory.value(0x107A), 0x1234U);
    EXPECT_EQ(memory.value(0x107B), 0U);
}

TEST_F(WriteRegisters, RefusesNone)
{
    EXPECT_EQ(answerTo(":01101000000000DF\r\n"), ":0190036C\r\n");
}

TEST_F(WriteRegisters, EndsAtTheLastAddress)
{
    EXPECT_EQ(answerTo(":0110FFFF000204AAAABBBB21\r\n"), ":0190026D\r\n");
    EXPECT_TRUE(memory == Memory());
    EXPECT_EQ(answerTo(":0110FFFF000102AAAA9A\r\n"), ":0110FFFF0001F0\r\n");
    EXPECT_EQ(memory.value(0xFFFF), 0xAAAAU);
}

TEST_F(WriteRegisters, RefusesCountersMixedWithOthers)
{
    EXPECT_EQ(answerTo(":01100EC700020411112222AE\r\n"), ":0190026D\r\n");
    EXPECT_EQ(answerTo(":01100EFF00020811111111222222220C\r\n"), ":0190026D\r\n");
    EXPECT_TRUE(memory == Memory());
}

TEST_F(WriteRegisters, ChecksTheByteCountBeforeTheAddress)
{
    EXPECT_EQ(answerTo(":0110FFFF000202AAAA99\r\n"), ":0190036C\r\n");
    EXPECT_EQ(answerTo(":01100EC700020611112222222268\r\n"), ":0190036C\r\n");
}

TEST_F(WriteRegisters, IsSeenByTheNextRead)
{
    answerTo(":01109000000102BEEFAF\r\n");
    EXPECT_EQ(answerTo(":0103900000016B\r\n"), ":010302BEEF4D\r\n");
}

} // namespace
