#include "modbus/protocol.h"

#include <gtest/gtest.h>

using namespace modbus;

TEST(Protocol, OnlyTheTwoReadingFunctionsRead)
{
    for (int function = 0; function < 256; ++function)
        EXPECT_EQ(isRead(function), function == 0x02 || function == 0x03) << function;
}

TEST(Protocol, ExceptionsThatNoStandardNamesKeepTheirCode)
{
    EXPECT_EQ(exceptionText(0x02), "illegal data address (exception 02)");
    EXPECT_EQ(exceptionText(0x0B), "gateway target device failed to respond (exception 0b)");
    EXPECT_EQ(exceptionText(0x00), "unknown reason (exception 00)");
    EXPECT_EQ(exceptionText(0x07), "unknown reason (exception 07)");
    EXPECT_EQ(exceptionText(0x0C), "unknown reason (exception 0c)");
}
