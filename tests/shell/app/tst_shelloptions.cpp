#include "ShellOptions.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

using mediashell::ShellOptions;

namespace {

// The options, or the error that says why there are none.
struct Parsed {
    std::optional<ShellOptions> options;
    QString error;
};

Parsed parse(const QStringList& arguments)
{
    Parsed parsed;
    parsed.options = ShellOptions::parse(arguments, &parsed.error);
    return parsed;
}

} // namespace

TEST(ShellOptions, DefaultsAreFullScreenWithoutAScript)
{
    const Parsed parsed = parse({});
    ASSERT_TRUE(parsed.options) << qPrintable(parsed.error);
    EXPECT_FALSE(parsed.options->windowed);
    EXPECT_FALSE(parsed.options->verbose);
    EXPECT_FALSE(parsed.options->dump);
    EXPECT_FALSE(parsed.options->help);
    EXPECT_TRUE(parsed.options->home.isEmpty());
    EXPECT_TRUE(parsed.options->script.isEmpty());
    EXPECT_TRUE(parsed.options->applianceDirs.isEmpty());
    EXPECT_EQ(parsed.options->windowSize(), QSize(1280, 720));
}

TEST(ShellOptions, EveryOptionInBothForms)
{
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    const Parsed parsed = parse(
        { "--home", home.path(), "--appliances", "/a", "--appliances=/b", "--windowed", "--verbose",
            "--script=-", "--dump", "--screenshots", "/tmp/shots", "--keys=/tmp/keys.json" });
    ASSERT_TRUE(parsed.options) << qPrintable(parsed.error);
    const ShellOptions& o = *parsed.options;
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
    const Parsed parsed = parse({ "--size", "800x450" });
    ASSERT_TRUE(parsed.options) << qPrintable(parsed.error);
    EXPECT_TRUE(parsed.options->windowed);
    EXPECT_EQ(parsed.options->windowSize(), QSize(800, 450));
    EXPECT_EQ(ShellOptions::parseSize("1920X1080"), QSize(1920, 1080));
    for (const char* bad :
        { "800", "800x", "x450", "0x450", "800x0", "-1x5", "20000x10", "8 x 4", "axb", "" })
        EXPECT_FALSE(ShellOptions::parseSize(bad).isValid()) << bad;
    const Parsed rejected = parse({ "--size=big" });
    EXPECT_FALSE(rejected.options);
    EXPECT_TRUE(rejected.error.contains("--size")) << qPrintable(rejected.error);
}

TEST(ShellOptions, HelpAndVersionAnswerALineThatParses)
{
    for (const char* help : { "--help", "-h" }) {
        // A mistake anywhere on the line wins, as in the other front ends.
        EXPECT_FALSE(parse({ "--bogus-after", help }).options);
        EXPECT_FALSE(parse({ help, "--bogus-after" }).options);
        // What is checked only for a run is not.
        const Parsed alone = parse({ help, "--dump", "--home", "/no/such/folder" });
        ASSERT_TRUE(alone.options) << qPrintable(alone.error);
        EXPECT_TRUE(alone.options->help);
    }
    const QString usage = ShellOptions::usage();
    EXPECT_TRUE(usage.startsWith("usage: mediashell")) << qPrintable(usage);
    for (const char* option : { "--home", "--appliances", "--windowed", "--size", "--keys",
             "--verbose", "--script", "--dump", "--screenshots", "--version" })
        EXPECT_TRUE(usage.contains(QLatin1String(option))) << option;
    const Parsed version = parse({ "--version" });
    ASSERT_TRUE(version.options);
    EXPECT_TRUE(version.options->version);
    EXPECT_EQ(ShellOptions::versionText(),
        QStringLiteral("mediashell %1\n").arg(MEDIASHELL_VERSION_FOR_TESTS));
}

TEST(ShellOptions, MistakesAreUsageErrors)
{
    struct Case {
        QStringList arguments;
        const char* says;
    };
    const Case cases[] = {
        { { "--bogus" }, "Unknown option 'bogus'." },
        { { "stray" }, "unexpected argument \"stray\"" },
        { { "--home" }, "Missing value after '--home'." },
        { { "--script=" }, "--script needs a value" },
        { { "--windowed=yes" }, "Unexpected value after '--windowed'." },
        { { "--home", "/no/such/folder/anywhere" }, "no such folder: /no/such/folder/anywhere" },
        { { "--dump" }, "--dump needs --script" },
        { { "--screenshots", "/tmp/x" }, "--screenshots needs --script" },
    };
    for (const Case& c : cases) {
        const Parsed parsed = parse(c.arguments);
        EXPECT_FALSE(parsed.options) << qPrintable(c.arguments.join(' '));
        EXPECT_EQ(parsed.error, QLatin1String(c.says));
    }
}

TEST(ShellOptions, HomeIsMadeAbsolute)
{
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    const QString relative = QDir::current().relativeFilePath(home.path());
    const Parsed parsed = parse({ "--home", relative });
    ASSERT_TRUE(parsed.options) << qPrintable(parsed.error);
    EXPECT_EQ(parsed.options->home, QDir(home.path()).absolutePath());
}
