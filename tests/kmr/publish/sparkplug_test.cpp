// Sparkplug B payloads to the byte, and the order of a node's messages.
#include "kmr/publish/sparkplug_command.h"
#include "kmr/publish/sparkplug_node.h"
#include "kmr/publish/sparkplug_payload.h"

#include "host/error.h"
#include "tests/host/library.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace kmr;
using sparkplug::DataType;

namespace {

constexpr qint64 TIME = 1000; // as a number of Protocol Buffers E8 07

Tag oven()
{
    Tag tag = tagOf("D100/int16");
    tag.text = "oven";
    tag.unit = "°C";
    tag.scaling = Scaling("0.1");
    return tag;
}

std::string hex(const QByteArray &bytes)
{
    return bytes.toHex(' ').toStdString();
}

} // namespace

TEST(SparkplugMetric, HasNameTimeTypeQualityUnitCauseAndValue)
{
    const std::string head = "0a 04 6f 76 65 6e 18 e8 07 20 0a ";
    const std::string quality = "0a 07 51 75 61 6c 69 74 79 12 05 08 03 18 c0 01 ";
    const std::string stale = "0a 07 51 75 61 6c 69 74 79 12 05 08 03 18 f4 03 ";
    const std::string bad = "0a 07 51 75 61 6c 69 74 79 12 04 08 03 18 00 ";
    const std::string unit = "0a 07 65 6e 67 55 6e 69 74 12 07 08 0c 42 03 c2 b0 43";
    const std::string cause = " 0a 05 63 61 75 73 65 12 07 08 0c 42 03 6f 66 66";
    const std::string value = " 69 00 00 00 00 00 80 35 40";
    EXPECT_EQ(hex(sparkplug::metric(oven(), {Quality::Good, {215}, TIME, {}}, TIME)),
              head + "4a 22 " + quality + unit + value);
    EXPECT_EQ(hex(sparkplug::metric(oven(), {Quality::Stale, {215}, TIME, "off"}, TIME)),
              head + "4a 32 " + stale + unit + cause + value);
    EXPECT_EQ(hex(sparkplug::metric(oven(), {}, TIME)), head + "38 01 4a 21 " + bad + unit);
}

TEST(SparkplugMetric, EachTagHasTheTypeAndTheFieldOfItsValues)
{
    struct Row {
        const char *tag;
        Values values;
        DataType type;
        const char *field; // what comes last
    };
    const Row rows[] = {
        {"M5", {1}, DataType::Boolean, "70 01"},
        {"D100.3", {0}, DataType::Boolean, "70 00"},
        {"D100", {65535}, DataType::UInt16, "50 ff ff 03"},
        {"D100/hex", {16}, DataType::UInt16, "50 10"},
        {"D100/bcd", {0x1234}, DataType::UInt16, "50 d2 09"},
        {"D100/int16", {0xfffb}, DataType::Int16, "50 fb ff ff ff 0f"},
        {"D100/int32", {0xffff, 0xffff}, DataType::Int32, "50 ff ff ff ff 0f"},
        {"D100/uint32", {0xffff, 0xffff}, DataType::Int64, "58 ff ff ff ff 0f"},
        {"CV2200", {0xffffffff}, DataType::Int64, "58 ff ff ff ff 0f"},
        {"D100/int64",
         {0xfffb, 0xffff, 0xffff, 0xffff},
         DataType::Int64,
         "58 fb ff ff ff ff ff ff ff ff 01"},
        {"D100/uint64",
         {0xfffb, 0xffff, 0xffff, 0xffff},
         DataType::UInt64,
         "58 fb ff ff ff ff ff ff ff ff 01"},
        {"D100/float32", {0, 0x41ac}, DataType::Float, "65 00 00 ac 41"},
        {"D100/float64", {0, 0, 0x8000, 0x4035}, DataType::Double, "69 00 00 00 00 00 80 35 40"},
        {"D100x2/text", {0x4241, 0}, DataType::String, "7a 02 41 42"},
        {"D100x2", {1, 0x1234}, DataType::UInt16Array, "82 01 04 01 00 34 12"},
        {"D100x2/int16", {1, 0xfffb}, DataType::Int16Array, "82 01 04 01 00 fb ff"},
        {"D100x4/float32",
         {0, 0x41ac, 0, 0},
         DataType::FloatArray,
         "82 01 08 00 00 ac 41 00 00 00 00"},
        {"M8x9", {1, 0, 0, 0, 0, 0, 1, 0, 1}, DataType::BooleanArray, "82 01 06 09 00 00 00 82 80"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.tag);
        const Tag tag = tagOf(row.tag);
        EXPECT_EQ(sparkplug::dataTypeOf(tag), row.type);
        const std::string bytes =
            hex(sparkplug::metric(tag, {Quality::Good, row.values, TIME, {}}, TIME));
        const std::string end = std::string("18 c0 01 ") + row.field;
        EXPECT_EQ(bytes.substr(bytes.size() - end.size()), end);
    }
}

