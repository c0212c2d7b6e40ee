// vireo-screens' walks through the appliance's screens, as text with playback moving on or
// as JSON, and the steps it refuses before anything runs.

#include "ScreenWalk.h"
#include "TempHome.h"

#include <QBuffer>

namespace {

class VireoScreensTest : public TempHome {
protected:
    void SetUp() override
    {
        TempHome::SetUp();
        writeFile(movies() + "Heat.m4v");
        writeFile(
            movies() + "Heat.xml", "<movie><title>Heat</title><duration>600</duration></movie>");
    }
    int walk(const QStringList& args)
    {
        QBuffer out(&m_out);
        QBuffer err(&m_err);
        out.open(QIODevice::WriteOnly | QIODevice::Truncate);
        err.open(QIODevice::WriteOnly | QIODevice::Truncate);
        return ScreenWalk::run(QStringList { "--home", home() } + args, out, err);
    }
    QByteArray m_out;
    QByteArray m_err;
};

TEST_F(VireoScreensTest, AWalkShowsEachStepsScreenUntilQuit)
{
    ASSERT_EQ(walk({ "select", "wait:95", "menu", "down", "select", "select", "quit", "menu" }), 0);
    EXPECT_EQ(m_err, "vireo-screens: \"wait:95\" is deprecated; write \"wait 95000\"\n");
    const QStringList steps = QString::fromUtf8(m_out).split("== ", Qt::SkipEmptyParts);
    ASSERT_EQ(steps.size(), 7) << m_out.toStdString();
    EXPECT_TRUE(steps[0].contains("> Heat\n"));
    EXPECT_TRUE(
        steps[2].startsWith("wait:95\n") && steps[2].contains("player: playing 0:01:35 / 0:10:00"))
        << steps[2].toStdString();
    EXPECT_TRUE(steps[4].contains("    ----\n  > Settings  >\n"));
    EXPECT_TRUE(steps[5].startsWith("select\n[VireoConfigController] Settings"));
    EXPECT_TRUE(steps[6].startsWith("select\n[VireoAboutController]"));
    EXPECT_TRUE(steps[6].contains("| Vireo Software Version  0.96.16.118"));
    ASSERT_EQ(walk({ "--json", "down" }), 0);
    EXPECT_TRUE(m_out.split('\n').value(1).contains("\"step\":\"down\"")) << m_out.toStdString();
}

TEST_F(VireoScreensTest, StepsItCannotTakeAndMissingHomesAreUsageErrors)
{
    const std::pair<QStringList, const char*> rows[] = {
        { { "down", "sideways" }, "error: unknown step \"sideways\"" },
        { { "down", "shot top" },
            "error: \"shot top\" needs a window, and vireo-screens draws none" },
        { { "down", "wait:999999" }, "error: \"wait 999999000\": wait takes milliseconds" },
        { { "--home", "/nowhere" }, "error: no such folder: /nowhere" },
    };
    for (const auto& [args, says] : rows) {
        EXPECT_EQ(walk(args), 2) << says;
        EXPECT_TRUE(m_err.contains(says)) << m_err.toStdString();
        EXPECT_TRUE(m_out.isEmpty()) << says << ": nothing runs";
    }
}

} // namespace
