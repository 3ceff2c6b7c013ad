// The driver's identity and configuration.
#include "driver/ostrel_kmr.h"

#include "driver_fixture.h"

#include <climits>

namespace {

class InitProperty : public DriverTest {
protected:
    using Settings = std::tuple<qint32, qint32, qint32, qint32, qint32>;

    static Settings settings()
    {
        return Settings(driver.devId, driver.writeQueueOff, driver.propToken3, driver.retryLimit,
                        driver.groupLimit);
    }
};

} // namespace

TEST(Identity, IsFixed)
{
    qint32 type = 777;
    intf_getProtocolType(&type);
    EXPECT_EQ(type, 0);
    intf_getProtocolType(nullptr);
    QString text = "before";
    intf_getDriverParameter(text);
    EXPECT_EQ(text, "0,9600,7,EVEN,1,0,1,192.168.0.10,8888,Ostrel_kmr,X,Y,M,S,T,C,TV,CV,CV2,D");
    intf_getDriverPropertyPage(text);
    EXPECT_EQ(text, "0_0");
    intf_SetDriverPropertyPage(text);
    EXPECT_EQ(text, "");
}

TEST_F(InitProperty, StoresTheFirstFivePiecesAsNumbers)
{
    const std::pair<const char *, Settings> rows[] = {
        {"11#12#13#14#5", Settings(11, 12, 13, 14, 5)},
        {"1#2#3#4#5#6#7", Settings(1, 2, 3, 4, 5)},
        {" 1 #+2#-3#\t4#5 ", Settings(1, 2, -3, 4, 5)},
        {"a#1.5#0x10#99999999999#7b", Settings(0, 0, 0, 0, 0)},
        {"#1#2#3#4", Settings(0, 1, 2, 3, 4)},
        {"####", Settings(0, 0, 0, 0, 0)},
        {"1#\xB2#3#4#5", Settings(1, 0, 3, 4, 5)}, // no digit of Latin-1
    };
    for (const auto &[property, expected] : rows) {
        configure(property);
        EXPECT_EQ(settings(), expected) << property;
    }
}

TEST_F(InitProperty, GroupLimitIsAtMostEightAndBitsHaveEightTimesAsMany)
{
    const std::tuple<const char *, qint32, qint32> rows[] = {
        {"1#0#0#3#12", 8, 64}, {"1#0#0#3#9", 8, 64}, {"1#0#0#3#8", 8, 64},   {"1#0#0#3#7", 7, 56},
        {"1#0#0#3#1", 1, 8},   {"1#0#0#3#0", 0, 0},  {"1#0#0#3#-5", -5, -40}};
    for (const auto &[property, words, bits] : rows) {
        configure(property);
        EXPECT_EQ(driver.groupLimit, words) << property;
        EXPECT_EQ(driver.wordGroupLimit, words) << property;
        EXPECT_EQ(driver.bitGroupLimit, bits) << property;
    }
    configure("1#0#0#3#-2147483648");
    EXPECT_EQ(driver.wordGroupLimit, INT_MIN);
    EXPECT_LT(driver.bitGroupLimit, 1);
}

TEST_F(InitProperty, FewerThanFivePiecesKeepTheSettingsAndSetTheGroupingLimits)
{
    configure("11#12#13#14#5");
    driver.wordGroupLimit = driver.bitGroupLimit = 0;
    for (const char *property : {"1#2#3#4", "9", "", static_cast<const char *>(nullptr)}) {
        configure(property);
        EXPECT_EQ(settings(), Settings(11, 12, 13, 14, 5));
        EXPECT_EQ(driver.wordGroupLimit, 5);
        EXPECT_EQ(driver.bitGroupLimit, 40);
    }
}

TEST_F(InitProperty, ReturnsOneAndWritesZeroToTheResult)
{
    for (const char *property : {"1#0#0#3#8", "1#2#3#4", "nonsense"}) {
        qint32 result = 777;
        EXPECT_EQ(intf_initProperty(nullptr, nullptr, nullptr, &result, property, nullptr), 1);
        EXPECT_EQ(result, 0) << property;
    }
    EXPECT_EQ(intf_initProperty(nullptr, nullptr, nullptr, nullptr, "2#0#0#3#8", nullptr), 1);
    EXPECT_EQ(driver.devId, 2);
}

TEST_F(InitProperty, StoresTheHostsPointersNullOnesToo)
{
    quint8 statusByte = 0;
    quint8 recipeByte = 0;
    int second = 0;
    QMutex otherMutex;
    intf_initProperty(&statusByte, &second, &recipeByte, nullptr, "1#2#3#4", &otherMutex);
    EXPECT_EQ(driver.hostStatus, &statusByte);
    EXPECT_EQ(driver.hostArg2, &second);
    EXPECT_EQ(driver.recipeBuffer, &recipeByte);
    EXPECT_EQ(driver.hostMutex, &otherMutex);
    intf_initProperty(nullptr, nullptr, nullptr, nullptr, "1#0#0#3#8", nullptr);
    EXPECT_EQ(driver.hostStatus, nullptr);
    EXPECT_EQ(driver.hostArg2, nullptr);
    EXPECT_EQ(driver.recipeBuffer, nullptr);
    EXPECT_EQ(driver.hostMutex, nullptr);
}

TEST_F(InitProperty, EmptiesEveryListAndResetsTheSendState)
{
    for (const char *property : {"1#0#0#3#8", "1#2#3#4"}) {
        driver.cyclicReads.append(VARIABLE());
        driver.pendingWrites.append(VARIABLE());
        driver.pendingReads.append(VARIABLE());
        driver.dataAreas.append(_DATA_());
        driver.frames.append(FRAME_PRO());
        driver.sendState = driver.burstCount = driver.counterA = driver.retryCount = 7;
        driver.commError = driver.stateC = driver.stateD = 7;
        configure(property);
        EXPECT_EQ(driver.cyclicReads.size(), 0);
        EXPECT_EQ(driver.pendingWrites.size(), 0);
        EXPECT_EQ(driver.pendingReads.size(), 0);
        EXPECT_EQ(driver.dataAreas.size(), 0);
        EXPECT_EQ(driver.frames.size(), 0);
        for (const qint32 number : {driver.sendState, driver.burstCount, driver.counterA,
                                    driver.retryCount, driver.commError, driver.stateC})
            EXPECT_EQ(number, 0) << property;
        EXPECT_EQ(driver.stateD, 1);
    }
}

TEST_F(InitProperty, RecipeTransferAndCallbackSurvive)
{
    driver.recipeVars.append(_RCP_VAR_PRO());
    driver.recipeCursor = 3;
    configure("1#0#0#3#8");
    EXPECT_EQ(driver.recipeVars.size(), 1);
    EXPECT_EQ(driver.recipeCursor, 3);
    EXPECT_EQ(driver.valueChangedCallback, record);
}
