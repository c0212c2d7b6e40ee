#include "ShellOptions.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

using mediashell::CommandLine;
using mediashell::ParsedOptions;

namespace {

ParsedOptions parse(const QStringList& arguments)
{
    return CommandLine::parse(arguments);
}

} // namespace

TEST(ShellOptions, DefaultsAreFullScreenWithoutAScript)
{
    const ParsedOptions parsed = parse({});
    ASSERT_EQ(parsed.action, ParsedOptions::Action::Run);
    EXPECT_FALSE(parsed.options.windowed);
    EXPECT_FALSE(parsed.options.verbose);
    EXPECT_FALSE(parsed.options.dump);
    EXPECT_TRUE(parsed.options.home.isEmpty());
    EXPECT_TRUE(parsed.options.script.isEmpty());
    EXPECT_TRUE(parsed.options.applianceDirs.isEmpty());
    EXPECT_EQ(parsed.options.windowSize(), QSize(1280, 720));
}

TEST(ShellOptions, EveryOptionInBothForms)
{
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    const ParsedOptions parsed = parse(
        { "--home", home.path(), "--appliances", "/a", "--appliances=/b", "--windowed", "--verbose",
            "--script=-", "--dump", "--screenshots", "/tmp/shots", "--keys=/tmp/keys.json" });
    ASSERT_EQ(parsed.action, ParsedOptions::Action::Run) << qPrintable(parsed.text);
    const auto& o = parsed.options;
    EXPECT_EQ(o.home, home.path());
    EXPECT_EQ(o.applianceDirs, QStringList({ "/a", "/b" }));
    EXPECT_TRUE(o.windowed);
    EXPECT_TRUE(o.verbose);
    EXPECT_EQ(o.script, "-");
    EXPECT_TRUE(o.dump);
    EXPECT_EQ(o.screenshotsDir, "/tmp/shots");
    EXPECT_EQ(o.keysFile, "/tmp/keys.json");
}

TEST(ShellOptions, SizeIsWidthByHeightAndMeansAWindow)
{
    const ParsedOptions parsed = parse({ "--size", "800x450" });
    ASSERT_EQ(parsed.action, ParsedOptions::Action::Run);
    EXPECT_TRUE(parsed.options.windowed);
    EXPECT_EQ(parsed.options.windowSize(), QSize(800, 450));
    EXPECT_EQ(CommandLine::parseSize("1920X1080"), QSize(1920, 1080));
    for (const char* bad :
        { "800", "800x", "x450", "0x450", "800x0", "-1x5", "20000x10", "8 x 4", "axb", "" })
        EXPECT_FALSE(CommandLine::parseSize(bad).isValid()) << bad;
    const ParsedOptions rejected = parse({ "--size=big" });
    EXPECT_EQ(rejected.action, ParsedOptions::Action::Fail);
    EXPECT_TRUE(rejected.text.contains("--size")) << qPrintable(rejected.text);
}

TEST(ShellOptions, HelpAndVersionExitAtOnce)
{
    for (const char* help : { "--help", "-h" }) {
        const ParsedOptions parsed = parse({ "--bogus-after", help });
        // The unknown option comes first and wins.
        EXPECT_EQ(parsed.action, ParsedOptions::Action::Fail);
        const ParsedOptions alone = parse({ help, "--bogus-after" });
        EXPECT_EQ(alone.action, ParsedOptions::Action::Exit);
        EXPECT_TRUE(alone.text.startsWith("usage: mediashell")) << qPrintable(alone.text);
        for (const char* option : { "--home", "--appliances", "--windowed", "--size", "--keys",
                 "--verbose", "--script", "--dump", "--screenshots", "--version" })
            EXPECT_TRUE(alone.text.contains(QLatin1String(option))) << option;
    }
    const ParsedOptions version = parse({ "--version" });
    EXPECT_EQ(version.action, ParsedOptions::Action::Exit);
    EXPECT_EQ(version.text, QStringLiteral("mediashell %1\n").arg(MEDIASHELL_VERSION_FOR_TESTS));
}

TEST(ShellOptions, MistakesAreUsageErrors)
{
    struct Case {
        QStringList arguments;
        const char* says;
    };
    const Case cases[] = {
        { { "--bogus" }, "unknown option --bogus" },
        { { "stray" }, "unexpected argument \"stray\"" },
        { { "--home" }, "--home needs a value" },
        { { "--script=" }, "--script needs a value" },
        { { "--windowed=yes" }, "--windowed takes no value" },
        { { "--home", "/no/such/folder/anywhere" }, "no such folder: /no/such/folder/anywhere" },
        { { "--dump" }, "--dump needs --script" },
        { { "--screenshots", "/tmp/x" }, "--screenshots needs --script" },
    };
    for (const Case& c : cases) {
        const ParsedOptions parsed = parse(c.arguments);
        EXPECT_EQ(parsed.action, ParsedOptions::Action::Fail) << qPrintable(c.arguments.join(' '));
        EXPECT_TRUE(parsed.text.startsWith(QStringLiteral("mediashell: ") + c.says))
            << qPrintable(parsed.text);
        EXPECT_TRUE(parsed.text.contains("--help"));
    }
}

TEST(ShellOptions, HomeIsMadeAbsolute)
{
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    const QString relative = QDir::current().relativeFilePath(home.path());
    const ParsedOptions parsed = parse({ "--home", relative });
    ASSERT_EQ(parsed.action, ParsedOptions::Action::Run) << qPrintable(parsed.text);
    EXPECT_EQ(parsed.options.home, QDir(home.path()).absolutePath());
}
