#include "host/project/project_settings.h"

#include "host/error.h"

#include <gtest/gtest.h>

namespace kmr {

namespace {

QString faultOf(const QString &text)
{
    try {
        parseProject(text, "/p/kmr.toml");
    } catch (const Error &error) {
        return error.text();
    }
    return {};
}

} // namespace

TEST(ProjectSettings, EveryKeyIsReadAndWrittenBack)
{
    const QString text = "link = \"tcp://10.0.0.1:8888\"\n"
                         "driver = \"lib/driver.so\"\n"
                         "format = \"csv\"\n"
                         "station = 3\n"
                         "timeout = 250\n"
                         "retries = 0\n"
                         "group-limit = 4\n"
                         "gap = 5\n"
                         "echo = \"off\"\n"
                         "in-step = \"off\"\n"
                         "word-order = \"high\"\n"
                         "byte-order = \"high\"\n"
                         "tags = [\n"
                         "    \"D100\",\n"
                         "    \"a \\\"b\\\"\",\n"
                         "]\n";
    const ProjectSettings settings = parseProject(text, "/p/kmr.toml");
    EXPECT_EQ(settings.driver, "/p/lib/driver.so");
    EXPECT_EQ(settings.timeout.count(), 250);
    EXPECT_EQ(settings.echo, EchoMode::Off);
    EXPECT_FALSE(settings.inStep);
    EXPECT_EQ(settings.tags, (QStringList{"D100", "a \"b\""}));
    EXPECT_EQ(formatProject(settings, "/p/kmr.toml"), text);
}

TEST(ProjectSettings, SectionsOfCommandsAreLeftAlone)
{
    const QString text = "station = 3\nlog.out = 1\n\n[ publish ]\nbroker = \"mqtt://b\"\n";
    EXPECT_EQ(parseProject(text, "/p/kmr.toml").station, 3);
}

TEST(ProjectSettings, WhatIsAsUsualIsNotWritten)
{
    EXPECT_EQ(formatProject(ProjectSettings(), "/p/kmr.toml"), "");
}

TEST(ProjectSettings, EveryBadKeyIsNamedWithItsLine)
{
    EXPECT_EQ(faultOf("station = 100\n\necho = \"maybe\"\n"),
              "/p/kmr.toml:1: station: \"100\" is not a number from 1 to 99\n"
              "/p/kmr.toml:3: echo: \"maybe\" is none of on, off, auto");
    EXPECT_TRUE(faultOf("statoin = 1")
                    .startsWith("/p/kmr.toml:1: unknown key \"statoin\", did "
                                "you mean \"station\"?"));
    EXPECT_TRUE(faultOf("names = \"none.csv\"").startsWith("/p/kmr.toml:1: names: "));
}

TEST(ProjectSettings, ASessionIsRunAsTheySay)
{
    ProjectSettings settings;
    settings.groupLimit = 2;
    settings.retries = 7;
    const SessionSettings serial =
        sessionSettingsOf(settings, parseLink("serial:///dev/ttyS0?baud=9600&frame=7E1"));
    EXPECT_EQ(serial.groupLimit, 2);
    EXPECT_EQ(serial.retries, 7);
    EXPECT_EQ(serial.poll.firstQuiet.count(), 167); // 64 characters of 10 bits, and 100 ms
    EXPECT_EQ(sessionSettingsOf(settings, parseLink("tcp://h:1")).poll.firstQuiet.count(), 0);
}

} // namespace kmr
