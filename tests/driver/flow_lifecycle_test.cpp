// The editor's services during a running link, and a library that is loaded again or unloaded.
#include "loaded_driver.h"

using LifecycleFlow = FlowTest;

TEST_F(LifecycleFlow, EditorServicesLeaveARunningLinkAlone)
{
    watch({{1, "D", 100, 1}});
    nextFrame();
    qint32 number = -1;
    kmr->getProtocolType(&number);
    EXPECT_EQ(number, 0);
    const QString area = QString::fromLatin1("CV2");
    const QString address = QString::fromLatin1("200");
    EXPECT_EQ(kmr->checkAddrValidity(area, address, &number, 1, 1), 0);
    EXPECT_EQ(number, 200);
    EXPECT_EQ(kmr->checkAddr(area, address, &number, 2, 1), 5);
    EXPECT_EQ(nextFrame(), ":01031064000187");
    EXPECT_EQ(answer(":0103021234B4"), 1);
}

TEST_F(LifecycleFlow, NothingGoesToStandardError)
{
    testing::internal::CaptureStderr();
    configure("no#numbers");
    configure("1#0#0#2#8");
    QStringList texts;
    EXPECT_EQ(kmr->getRegDiscription(QString::fromLatin1("Q"), texts), 0);
    EXPECT_EQ(kmr->checkAddr(QString::fromLatin1("X"), QString::fromLatin1("a"), nullptr, -1, 1),
              4);
    EXPECT_EQ(kmr->multiCopy(QString::fromLatin1("D"), 12000, 1, 1, nullptr, nullptr), 2);
    setRecipe({_RCP_VAR_PRO()});
    watch({{1, "D", 100, 9}, {1, "Q", 0, 1}, {300, "X", 18, 70}});
    writeWords("D", 0, std::vector<int>(20, 1));
    readOnce({1, "M", 7, 20}, 0, -1);
    for (const char *reply : {"", "x", ":0183027A", ":0103021234B4", ":01031064000187"}) {
        nextFrame();
        answer(reply);
    }
    EXPECT_EQ(words("Q", 0, 1), (std::vector<int>{0xEEEE}));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(LifecycleFlow, LibraryLoadedAgainStartsFromNothing)
{
    watch({{1, "D", 100, 1}});
    exchange(":0103021234B4");
    writeWords("D", 0, {1, 2});
    EXPECT_EQ(setRecipe({recipeEntry("D", 0, 1, 0)}), 1);
    takeReports();

    kmr.reset();
    kmr = std::make_unique<LoadedDriver>();
    EXPECT_EQ(words("D", 100, 1), (std::vector<int>{0}));
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(answer(":0103021234B4"), 0);
    configure("1#2#3#4"); // too few settings: all are still 0
    EXPECT_EQ(watch({{1, "D", 100, 1}}), 1);
    status[STATUS_RECIPE_DOWNLOAD] = 1; // no recipe and no last request to repeat
    EXPECT_EQ(nextFrame(), "");
    status[STATUS_RECIPE_DOWNLOAD] = 0;
    exchange(":0103021234B4");
    EXPECT_EQ(takeReports(), Reports{}); // no callback
    nextFrame();
    EXPECT_EQ(answer(""), 2); // no retry
}

namespace {

std::vector<QString> handedOut;

qint32 keepArea(qint32, qint32, QString area, qint32)
{
    handedOut.push_back(area);
    return 0;
}

std::vector<std::string> asWritten(const std::vector<QString> &texts)
{
    std::vector<std::string> all;
    for (const QString &text : texts)
        all.push_back(text.toStdString());
    return all;
}

} // namespace

TEST_F(LifecycleFlow, TextsOfTheEditorOutliveTheLibrary)
{
    QString parameter, page, empty = QString::fromLatin1("something");
    kmr->getDriverParameter(parameter);
    kmr->getDriverPropertyPage(page);
    kmr->SetDriverPropertyPage(empty);
    QStringList catalogue;
    kmr->getRegDiscription(QString::fromLatin1("CV2"), catalogue);
    kmr->getRegListByType(0, catalogue);
    QVector<QString> series;
    QVector<qint32> numbers;
    EXPECT_EQ(kmr->multiCopy(QString::fromLatin1("D"), 11999, 2, 1, &series, &numbers), 2);
    EXPECT_EQ(kmr->multiCopy(QString::fromLatin1("X"), 23417, 2, 1, &series, &numbers), 2);
    EXPECT_EQ(kmr->multiCopy(QString::fromLatin1("TV_bit"), 1048575, 2, 1, &series, &numbers), 2);
    kmr.reset();

    EXPECT_TRUE(parameter.startsWith(QString::fromLatin1("0,9600,7,EVEN,")));
    EXPECT_EQ((page + QString::fromLatin1("!")).toStdString(), "0_0!");
    EXPECT_EQ(empty.size(), 0);
    EXPECT_EQ(catalogue.join(QString::fromLatin1(" ")).toStdString(),
              "ddd 200 255 1 1 X Y M S T C");
    EXPECT_EQ(
        asWritten({series.begin(), series.end()}),
        (std::vector<std::string>{"11999", "11999", "23417", "23417", "65535.15", "65536.15"}));
}

TEST_F(LifecycleFlow, TextsOfTheLoopOutliveTheLibrary)
{
    handedOut.clear();
    kmr->setAddrValueChangeCallBack(keepArea);
    watch({{1, "D", 0, 1}});
    setRecipe({recipeEntry("TV", 0, 1, 0)});
    status[STATUS_RECIPE_UPLOAD] = 1;
    exchange(":0103020000FA");
    readOnce({1, "D", 9, 1});
    exchange(":0103020000FA");
    nextFrame();
    QByteArray reply(":0103020001F9");
    QString description;
    EXPECT_EQ(kmr->dealRcvFrame(reply, description), 1);
    kmr.reset();

    EXPECT_EQ(asWritten(handedOut), (std::vector<std::string>{"RWI", "-1", "D"}));
    EXPECT_EQ((description + QString::fromLatin1("!")).toStdString(), "1#D0(1)(13)!");
    EXPECT_EQ(frame.var.area.toStdString(), "D");
    handedOut.clear();
}
