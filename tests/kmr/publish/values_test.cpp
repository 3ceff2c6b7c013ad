// What is published of values, and when.
#include "kmr/publish/change_filter.h"
#include "kmr/publish/payload.h"
#include "tests/host/library.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

constexpr qint64 TIME = 1795321800000; // 2026-11-22T04:30:00Z

const ChangeFilter::Time BEGIN;

Tag temperature()
{
    Tag tag = tagOf("D100/int16");
    tag.unit = "°C";
    tag.scaling = Scaling("0.1");
    return tag;
}

Sample good(Values values)
{
    return {Quality::Good, std::move(values), TIME, {}};
}

// Whether a value is news after another, in D100 scaled by 0.1.
bool isNews(std::uint32_t before, std::uint32_t after, double deadband)
{
    ChangeFilter filter(deadband, {});
    filter.notePublished(good({before}), BEGIN);
    return filter.isNews(temperature(), good({after}), BEGIN);
}

} // namespace

TEST(ValuePayload, HasValueUnitQualityTimeAndCause)
{
    struct Row {
        const char *tag;
        Sample sample;
        const char *json;
        const char *plain;
    };
    const Row rows[] = {
        {"", good({215}),
         R"({"value":21.5,"unit":"°C","quality":"good","time":"2026-11-22T04:30:00.000Z","cause":null})",
         "good\t2026-11-22T04:30:00.000Z\t21.5\t°C\t"},
        {"",
         {Quality::Stale, {215}, TIME, "no answer"},
         R"({"value":21.5,"unit":"°C","quality":"stale","time":"2026-11-22T04:30:00.000Z","cause":"no answer"})",
         "stale\t2026-11-22T04:30:00.000Z\t21.5\t°C\tno answer"},
        {"",
         {},
         R"({"value":null,"unit":"°C","quality":"pending","time":null,"cause":null})",
         "pending\t\t\t°C\t"},
        {"X0x3", good({1, 0, 1}),
         R"({"value":[1,0,1],"unit":null,"quality":"good","time":"2026-11-22T04:30:00.000Z","cause":null})",
         "good\t2026-11-22T04:30:00.000Z\t1 0 1\t\t"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.json);
        const Tag tag = *row.tag == '\0' ? temperature() : tagOf(row.tag);
        EXPECT_EQ(valuePayload(PayloadForm::Json, tag, row.sample), row.json);
        EXPECT_EQ(valuePayload(PayloadForm::Plain, tag, row.sample), row.plain);
    }
}

TEST(ChangeFilter, EachChangeIsNewsUnlessItIsSmallerThanTheDeadband)
{
    EXPECT_TRUE(isNews(200, 201, 0));
    EXPECT_FALSE(isNews(200, 200, 0));
    EXPECT_FALSE(isNews(200, 204, 0.5));
    EXPECT_FALSE(isNews(200, 196, 0.5));
    EXPECT_TRUE(isNews(200, 205, 0.5));
    EXPECT_TRUE(isNews(200, 195, 0.5));
    EXPECT_TRUE(isNews(3, 2, 0.1)); // 0.3 - 0.2 in doubles is less
}

TEST(ChangeFilter, ChangesThatCreepAddUpToNews)
{
    ChangeFilter filter(0.3, {});
    filter.notePublished(good({200}), BEGIN);
    EXPECT_FALSE(filter.isNews(temperature(), good({202}), BEGIN));
    EXPECT_TRUE(filter.isNews(temperature(), good({203}), BEGIN));
}

TEST(ChangeFilter, AnotherQualityOrCauseIsNewsAndATextHasNoDeadband)
{
    ChangeFilter filter(10, {});
    EXPECT_TRUE(filter.isNews(temperature(), {}, BEGIN)); // the first
    filter.notePublished(good({200}), BEGIN);
    Sample stale{Quality::Stale, {200}, TIME, "no answer"};
    EXPECT_TRUE(filter.isNews(temperature(), stale, BEGIN));
    filter.notePublished(stale, BEGIN);
    EXPECT_FALSE(filter.isNews(temperature(), stale, BEGIN));
    stale.cause = "the line was lost";
    EXPECT_TRUE(filter.isNews(temperature(), stale, BEGIN));
    Tag valve = tagOf("M5");
    valve.texts = {{0, "closed"}, {1, "open"}};
    filter.notePublished(good({0}), BEGIN);
    EXPECT_TRUE(filter.isNews(valve, good({1}), BEGIN));
}

TEST(ChangeFilter, WhatDoesNotChangeIsNewsAfterAHeartbeat)
{
    ChangeFilter filter(0, std::chrono::seconds(60));
    filter.notePublished(good({200}), BEGIN);
    EXPECT_FALSE(filter.isNews(temperature(), good({200}), BEGIN + std::chrono::seconds(59)));
    EXPECT_TRUE(filter.isNews(temperature(), good({200}), BEGIN + std::chrono::seconds(60)));
    ChangeFilter without(0, {});
    without.notePublished(good({200}), BEGIN);
    EXPECT_FALSE(without.isNews(temperature(), good({200}), BEGIN + std::chrono::hours(999)));
}
