// The driver's identity and configuration.
#include "driver/ostrel_kmr.h"

#include "driver_fixture.h"

#include <limits>

namespace {

const qint32 INT_LEAST = std::numeric_limits<qint32>::min();

// --- Identity ------------------------------------------------------------------------------------

TEST(Identity, ProtocolTypeIsZero)
{
    qint32 type = 777;
    intf_getProtocolType(&type);
    EXPECT_EQ(type, 0);
    intf_getProtocolType(nullptr);
}

TEST(Identity, DefaultParametersAreTwentyFields)
{
    QString parameter = "before";
    intf_getDriverParameter(parameter);
    EXPECT_EQ(parameter.toStdString(), "0,9600,7,EVEN,1,0,1,192.168.0.10,8888,Ostrel_kmr,"
                                       "X,Y,M,S,T,C,TV,CV,CV2,D");
}

TEST(Identity, PropertyPageIsNone)
{
    QString page = "before";
    intf_getDriverPropertyPage(page);
    EXPECT_EQ(page.toStdString(), "0_0");
}

TEST(Identity, PropertyPageIsNotTaken)
{
    QString page = "5#5#5#5#5";
    intf_SetDriverPropertyPage(page);
    EXPECT_EQ(page.toStdString(), "");
}

// --- Configuration -------------------------------------------------------------------------------

class InitProperty : public DriverTest {
protected:
    using Settings = std::tuple<qint32, qint32, qint32, qint32, qint32>;

    static Settings settings()
    {
        return Settings(driver.devId, driver.writeQueueOff, driver.propToken3, driver.retryLimit,
                        driver.groupLimit);
    }
};

TEST_F(InitProperty, StoresTheFiveSettingsInTheirOrder)
{
    configure("11#12#13#14#5");
    EXPECT_EQ(settings(), Settings(11, 12, 13, 14, 5));
}

TEST_F(InitProperty, GroupLimitAboveEightIsEight)
{
    configure("3#0#0#3#12");
    EXPECT_EQ(settings(), Settings(3, 0, 0, 3, 8));
    EXPECT_EQ(driver.bitGroupLimit, 64);
    EXPECT_EQ(driver.wordGroupLimit, 8);
}

TEST_F(InitProperty, GroupLimitUpToEightIsKept)
{
    const std::tuple<const char *, qint32> limits[] = {
        {"1#0#0#3#9", 8}, {"1#0#0#3#8", 8}, {"1#0#0#3#7", 7}, {"1#0#0#3#1", 1}};
    for (const auto &[property, limit] : limits) {
        configure(property);
        EXPECT_EQ(driver.groupLimit, limit) << property;
        EXPECT_EQ(driver.wordGroupLimit, limit) << property;
        EXPECT_EQ(driver.bitGroupLimit, limit * 8) << property;
    }
}

TEST_F(InitProperty, GroupLimitOfZeroIsKept)
{
    configure("1#0#0#3#0");
    EXPECT_EQ(driver.groupLimit, 0);
    EXPECT_EQ(driver.wordGroupLimit, 0);
    EXPECT_EQ(driver.bitGroupLimit, 0);
}

TEST_F(InitProperty, NegativeGroupLimitIsKept)
{
    configure("1#0#0#3#-5");
    EXPECT_EQ(driver.groupLimit, -5);
    EXPECT_EQ(driver.wordGroupLimit, -5);
    EXPECT_EQ(driver.bitGroupLimit, -40);
}

TEST_F(InitProperty, LeastGroupLimitStaysBelowOne)
{
    configure("1#0#0#3#-2147483648");
    EXPECT_EQ(driver.groupLimit, INT_LEAST);
    EXPECT_EQ(driver.wordGroupLimit, INT_LEAST);
    EXPECT_LT(driver.bitGroupLimit, 1);
}

TEST_F(InitProperty, PiecesBehindTheFifthAreIgnored)
{
    configure("1#2#3#4#5#6#7");
    EXPECT_EQ(settings(), Settings(1, 2, 3, 4, 5));
}

TEST_F(InitProperty, PieceThatIsNoNumberCountsAsZero)
{
    configure("a#1.5#0x10#99999999999#7b");
    EXPECT_EQ(settings(), Settings(0, 0, 0, 0, 0));
}

TEST_F(InitProperty, EmptyPieceCountsAsZero)
{
    configure("#1#2#3#4");
    EXPECT_EQ(settings(), Settings(0, 1, 2, 3, 4));
    configure("####");
    EXPECT_EQ(settings(), Settings(0, 0, 0, 0, 0));
}

TEST_F(InitProperty, PieceMayHaveASignAndWhiteSpace)
{
    configure(" 1 #+2#-3#\t4#5 ");
    EXPECT_EQ(settings(), Settings(1, 2, -3, 4, 5));
}

TEST_F(InitProperty, Latin1CharactersAreNoDigits)
{
    configure("1#\xB2#3#4#5");
    EXPECT_EQ(settings(), Settings(1, 0, 3, 4, 5));
}

TEST_F(InitProperty, FewerThanFivePiecesKeepTheSettings)
{
    for (const char *property : {"1#2#3#4", "9", ""}) {
        configure("11#12#13#14#5");
        configure(property);
        EXPECT_EQ(settings(), Settings(11, 12, 13, 14, 5)) << property;
    }
}

TEST_F(InitProperty, NullPropertyKeepsTheSettings)
{
    configure("11#12#13#14#5");
    configure(nullptr);
    EXPECT_EQ(settings(), Settings(11, 12, 13, 14, 5));
    EXPECT_EQ(driver.bitGroupLimit, 40);
}

TEST_F(InitProperty, FewerThanFivePiecesStillSetTheGroupingLimits)
{
    driver.groupLimit = 3;
    configure("1#2#3#4");
    EXPECT_EQ(driver.wordGroupLimit, 3);
    EXPECT_EQ(driver.bitGroupLimit, 24);
}

TEST_F(InitProperty, ReturnsOneAndWritesZeroToTheResult)
{
    for (const char *property : {"1#0#0#3#8", "1#2#3#4", "nonsense"}) {
        qint32 result = 777;
        EXPECT_EQ(intf_initProperty(nullptr, nullptr, nullptr, &result, property, nullptr), 1);
        EXPECT_EQ(result, 0) << property;
    }
}

TEST_F(InitProperty, NullResultIsNotWritten)
{
    EXPECT_EQ(intf_initProperty(nullptr, nullptr, nullptr, nullptr, "2#0#0#3#8", nullptr), 1);
    EXPECT_EQ(driver.devId, 2);
}

TEST_F(InitProperty, StoresTheHostsPointers)
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
}

