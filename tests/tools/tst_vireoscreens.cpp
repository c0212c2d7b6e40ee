#include "ScreenWalk.h"
#include "TempHome.h"

#include <QBuffer>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

struct Walk {
    int status = -1;
    QString out;
    QString err;
    // The --json lines, one screen per step.
    QList<QJsonObject> screens() const
    {
        QList<QJsonObject> screens;
        for (const QString& line : out.split(u'\n', Qt::SkipEmptyParts))
            screens.append(QJsonDocument::fromJson(line.toUtf8()).object());
        return screens;
    }
};

class VireoScreensTest : public TempHome {
protected:
    Walk walk(QStringList args) const
    {
        args.prepend(home());
        args.prepend(QStringLiteral("--home"));
        QByteArray outBytes;
        QByteArray errBytes;
        QBuffer out(&outBytes);
        QBuffer err(&errBytes);
        out.open(QIODevice::WriteOnly);
        err.open(QIODevice::WriteOnly);
        Walk result;
        result.status = ScreenWalk::run(args, out, err);
        result.out = QString::fromUtf8(outBytes);
        result.err = QString::fromUtf8(errBytes);
        return result;
    }
};

} // namespace

TEST_F(VireoScreensTest, textWalkShowsRowsFocusAndTheSettingsScreens)
{
    writeFile(movies() + QStringLiteral("Heat.m4v"));
    // Nothing runs after "quit".
    const Walk result = walk({ QStringLiteral("down"), QStringLiteral("select"),
        QStringLiteral("select"), QStringLiteral("quit"), QStringLiteral("menu") });
    ASSERT_EQ(result.status, 0) << qPrintable(result.err);
    const QStringList steps = result.out.split(QStringLiteral("== "), Qt::SkipEmptyParts);
    ASSERT_EQ(steps.size(), 4) << qPrintable(result.out);
    EXPECT_TRUE(steps[0].contains(QStringLiteral("> Heat\n")));
    EXPECT_TRUE(steps[1].contains(QStringLiteral("    ----\n  > Settings  >\n")));
    EXPECT_TRUE(steps[2].startsWith(QStringLiteral("select\n[VireoConfigController] Settings")));
    EXPECT_TRUE(steps[3].contains(QStringLiteral("[VireoAboutController]")));
    EXPECT_TRUE(steps[3].contains(QStringLiteral("| Vireo Software Version  0.96.16.118")));
}

TEST_F(VireoScreensTest, playbackWaitLeavesAResumePointOfferedNextTime)
{
    writeFile(movies() + QStringLiteral("Heat.m4v"));
    writeFile(movies() + QStringLiteral("Heat.xml"),
        "<movie><title>Heat</title><duration>600</duration></movie>");
    const Walk result = walk({ QStringLiteral("--json"), QStringLiteral("select"),
        QStringLiteral("wait:95"), QStringLiteral("menu"), QStringLiteral("select") });
    ASSERT_EQ(result.status, 0) << qPrintable(result.err);
    EXPECT_EQ(result.err, "vireo-screens: \"wait:95\" is deprecated; write \"wait 95000\"\n");
    const QList<QJsonObject> screens = result.screens();
    ASSERT_EQ(screens.size(), 5);
    const QJsonObject playing = screens[2].value(u"screen").toObject().value(u"player").toObject();
    EXPECT_EQ(playing.value(u"state").toString(), QStringLiteral("playing"));
    EXPECT_EQ(playing.value(u"positionMS").toInteger(), 95'000);
    const QJsonObject again = screens[4].value(u"screen").toObject();
    EXPECT_EQ(
        again.value(u"player").toObject().value(u"state").toString(), QStringLiteral("prompt"));
    EXPECT_EQ(again.value(u"rows").toArray().at(0).toObject().value(u"title").toString(),
        QStringLiteral("Resume Playing"));
}

TEST_F(VireoScreensTest, stepsItCannotTakeAndMissingHomesAreUsageErrors)
{
    const std::pair<const char*, const char*> rows[] = {
        { "sideways", "error: unknown step \"sideways\"" },
        { "shot top", "error: \"shot top\" needs a window, and vireo-screens draws none" },
        { "wait 3600001", "error: \"wait 3600001\": wait takes milliseconds" },
        { "wait:-1", "error: unknown step \"wait:-1\"" },
        { "wait:x", "error: unknown step \"wait:x\"" },
        { "wait:999999", "error: \"wait 999999000\": wait takes milliseconds" },
    };
    for (const auto& [step, says] : rows) {
        const Walk refused = walk({ QStringLiteral("down"), QString::fromLatin1(step) });
        EXPECT_EQ(refused.status, 2) << step;
        EXPECT_TRUE(refused.err.contains(QLatin1String(says))) << qPrintable(refused.err);
        EXPECT_TRUE(refused.out.isEmpty()) << step << ": nothing runs";
    }
    const Walk missing = walk({ QStringLiteral("--home"), root() + QStringLiteral("/nowhere") });
    EXPECT_EQ(missing.status, 2);
}
