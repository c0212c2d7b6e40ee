#include "toolkit/stack/ScriptParser.h"

#include <gtest/gtest.h>

#include <QStringList>

using shell::RemoteAction;
using shell::ScriptParser;
using shell::ScriptStep;
using Kind = ScriptStep::Kind;

// Steps are numbered from 1 and keep their line; blank and comment lines are neither.
TEST(ScriptParser, ReadsEachKindOfStepAndSkipsBlankAndCommentLines)
{
    ScriptParser parser;
    QList<ScriptStep> steps;
    for (const char* line : { "# a walk", "", "  playpause  \r", "   \t", "  # indented",
             "wait 3600000", "shot Player_1.png", "quit" }) {
        QString error;
        if (const auto step = parser.parseLine(QString::fromLatin1(line), &error))
            steps.append(*step);
        EXPECT_TRUE(error.isEmpty()) << line << ": " << qPrintable(error);
    }
    ASSERT_EQ(steps.size(), 4);
    const Kind kinds[] = { Kind::Action, Kind::Wait, Kind::Shot, Kind::Quit };
    const int lines[] = { 3, 6, 7, 8 };
    for (int i = 0; i < steps.size(); ++i) {
        EXPECT_EQ(steps[i].kind, kinds[i]) << i;
        EXPECT_EQ(steps[i].number, i + 1) << i;
        EXPECT_EQ(steps[i].line, lines[i]) << i;
    }
    EXPECT_EQ(steps[0].action, RemoteAction::PlayPause);
    EXPECT_EQ(steps[0].text, "playpause");
    EXPECT_EQ(steps[1].waitMS, 3'600'000);
    EXPECT_EQ(steps[2].shotName, "Player_1");
}

TEST(ScriptParser, ALineThatIsNoStepSaysWhy)
{
    struct Row {
        const char* line;
        const char* says;
    };
    const Row rows[] = {
        { "sideways", "unknown step \"sideways\"" },
        { "up 2", "unknown step \"up 2\"" },
        { "quit now", "unknown step \"quit now\"" },
        { "wait", "\"wait\": wait takes milliseconds, 0 to 3600000" },
        { "wait -5", "\"wait -5\": wait takes milliseconds" },
        { "wait 3600001", "\"wait 3600001\": wait takes milliseconds" },
        { "shot", "\"shot\": shot takes a file name" },
        { "shot ../escape", "\"shot ../escape\": shot takes a file name" },
        { "shot .hidden", "\"shot .hidden\": shot takes a file name" },
    };
    ScriptParser parser;
    for (const Row& row : rows) {
        QString error;
        EXPECT_FALSE(parser.parseLine(QString::fromLatin1(row.line), &error)) << row.line;
        EXPECT_TRUE(error.startsWith(QLatin1String(row.says))) << qPrintable(error);
    }
    EXPECT_EQ(parser.stepsRead(), 0);

    // Where no shots can be taken, a good shot step is refused with the parser's reason.
    ScriptParser windowless(QStringLiteral("needs --screenshots DIR"));
    QString error;
    EXPECT_FALSE(windowless.parseLine("shot top", &error));
    EXPECT_EQ(error, "\"shot top\" needs --screenshots DIR");
}
