// Bad replies: retries, giving up and recovery.
#include "loaded_driver.h"

using FailureFlow = FlowTest;

TEST_F(FailureFlow, SilenceIsRetriedTwiceThenGivenUpAndTheValuesStay)
{
    watch({{1, "D", 100, 2}});
    exchange(":01030412345678E4");
    takeReports();
    EXPECT_EQ(nextFrame(), ":01031064000286");
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(nextFrame(), ":01031064000286");
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(nextFrame(), ":01031064000286");
    EXPECT_EQ(answer(""), 2);
    EXPECT_EQ(errorInfo, "1#D100(2)(0)");
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(words("D", 100, 2), (std::vector<int>{0x1234, 0x5678}));
}

TEST_F(FailureFlow, FirstGoodReplyAfterAGiveUpBringsAndReportsTheValue)
{
    watch({{1, "D", 100, 1}});
    exchange(":0103020001F9");
    takeReports();
    giveUp();
    EXPECT_EQ(exchange(":0103020002F8"), ":01031064000187");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 100}}));
    EXPECT_EQ(words("D", 100, 1), (std::vector<int>{2}));
}

TEST_F(FailureFlow, GoodReplyStartsTheCountOfRetriesAnew)
{
    watch({{1, "D", 100, 1}});
    nextFrame();
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(answer(":0103020001F9"), 1);
    nextFrame();
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(answer(""), 2);
    nextFrame();
    EXPECT_EQ(answer(""), 8);
}

TEST_F(FailureFlow, ExceptionAndFragmentAreBadReplies)
{
    watch({{1, "X", 17, 2}});
    nextFrame();
    EXPECT_EQ(answer(":0182027B"), 8);
    EXPECT_EQ(errorInfo, "1#X17(2)(11)");
    QByteArray fragment(":010");
    QString text;
    EXPECT_EQ(kmr->dealRcvFrame(fragment, text), 8);
    EXPECT_EQ(text, QString::fromLatin1("1#X17(2)(4)"));
    EXPECT_EQ(answer(":0182027B"), 2);
    EXPECT_EQ(errorInfo, "1#X17(2)(11)");
}

TEST_F(FailureFlow, DescriptionNamesTheRequestThatAnyReplyAnswers)
{
    watch({{12, "CV2", 200, 4}});
    exchange(":1203080000000100000002E0");
    EXPECT_EQ(errorInfo, "12#CV2200(2)(27)"); // four words are two counters
    giveUp();
    EXPECT_EQ(errorInfo, "12#CV2200(2)(0)");
}

TEST_F(FailureFlow, LimitsOfOneAndZeroGiveUpAtOnce)
{
    for (const char *property : {"1#0#0#1#8", "1#0#0#0#8"}) {
        configure(property);
        watch({{1, "D", 0, 1}});
        nextFrame();
        EXPECT_EQ(answer(""), 2) << property;
    }
}

TEST_F(FailureFlow, GivenUpBlockTakesItsTurnLikeTheOthers)
{
    watch({{1, "D", 0, 1}, {2, "D", 0, 1}});
    EXPECT_EQ(nextFrame(), ":010310000001EB");
    giveUp();
    EXPECT_EQ(exchange(":0203020005F4"), ":020310000001EA");
    EXPECT_EQ(words("D", 0, 1, 2), (std::vector<int>{5}));
    EXPECT_EQ(nextFrame(), ":010310000001EB");
}

TEST_F(FailureFlow, BlockOfWordBitsIsRefusedWithoutStallingTheOthers)
{
    EXPECT_EQ(watch({{1, "TV_bit", 17, 20}, {1, "D", 0, 1}}), 2);
    EXPECT_EQ(exchange(":0103020001F9"), ":010310000001EB");
    EXPECT_EQ(nextFrame(), ":01FF");
    EXPECT_EQ(frame.frameLen, 7);
    EXPECT_EQ(frame.replyLen, 11);
    EXPECT_EQ(frame.replyDataLen, 0);
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(nextFrame(), ":01FF");
    EXPECT_EQ(answer(""), 8);
    EXPECT_EQ(answer(""), 2);
    EXPECT_EQ(errorInfo, "1#TV_bit1(2)(0)");
    EXPECT_EQ(exchange(":0103020002F8"), ":010310000001EB");
    EXPECT_EQ(nextFrame(), ":01FF");
}

TEST_F(FailureFlow, ReplyToABlockOfWordBitsIsConsumedAndDecodesNothing)
{
    watch({{1, "TV_bit", 16, 1}});
    EXPECT_EQ(exchange(":0103020001F9"), ":01FF");
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(bits("TV_bit", 16, 1), (std::vector<int>{0}));
}

TEST_F(FailureFlow, WrongChecksumAndStationAreLeftToTheHost)
{
    watch({{1, "D", 0, 1}});
    EXPECT_EQ(exchange(":090302123400"), ":010310000001EB");
    EXPECT_EQ(words("D", 0, 1), (std::vector<int>{0x1234}));
}

TEST_F(FailureFlow, ReplyCutShortDecodesAsZeros)
{
    watch({{1, "D", 100, 2}});
    exchange(":0103041111222292");
    QByteArray cut(":01030412");
    QString text;
    nextFrame();
    EXPECT_EQ(kmr->dealRcvFrame(cut, text), 1);
    EXPECT_EQ(words("D", 100, 2), (std::vector<int>{0x1200, 0}));
}

TEST_F(FailureFlow, FiveCharactersAreEnoughForAReply)
{
    watch({{1, "D", 0, 1}});
    exchange(":0103021234B4");
    QByteArray start(":0103");
    QString text;
    nextFrame();
    EXPECT_EQ(kmr->dealRcvFrame(start, text), 1);
    EXPECT_EQ(words("D", 0, 1), (std::vector<int>{0}));
}

TEST_F(FailureFlow, AcknowledgementOfAReadIsConsumedAndStoresNothing)
{
    watch({{1, "D", 0, 1}});
    exchange(":0103020007F3");
    takeReports();
    EXPECT_EQ(exchange(":011010000001DE"), ":010310000001EB");
    EXPECT_EQ(takeReports(), Reports{});
    EXPECT_EQ(words("D", 0, 1), (std::vector<int>{7}));
}

TEST_F(FailureFlow, DataInReplyToAWriteAreDecodedAndTheWriteIsDone)
{
    watch({{1, "D", 50, 1}});
    writeWords("D", 10, {0x1234});
    EXPECT_EQ(exchange(":0103020A0BE5"), ":0110100A00010212348C");
    EXPECT_EQ(words("D", 10, 1), (std::vector<int>{0x0A0B}));
    EXPECT_EQ(nextFrame(), ":010310320001B9");
}

TEST_F(FailureFlow, LettersOfEitherCaseAreHexadecimalDigits)
{
    watch({{1, "D", 0, 1}});
    exchange(":010302abCD82");
    EXPECT_EQ(words("D", 0, 1), (std::vector<int>{0xABCD}));
}
