#include "toolkit/stack/ScriptParser.h"

#include <gtest/gtest.h>

#include <QStringList>

using shell::RemoteAction;
using shell::ScriptParser;
using shell::ScriptStep;

TEST(ScriptParser, SkipsBlankAndCommentLinesWithoutCountingThem)
{
    ScriptParser parser;
    QList<ScriptStep> steps;
    for (const char* line : { "# a walk", "", "down", "   \t", "  # indented comment",
             "  select  \r", "wait 250", "shot top-menu", "quit" }) {
        QString error;
        if (const auto step = parser.parseLine(QString::fromLatin1(line), &error))
            steps.append(*step);
        EXPECT_TRUE(error.isEmpty()) << line << ": " << qPrintable(error);
    }
    ASSERT_EQ(steps.size(), 5);
    EXPECT_EQ(steps[0].kind, ScriptStep::Kind::Action);
    EXPECT_EQ(steps[0].action, RemoteAction::Down);
    EXPECT_EQ(steps[0].number, 1);
    EXPECT_EQ(steps[0].line, 3);
    EXPECT_EQ(steps[1].action, RemoteAction::Select);
    EXPECT_EQ(steps[1].number, 2);
    EXPECT_EQ(steps[1].line, 6);
    EXPECT_EQ(steps[1].text, "select");
    EXPECT_EQ(steps[2].kind, ScriptStep::Kind::Wait);
    EXPECT_EQ(steps[2].waitMS, 250);
    EXPECT_EQ(steps[2].number, 3);
    EXPECT_EQ(steps[3].kind, ScriptStep::Kind::Shot);
    EXPECT_EQ(steps[3].shotName, "top-menu");
    EXPECT_EQ(steps[4].kind, ScriptStep::Kind::Quit);
    EXPECT_EQ(steps[4].number, 5);
    EXPECT_EQ(steps[4].line, 9);
    EXPECT_EQ(parser.linesRead(), 9);
}

TEST(ScriptParser, KnowsEveryRemoteAction)
{
    const std::pair<const char*, RemoteAction> actions[] = {
        { "up", RemoteAction::Up },
        { "down", RemoteAction::Down },
        { "left", RemoteAction::Left },
        { "right", RemoteAction::Right },
        { "select", RemoteAction::Select },
        { "menu", RemoteAction::Menu },
        { "playpause", RemoteAction::PlayPause },
    };
    ScriptParser parser;
    int number = 0;
    for (const auto& [word, action] : actions) {
        const auto step = parser.parseLine(QString::fromLatin1(word), nullptr);
        ASSERT_TRUE(step) << word;
        EXPECT_EQ(step->action, action) << word;
        EXPECT_EQ(step->number, ++number);
    }
    EXPECT_EQ(parser.stepsRead(), 7);
}

TEST(ScriptParser, ALineThatIsNoStepSaysWhy)
{
    struct Row {
        const char* line;
        const char* says;
    };
    const Row rows[] = {
        { "sideways", "unknown step \"sideways\"" },
        { "Up", "unknown step \"Up\"" },
        { "up 2", "unknown step \"up 2\"" },
        { "quit now", "unknown step \"quit now\"" },
        { "wait", "\"wait\": wait takes milliseconds, 0 to 3600000" },
        { "wait -5", "\"wait -5\": wait takes milliseconds" },
        { "wait 1.5", "\"wait 1.5\": wait takes milliseconds" },
        { "wait 3600001", "\"wait 3600001\": wait takes milliseconds" },
        { "wait 10 20", "\"wait 10 20\": wait takes milliseconds" },
        { "shot", "\"shot\": shot takes a file name" },
        { "shot ../escape", "\"shot ../escape\": shot takes a file name" },
        { "shot a/b", "\"shot a/b\": shot takes a file name" },
        { "shot .hidden", "\"shot .hidden\": shot takes a file name" },
        { "shot a b", "\"shot a b\": shot takes a file name" },
    };
    ScriptParser parser;
    for (const Row& row : rows) {
        QString error;
        EXPECT_FALSE(parser.parseLine(QString::fromLatin1(row.line), &error)) << row.line;
        EXPECT_TRUE(error.startsWith(QLatin1String(row.says))) << qPrintable(error);
    }
    EXPECT_EQ(parser.stepsRead(), 0);
    const auto longest = parser.parseLine("wait 3600000", nullptr);
    ASSERT_TRUE(longest);
    EXPECT_EQ(longest->waitMS, 3'600'000);
    EXPECT_EQ(longest->number, 1);
}

TEST(ScriptParser, ShotTakesAPlainNameWhereShotsCanBeTaken)
{
    ScriptParser parser;
    const auto named = parser.parseLine("shot Player_1.png", nullptr);
    ASSERT_TRUE(named);
    EXPECT_EQ(named->shotName, "Player_1");

    ScriptParser windowless(QStringLiteral("needs --screenshots DIR"));
    QString error;
    EXPECT_FALSE(windowless.parseLine("shot top", &error));
    EXPECT_EQ(error, "\"shot top\" needs --screenshots DIR");
}
