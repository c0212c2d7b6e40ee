#include "ScriptParser.h"

#include <gtest/gtest.h>

using mediashell::ScriptParser;
using mediashell::ScriptStep;
using shell::RemoteAction;

TEST(ScriptParser, SkipsBlankAndCommentLinesWithoutCountingThem)
{
    QList<ScriptStep> steps;
    QString error;
    const QString script = "# a walk\n"
                           "\n"
                           "down\n"
                           "   \t\n"
                           "  # indented comment\n"
                           "  select  \r\n"
                           "wait 250\n"
                           "shot top-menu\n"
                           "quit\n";
    ASSERT_TRUE(ScriptParser::parseAll(script, true, &steps, &error)) << qPrintable(error);
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
    ScriptParser parser(false);
    int number = 0;
    for (const auto& [word, action] : actions) {
        const auto result = parser.parseLine(QString::fromLatin1(word));
        ASSERT_EQ(result.outcome, ScriptParser::Outcome::Step) << word;
        EXPECT_EQ(result.step.action, action) << word;
        EXPECT_EQ(result.step.number, ++number);
    }
    EXPECT_EQ(parser.stepsRead(), 7);
    EXPECT_EQ(parser.linesRead(), 7);
}

TEST(ScriptParser, UnknownStepNamesItsLine)
{
    QString error;
    QList<ScriptStep> steps;
    EXPECT_FALSE(ScriptParser::parseAll("down\n\n# c\nsideways\nselect\n", false, &steps, &error));
    EXPECT_EQ(error, "script line 4: unknown step \"sideways\"");

    ScriptParser parser(false);
    EXPECT_EQ(parser.parseLine("").outcome, ScriptParser::Outcome::Skipped);
    EXPECT_EQ(parser.parseLine("up").outcome, ScriptParser::Outcome::Step);
    for (const char* bad : { "Up", "up 2", "wait", "wait -5", "wait 1.5", "wait 3600001",
             "wait 10 20", "quit now", "jump" }) {
        const auto result = parser.parseLine(QString::fromLatin1(bad));
        EXPECT_EQ(result.outcome, ScriptParser::Outcome::Error) << bad;
        EXPECT_TRUE(
            result.error.startsWith(QStringLiteral("script line %1: ").arg(parser.linesRead())))
            << qPrintable(result.error);
    }
    EXPECT_EQ(parser.stepsRead(), 1);
    const auto longest = parser.parseLine("wait 3600000");
    ASSERT_EQ(longest.outcome, ScriptParser::Outcome::Step);
    EXPECT_EQ(longest.step.waitMS, 3'600'000);
    EXPECT_EQ(longest.step.number, 2);
}

TEST(ScriptParser, ShotNeedsAScreenshotFolderAndAPlainName)
{
    QString error;
    EXPECT_FALSE(ScriptParser::parseAll("down\nshot top\n", false, nullptr, &error));
    EXPECT_EQ(error, "script line 2: \"shot top\" needs --screenshots DIR");

    ScriptParser parser(true);
    for (const char* bad : { "shot", "shot ../escape", "shot a/b", "shot .hidden", "shot a b" })
        EXPECT_EQ(parser.parseLine(QString::fromLatin1(bad)).outcome, ScriptParser::Outcome::Error)
            << bad;
    const auto named = parser.parseLine("shot Player_1.png");
    ASSERT_EQ(named.outcome, ScriptParser::Outcome::Step);
    EXPECT_EQ(named.step.shotName, "Player_1");
}

TEST(ScriptParser, AnEmptyScriptHasNoSteps)
{
    QList<ScriptStep> steps;
    QString error;
    EXPECT_TRUE(ScriptParser::parseAll("", false, &steps, &error));
    EXPECT_TRUE(ScriptParser::parseAll("# only a comment\n\n", false, &steps, &error));
    EXPECT_TRUE(steps.isEmpty());
}
