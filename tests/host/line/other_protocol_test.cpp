#include "host/line/other_protocol.h"

#include <gtest/gtest.h>

namespace kmr {
namespace {

constexpr OtherProtocol TCP = OtherProtocol::ModbusTcp;
constexpr OtherProtocol RTU = OtherProtocol::ModbusRtu;

} // namespace

TEST(OtherProtocol, RequestReadsOneHoldingRegister)
{
    EXPECT_EQ(registerRequest(TCP, 1).toHex(), "000100000006010300000001");
    EXPECT_EQ(registerRequest(RTU, 1).toHex(), "010300000001840a");
    EXPECT_EQ(registerRequest(RTU, 2).toHex(), "0203000000018439");
}

TEST(OtherProtocol, OnlyAWholeAnswerOrRefusalToTheRequestCounts)
{
    const struct {
        OtherProtocol protocol;
        const char *received;
        bool isAnswer;
    } ROWS[] = {
        {TCP, "0001000000050103020007", true},
        {TCP, "000100000005ff03020007", true},                         // a unit of its own
        {TCP, "000100000003018302", true},                             // refused
        {TCP, "0001000000060103000000010001000000050103020007", true}, // echo first
        {TCP, "000100000006010300000001", false},                      // only the echo
        {TCP, "00010000000501030200", false},                          // not all of it
        {TCP, "0002000000050103020007", false},                        // another transaction
        {TCP, "000100010005010302000", false},                         // another protocol
        {TCP, "000100000003010302", false},
        {TCP, "", false},
        {RTU, "0103020007f986", true},
        {RTU, "018302c0f1", true},
        {RTU, "010300000001840a0103020007f986", true},
        {RTU, "010300000001840a", false},
        {RTU, "0103020007f987", false},   // wrong CRC
        {RTU, "0203020007bd86", false},   // another station
        {RTU, "0103020007f98600", false}, // something after it
    };
    for (const auto &row : ROWS)
        EXPECT_EQ(isRegisterAnswer(row.protocol, 1, QByteArray::fromHex(row.received)),
                  row.isAnswer)
            << row.received;
}

} // namespace kmr