TEST(SparkplugMetric, TextsOfNumbersAreStringsAndWhatNoTypeHoldsIsNullAndBad)
{
    Tag valves = tagOf("M5x2");
    valves.texts = {{0, "no"}, {1, "yes"}};
    EXPECT_EQ(sparkplug::dataTypeOf(valves), DataType::StringArray);
    EXPECT_TRUE(sparkplug::metric(valves, {Quality::Good, {1, 0}, TIME, {}}, TIME)
                    .endsWith(QByteArray("\x82\x01\x07yes\0no\0", 10)));
    const QByteArray isNull = QByteArray::fromHex("3801");
    const QByteArray bad = QByteArray::fromHex("1800");
    for (const char *const text : {"D100/float32", "D100x2/bcd"}) {
        const QByteArray bytes =
            sparkplug::metric(tagOf(text), {Quality::Good, {0xffff, 0xffff}, TIME, {}}, TIME);
        EXPECT_TRUE(bytes.contains(isNull) && bytes.endsWith(bad)) << text;
    }
}

TEST(SparkplugCommand, ValuesOfAllFieldsBecomeListsInJson)
{
    struct Row {
        DataType announced;
        QByteArray fields; // after the name
        const char *values;
    };
    const Row rows[] = {
        {DataType::Int16, "50fbffffff0f", "[-5]"},
        {DataType::UInt16, "50fbffffff0f", "[4294967291]"},
        {DataType::UInt16, "200250fbffffff0f", "[-5]"}, // with a type of its own
        {DataType::Int64, "58fbffffffffffffffff01", "[-5]"},
        {DataType::UInt64, "58fbffffffffffffffff01", "[18446744073709551611]"},
        {DataType::Double, "65cdccac41", "[21.6]"}, // a float's nearest
        {DataType::Double, "69000000000000f0bf", "[-1]"},
        {DataType::Double, "69000000000000f07f", "[null]"}, // infinite
        {DataType::Boolean, "7001", "[true]"},
        {DataType::String, "7a03612262", "[\"a\\\"b\"]"},
        {DataType::Int16Array, "8201040100fbff", "[1,-5]"},
        {DataType::Int16Array, "8201030100fb", "[null]"}, // one and a half
        {DataType::FloatArray, "820104cdccac41", "[21.6]"},
        {DataType::BooleanArray, "82010603000000a000", "[null]"}, // too long
        {DataType::BooleanArray, "82010503000000a0", "[true,false,true]"},
        {DataType::StringArray, "82010661620063640a", "[null]"}, // without its end
        {DataType::StringArray, "820106616200636400", "[\"ab\",\"cd\"]"},
        {DataType::UInt16, "3801", "[null]"},
        {DataType::UInt16, "38015005", "[null]"}, // in spite of its value
        {DataType::UInt16, "38005005", "[5]"},
        {DataType::UInt16, "520135", "[null]"}, // a text in the field of an integer
        {DataType::UInt16, "", "[null]"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.fields.toStdString());
        const QByteArray metric = QByteArray("\x0a\x01n") + QByteArray::fromHex(row.fields);
        const QByteArray payload =
            QByteArray::fromHex("08e80712") + static_cast<char>(metric.size()) + metric;
        const auto parsed =
            sparkplug::parseCommands(payload, [&row](const QString &) { return row.announced; });
        ASSERT_EQ(parsed.commands.size(), 1U);
        EXPECT_TRUE(parsed.hasTime);
        EXPECT_EQ(parsed.commands[0].name, "n");
        EXPECT_EQ(parsed.commands[0].values, row.values);
    }
}

