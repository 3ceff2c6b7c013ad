// What the controller reports to its observer, and its text.
#include "simulator/exchange.h"

#include "modbus/protocol.h"
#include "simulator/controller.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using simulator::Exchange;
using simulator::Outcome;

class Observed : public testing::Test {
protected:
    Observed()
    {
        controller.setObserver([this](const Exchange &exchange) { exchanges.push_back(exchange); });
    }

    // What the observer was told about `line`, CR LF to be added.
    Exchange exchangeOf(const char *line)
    {
        controller.answer(line + QByteArray("\r\n"));
        return exchanges.empty() ? Exchange() : exchanges.back();
    }

    simulator::Controller controller{"12"};
    std::vector<Exchange> exchanges;
};

} // namespace

TEST_F(Observed, ReadHoldsRequestAndAnswer)
{
    const Exchange exchange = exchangeOf(":12031064000275");
    EXPECT_EQ(exchanges.size(), 1U);
    EXPECT_EQ(exchange.line, QByteArray(":12031064000275\r\n"));
    EXPECT_EQ(exchange.answer, QByteArray(":12030400000000E7\r\n"));
    EXPECT_EQ(exchange.outcome, Outcome::Executed);
    EXPECT_EQ(exchange.fault, modbus::LineFault::None);
    EXPECT_EQ(exchange.exception, 0);
    EXPECT_EQ(exchange.station, 0x12);
    EXPECT_EQ(exchange.function, 0x03);
    EXPECT_EQ(exchange.address, 0x1064);
    EXPECT_EQ(exchange.quantity, 2);
}

TEST_F(Observed, RefusalHoldsItsException)
{
    const Exchange exchange = exchangeOf(":1203FFFF0002EB");
    EXPECT_EQ(exchange.outcome, Outcome::Refused);
    EXPECT_EQ(exchange.exception, modbus::ILLEGAL_DATA_ADDRESS);
    EXPECT_EQ(exchange.answer, QByteArray(":12830269\r\n"));
}

TEST_F(Observed, BadLineHoldsItsFaultAndNothingElse)
{
    const Exchange exchange = exchangeOf(":120310640002FF");
    EXPECT_EQ(exchange.outcome, Outcome::BadLine);
    EXPECT_EQ(exchange.fault, modbus::LineFault::WrongLrc);
    EXPECT_EQ(exchange.line, QByteArray(":120310640002FF\r\n"));
    EXPECT_EQ(exchange.station, 0);
    EXPECT_TRUE(exchange.answer.isEmpty());
}

TEST_F(Observed, OtherStationsLineIsDecodedAndUnanswered)
{
    const Exchange exchange = exchangeOf(":01050500FF00F6");
    EXPECT_EQ(exchange.outcome, Outcome::OtherStation);
    EXPECT_EQ(exchange.station, 0x01);
    EXPECT_EQ(exchange.address, 0x0500);
    EXPECT_TRUE(exchange.answer.isEmpty());
}

TEST_F(Observed, FieldsThatTheLineIsTooShortForAreZero)
{
    EXPECT_EQ(exchangeOf(":1203EB").address, 0);
    EXPECT_EQ(exchangeOf(":1203EB").quantity, 0);
    EXPECT_EQ(exchangeOf(":1203106477").address, 0x1064);
    EXPECT_EQ(exchangeOf(":1203106477").quantity, 0);
}

TEST_F(Observed, IsToldWhenItIsDoneAndBeforeTheAnswerIsHandedOut)
{
    bool told = false;
    controller.setObserver([&](const Exchange &exchange) {
        told = true;
        EXPECT_TRUE(controller.memory().bit(0x0500));
        EXPECT_EQ(exchange.answer, QByteArray(":12050500FF00E5\r\n"));
    });
    controller.answer(":12050500FF00E5\r\n");
    EXPECT_TRUE(told);
    controller.setObserver(nullptr); // and no more
    controller.answer(":12050500FF00E5\r\n");
}

TEST_F(Observed, HasWordsForEveryExchange)
{
    static const struct {
        const char *line;
        const char *words;
    } ROWS[] = {
        {":1203106400086F", "station 12: read 8 registers from 1064, answered"},
        {":120204000010D8", "station 12: read 16 bits from 0400, answered"},
        {":12050500FF00E5", "station 12: write bit 0500 on, answered"},
        {":1205050F0000D5", "station 12: write bit 050F off, answered"},
        {":1210100000010200FFCC", "station 12: write 1 register from 1000, answered"},
        {":1207E7", "station 12: function 07, refused: illegal function"},
        {":1203FFFF0002EB",
         "station 12: read 2 registers from FFFF, refused: illegal data address"},
        {":1205050012349E", "station 12: write bit 0500 1234, refused: illegal data value"},
        {":120310640002FF", "bad line ignored: wrong LRC"},
        {":01031064000286", "station 01: read 2 registers from 1064, ignored"},
        {":00050500FF00F7", "all stations: write bit 0500 on, executed"},
        {":00031064000188",
         "all stations: read 1 register from 1064, ignored: a read of all stations "
         "gets no answer"},
        {":0007F9", "all stations: function 07, refused: illegal function"},
    };
    for (const auto &row : ROWS)
        EXPECT_EQ(describe(exchangeOf(row.line)).toStdString(), row.words);
}