TEST_F(InitProperty, StoresNullPointersToo)
{
    intf_initProperty(nullptr, nullptr, nullptr, nullptr, "1#0#0#3#8", nullptr);
    EXPECT_EQ(driver.hostStatus, nullptr);
    EXPECT_EQ(driver.hostArg2, nullptr);
    EXPECT_EQ(driver.recipeBuffer, nullptr);
    EXPECT_EQ(driver.hostMutex, nullptr);
}

TEST_F(InitProperty, EmptiesEveryList)
{
    for (const char *property : {"1#0#0#3#8", "1#2#3#4"}) {
        driver.cyclicReads.append(VARIABLE());
        driver.pendingWrites.append(VARIABLE());
        driver.pendingReads.append(VARIABLE());
        driver.dataAreas.append(_DATA_());
        driver.frames.append(FRAME_PRO());
        configure(property);
        EXPECT_TRUE(driver.cyclicReads.isEmpty() && driver.pendingWrites.isEmpty() &&
                    driver.pendingReads.isEmpty() && driver.dataAreas.isEmpty() &&
                    driver.frames.isEmpty())
            << property;
    }
}

TEST_F(InitProperty, ResetsTheSendState)
{
    driver.sendState = driver.burstCount = driver.counterA = driver.retryCount = 7;
    driver.commError = driver.stateC = driver.stateD = 7;
    configure("1#0#0#3#8");
    EXPECT_EQ(driver.sendState, 0);
    EXPECT_EQ(driver.burstCount, 0);
    EXPECT_EQ(driver.counterA, 0);
    EXPECT_EQ(driver.retryCount, 0);
    EXPECT_EQ(driver.commError, 0);
    EXPECT_EQ(driver.stateC, 0);
    EXPECT_EQ(driver.stateD, 1);
}

TEST_F(InitProperty, RecipeTransferSurvives)
{
    driver.recipeVars.append(_RCP_VAR_PRO());
    driver.recipeCursor = 3;
    configure("1#0#0#3#8");
    EXPECT_EQ(driver.recipeVars.size(), 1);
    EXPECT_EQ(driver.recipeCursor, 3);
}

TEST_F(InitProperty, CallbackStays)
{
    configure("1#0#0#3#8");
    EXPECT_EQ(driver.valueChangedCallback, record);
}

TEST_F(InitProperty, CallbackIsStoredNullIncluded)
{
    intf_setAddrValueChangeCallBack(nullptr);
    EXPECT_EQ(driver.valueChangedCallback, nullptr);
    intf_setAddrValueChangeCallBack(record);
    EXPECT_EQ(driver.valueChangedCallback, record);
}

} // namespace