namespace {

class SparkplugNodeTest : public testing::Test {
protected:
    std::unique_ptr<SparkplugNode> node(const QString &prefix = "plant/line1")
    {
        return std::make_unique<SparkplugNode>(
            Topics(prefix, {"oven"}), std::vector<PublishedTag>{m_tag}, true, m_bdSeqFile,
            [this](const QString &line) { m_reported.append(line); });
    }

    static Message numbered(Message message, std::uint64_t number)
    {
        message.number = number;
        return message;
    }

    static Incoming command(const QByteArray &fields)
    {
        Incoming incoming;
        incoming.topic = "spBv1.0/plant/NCMD/line1";
        incoming.payload = QByteArray::fromHex(fields);
        incoming.responseTopic = "elsewhere";
        return incoming;
    }

    // The seq at a payload's end.
    static int seqOf(const Message &message)
    {
        const QByteArray &bytes = message.payload;
        const int low = static_cast<unsigned char>(bytes[bytes.size() - 1]);
        if (bytes[bytes.size() - 2] == '\x18')
            return low;
        return low * 128 + (static_cast<unsigned char>(bytes[bytes.size() - 2]) & 127);
    }

    void saveBdSeq(const QByteArray &text) const
    {
        QFile file(m_bdSeqFile);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }

    const QTemporaryDir m_directory;
    QString m_bdSeqFile = m_directory.filePath("bdseq");
    QStringList m_reported;
    PublishedTag m_tag{oven(), {}, 0};
};

// "... 58 NUMBER", the value of bdSeq, at a death's end.
const QByteArray DEATH_0 = QByteArray::fromHex("20045800");
const QByteArray DEATH_1 = QByteArray::fromHex("20045801");
const QByteArray DEATH_255 = QByteArray::fromHex("200458ff01");

} // namespace

TEST_F(SparkplugNodeTest, NumbersItsMessagesFromTheBirthOnTo255AndFrom0Again)
{
    const auto node = this->node();
    EXPECT_EQ(seqOf(node->birth(0)), 0);
    const Message value = node->value(m_tag, {Quality::Good, {215}, TIME, {}});
    for (int i = 1; i < 600; ++i) {
        ASSERT_EQ(seqOf(node->data({value})), i % 256);
        node->noteDataSent();
    }
    EXPECT_EQ(seqOf(node->birth(0)), 0);
    const Message data = node->data({value});
    EXPECT_EQ(seqOf(data), 1);
    EXPECT_EQ(seqOf(node->data({value})), 1); // the one before was not sent
    EXPECT_EQ(data.topic, "spBv1.0/plant/NDATA/line1");
    EXPECT_FALSE(data.isRetained);
}

TEST_F(SparkplugNodeTest, WhatABirthOvertookIsHistoricalAndTheBirthHasTheLatest)
{
    const auto node = this->node();
    const QByteArray before = QByteArray::fromHex("69000000000000f03f");
    const QByteArray latest = QByteArray::fromHex("690000000000000040");
    const QByteArray flag = QByteArray::fromHex("2801");
    const Message first = numbered(node->value(m_tag, {Quality::Good, {10}, TIME, {}}), 1);
    const Message second = numbered(node->value(m_tag, {Quality::Good, {20}, TIME, {}}), 2);
    const Message birth = node->birth(2);
    EXPECT_EQ(birth.topic, "spBv1.0/plant/NBIRTH/line1");
    EXPECT_TRUE(birth.payload.contains(latest) && !birth.payload.contains(before));
    const Message later = numbered(node->value(m_tag, {Quality::Good, {10}, TIME, {}}), 3);
    const QByteArray data = node->data({first, second, later}).payload;
    EXPECT_TRUE(data.contains(before + flag) && data.contains(latest + flag));
    EXPECT_EQ(data.lastIndexOf(before), data.size() - before.size() - 2); // seq comes last
}

TEST_F(SparkplugNodeTest, EachConnectionHasTheNextBdSeqAlsoAfterARestart)
{
    auto node = this->node();
    EXPECT_TRUE(node->will().payload.endsWith(DEATH_0));
    EXPECT_TRUE(node->will().payload.endsWith(DEATH_0)); // the first was never sent
    node->noteWillSent();
    EXPECT_TRUE(node->death().payload.endsWith(DEATH_0));
    EXPECT_TRUE(node->birth(0).payload.contains(DEATH_0));
    EXPECT_TRUE(node->will().payload.endsWith(DEATH_1));
    EXPECT_EQ(node->will().topic, "spBv1.0/plant/NDEATH/line1");
    EXPECT_FALSE(node->will().isRetained);
    EXPECT_TRUE(this->node()->will().payload.endsWith(DEATH_1));
    saveBdSeq("254\n");
    node = this->node();
    EXPECT_TRUE(node->will().payload.endsWith(DEATH_255));
    node->noteWillSent();
    EXPECT_TRUE(node->will().payload.endsWith(DEATH_0));
}

