#include "ShellOptions.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

using mediashell::ShellOptions;

namespace {

std::optional<ShellOptions> parse(const QStringList& arguments, QString* error = nullptr)
{
    return ShellOptions::parse(arguments, error);
}

TEST(ShellOptions, EveryOptionInBothFormsAndTheDefaults)
{
    QTemporaryDir home;
    QString error;
    const auto o
        = parse({ "--home", QDir::current().relativeFilePath(home.path()), "--appliances", "/a",
                    "--appliances=/b", "--verbose", "--script=-", "--dump", "--screenshots",
                    "/tmp/shots", "--keys=/tmp/keys.json", "--remote-port", "8080" },
            &error);
    ASSERT_TRUE(o) << qPrintable(error);
    EXPECT_EQ(o->home, QDir(home.path()).absolutePath());
    EXPECT_EQ(o->applianceDirs, QStringList({ "/a", "/b" }));
    EXPECT_TRUE(o->verbose && o->dump);
    EXPECT_EQ(QStringList({ o->script, o->screenshotsDir, o->keysFile }),
        QStringList({ "-", "/tmp/shots", "/tmp/keys.json" }));
    EXPECT_EQ(o->remotePort, 8080);
    EXPECT_FALSE(o->windowed || o->kiosk) << "full screen unless asked, not as the box's shell";
    EXPECT_EQ(o->windowSize(), QSize(1280, 720));

    const auto sized = parse({ "--size", "1920X1080" });
    EXPECT_TRUE(sized.value().windowed) << "a size means a window";
    EXPECT_EQ(sized->windowSize(), QSize(1920, 1080));
    EXPECT_TRUE(parse({ "--windowed" }).value().windowed);
    EXPECT_TRUE(parse({ "--kiosk" }).value().kiosk);
    EXPECT_TRUE(parse({ "--version" }).value().version);
}

// A mistake anywhere on the line wins over --help; what is checked only for a run
// (the home folder, --dump without --script) does not.
TEST(ShellOptions, MistakesAreUsageErrorsAndHelpAnswersALineThatParses)
{
    const std::pair<QStringList, const char*> mistakes[] = {
        { { "--help", "--bogus" }, "Unknown option 'bogus'." },
        { { "stray" }, "unexpected argument \"stray\"" },
        { { "--script=" }, "--script needs a value" },
        { { "--size=0x450" }, "--size wants WIDTHxHEIGHT, not \"0x450\"" },
        { { "--size=16385x10" }, "--size wants WIDTHxHEIGHT, not \"16385x10\"" },
        { { "--size=8 x 4" }, "--size wants WIDTHxHEIGHT, not \"8 x 4\"" },
        { { "--remote-port=65535" }, "--remote-port wants a port from 0 to 65534, not \"65535\"" },
        { { "--home", "/no/such/folder" }, "no such folder: /no/such/folder" },
        { { "--dump" }, "--dump needs --script" },
        { { "--screenshots", "/tmp/x" }, "--screenshots needs --script" },
    };
    for (const auto& [arguments, says] : mistakes) {
        QString error;
        EXPECT_FALSE(parse(arguments, &error)) << qPrintable(arguments.join(' '));
        EXPECT_EQ(error, QLatin1String(says));
    }
    for (const char* help : { "--help", "-h" })
        EXPECT_TRUE(parse({ help, "--dump", "--home", "/no/such/folder" }).value().help) << help;
}

} // namespace