TEST_F(SparkplugNodeTest, BdSeqBeginsAgainIfItsFileIsDamagedAndItSaysOnceThatItIsNotKept)
{
    for (const char *const text : {"", "-7\n", "256\n", "many\n"}) {
        saveBdSeq(text);
        EXPECT_TRUE(node()->will().payload.endsWith(DEATH_0)) << text;
    }
    ASSERT_TRUE(QFile::remove(m_bdSeqFile));
    const auto kept = node();
    kept->noteWillSent();
    EXPECT_EQ(m_reported, QStringList());
    m_bdSeqFile = m_directory.filePath("missing/bdseq");
    const auto node = this->node();
    node->noteWillSent();
    node->noteWillSent();
    ASSERT_EQ(m_reported.size(), 1);
    EXPECT_TRUE(m_reported[0].startsWith("can't write " + m_bdSeqFile + ": "));
}

TEST_F(SparkplugNodeTest, CommandsBecomeRequestsThatAreKnownAgain)
{
    const auto node = this->node();
    const QByteArray set = "12140a046f76656e690000000000003640"; // oven=22 without a time
    const QByteArray one = "120f0a046f76656e690000000000003640";
    const auto twice = node->commands(command("08e807" + one + one));
    ASSERT_EQ(twice.requests.size(), 2U);
    EXPECT_EQ(twice.requests[0].topic, "plant/line1/oven/set");
    EXPECT_EQ(twice.requests[0].payload, "[22]");
    EXPECT_EQ(twice.requests[0].responseTopic, "");
    EXPECT_NE(twice.requests[0].correlation, twice.requests[1].correlation);
    const auto again = node->commands(command("08e807" + one + one));
    EXPECT_EQ(again.requests[0].correlation, twice.requests[0].correlation);
    EXPECT_EQ(node->commands(command(one)).requests[0].correlation, "");
    EXPECT_THROW(node->commands(command(set)), Error); // cut off
    EXPECT_FALSE(twice.wantsBirth);
}

TEST_F(SparkplugNodeTest, RefusesCommandsThatAreTooLongOrHaveTooManyValues)
{
    const auto node = this->node();
    const QByteArray one = "120f0a046f76656e690000000000003640";
    const QByteArray rebirth = "12180a14" + QByteArray("Node Control/Rebirth").toHex() + "7001";
    const auto most = node->commands(command("08e807" + rebirth + one.repeated(32)));
    EXPECT_EQ(most.requests.size(), 32U);
    EXPECT_LT(most.requests.back().correlation.size(), 100);
    EXPECT_THROW(node->commands(command(one.repeated(33))), Error);
    const QByteArray filler = "1afcff03"; // a field of 65532 bytes, passed over
    const QByteArray longest = filler + QByteArray(65532 * 2, '0');
    EXPECT_TRUE(node->commands(command(longest)).requests.empty());
    EXPECT_THROW(node->commands(command(longest + one)), Error);
}

TEST_F(SparkplugNodeTest, IsBornAgainWhenItIsAskedNowAndByTrue)
{
    const auto node = this->node();
    const QByteArray rebirth = "12180a14" + QByteArray("Node Control/Rebirth").toHex() + "70";
    Incoming asked = command(rebirth + "01");
    EXPECT_TRUE(node->commands(asked).wantsBirth);
    EXPECT_TRUE(node->commands(asked).requests.empty());
    EXPECT_FALSE(node->commands(command(rebirth + "00")).wantsBirth);
    asked.isRetained = true;
    EXPECT_FALSE(node->commands(asked).wantsBirth);
}

TEST_F(SparkplugNodeTest, RefusesOtherPrefixesAndItsOwnNames)
{
    for (const char *const prefix : {"plant", "plant/line1/oven", "plant/+"})
        EXPECT_THROW(node(prefix), Error) << prefix;
    for (const char *const name : {"bdSeq", "Node Control/Rebirth", "Write/Outcome"}) {
        m_tag.tag.text = name;
        EXPECT_THROW(node(), Error) << name;
    }
}
