// Vireo Trailers in the real program: both appliances in the shell's top menu, the
// four lists, a ranked list from the local feed service (vireo-feedd) and a trailer
// playing; and what the row says when the service cannot be reached. Runs are scripted
// on an X server of the test's own, each bounded in time.
#include "FeeddProcess.h"
#include "MediashellRunSupport.h"

#include <QColor>
#include <QImage>

using namespace runsupport;

namespace {

const QStringList kLists { "Most Viewed", "Most Downloaded", "Top Rated", "Top Favorites" };

// Pixels of strong, bright colour in the left half of a shot, where the preview stands:
// the demo's thumbnails are test patterns (about 20,000 such pixels), the rest of the
// preview is grey text on a dark background (a few hundred, from the text's smoothing).
int colouredPixelsOfThePreview(const QImage& shot)
{
    int coloured = 0;
    for (int y = 0; y < shot.height(); y += 2) {
        for (int x = 0; x < shot.width() / 2; x += 2) {
            const QColor colour(shot.pixel(x, y));
            coloured += colour.hsvSaturation() > 128 && colour.value() > 96 ? 1 : 0;
        }
    }
    return coloured;
}

class MediashellTrailers : public XvfbRunTest {
protected:
    static void SetUpTestSuite()
    {
        XvfbRunTest::SetUpTestSuite();
        s_feed = std::make_unique<FeeddProcess>(QStringLiteral(VIREO_FEEDD_BIN));
        s_base = s_feed->waitForBase();
    }
    static void TearDownTestSuite()
    {
        s_feed.reset();
        XvfbRunTest::TearDownTestSuite();
    }

    QProcessEnvironment environmentFor(const QString& endpoint) const
    {
        QProcessEnvironment env = environment();
        env.insert("VIREO_TRAILER_ENDPOINT", endpoint);
        return env;
    }

    // Steps "wait 250" until `done` holds for the dump line, for at most `ms`; the last
    // line.
    template <typename Predicate>
    static QJsonObject waitFor(ShellRun& run, int& number, int ms, Predicate done)
    {
        QJsonObject screen;
        for (int waited = 0; waited < ms; waited += 250) {
            screen = step(run, "wait 250", ++number);
            if (done(screen))
                break;
        }
        return screen;
    }

    // From the top menu into Vireo Trailers and onto "Top Rated", chosen.
    static QJsonObject chooseTopRated(ShellRun& run, int& number)
    {
        const QJsonObject top = run.nextLine();
        EXPECT_EQ(top.value("step").toInt(-1), 0) << qPrintable(run.err());
        EXPECT_EQ(titles(top), QStringList({ "Vireo Movies", "Vireo Trailers" }));
        const QJsonObject focused = step(run, "down", ++number);
        EXPECT_EQ(focused.value("preview").toObject().value("image").toString(),
            ":/vireo-trailers/ApplianceIcon.png");
        const QJsonObject lists = step(run, "select", ++number);
        EXPECT_EQ(lists.value("label").toString(), "VireoTrailerListsController");
        EXPECT_EQ(lists.value("title").toString(), "Vireo Trailers");
        EXPECT_EQ(titles(lists), kLists);
        for (const QJsonValue& row : lists.value("rows").toArray())
            EXPECT_EQ(row.toObject().value("kind").toString(), "folder");
        step(run, "down", ++number);
        EXPECT_EQ(step(run, "down", ++number).value("focus").toInt(-1), 2);
        return step(run, "select", ++number);
    }

    static inline std::unique_ptr<FeeddProcess> s_feed;
    static inline QString s_base;
};

} // namespace

TEST_F(MediashellTrailers, TopRatedOpensAsNumberedTrailersAndOnePlaysWithoutResume)
{
    const QString base = s_base;
    ASSERT_FALSE(base.isEmpty()) << "vireo-feedd said: " << qPrintable(s_feed->output());
    ShellRun run(shellArguments({ "--script", "-", "--dump", "--screenshots", path("shots") }),
        environmentFor(base));
    ASSERT_TRUE(run.started());
    int number = 0;
    chooseTopRated(run, number);
    const QJsonObject list = waitFor(run, number, 10'000, [](const QJsonObject& screen) {
        return screen.value("label").toString() == "VireoTrailerController";
    });
    ASSERT_EQ(list.value("label").toString(), "VireoTrailerController") << qPrintable(run.err());
    EXPECT_EQ(stack(list),
        QStringList({ "ShellMenu", "VireoTrailerListsController", "VireoTrailerController" }));
    EXPECT_EQ(list.value("title").toString(), "Top Rated");
    const QStringList rows = titles(list);
    ASSERT_GE(rows.size(), 10);
    EXPECT_TRUE(rows.at(0).startsWith("  1  ")) << qPrintable(rows.at(0));
    EXPECT_TRUE(rows.at(8).startsWith("  9  ")) << qPrintable(rows.at(8));
    EXPECT_TRUE(rows.at(9).startsWith("10  ")) << qPrintable(rows.at(9));
    const QJsonObject preview = list.value("preview").toObject();
    EXPECT_EQ(preview.value("kind").toString(), "media");
    EXPECT_EQ("  1  " + preview.value("title").toString(), rows.at(0));
    EXPECT_TRUE(preview.value("image").toString().startsWith(base + "/"))
        << qPrintable(preview.value("image").toString());
    step(run, "wait 1000", ++number);
    step(run, "shot list", ++number);
    EXPECT_GE(colouredPixelsOfThePreview(QImage(path("shots/list.png"))), 5000)
        << "the thumbnail is shown; " << qPrintable(run.err());

    for (int i = 0; i < 9; ++i)
        step(run, "down", ++number);
    const QJsonObject playing = step(run, "select", ++number);
    EXPECT_EQ(playing.value("kind").toString(), "player");
    EXPECT_EQ(player(playing).value("state").toString(), "playing") << qPrintable(run.err());
    EXPECT_FALSE(player(playing).value("allowsResume").toBool(true));
    EXPECT_FALSE(player(playing).value("resumeOffered").toBool(true));
    EXPECT_TRUE(player(playing).value("url").toString().endsWith("x.flv"))
        << qPrintable(player(playing).value("url").toString());

    EXPECT_EQ(step(run, "menu", ++number).value("focus").toInt(-1), 9);
    const QJsonObject back = step(run, "menu", ++number);
    EXPECT_EQ(back.value("label").toString(), "VireoTrailerListsController");
    run.closeInput();
    EXPECT_EQ(run.finish(), 0) << qPrintable(run.err());
}

TEST_F(MediashellTrailers, AnUnreachableServiceShowsNoTrailersAvailableWithinSeconds)
{
    const QString closed = FeeddProcess::closedBase();
    ASSERT_FALSE(closed.isEmpty());
    ShellRun run(shellArguments({ "--script", "-", "--dump" }), environmentFor(closed));
    ASSERT_TRUE(run.started());
    int number = 0;
    chooseTopRated(run, number);
    const QJsonObject failed = waitFor(run, number, 5000, [](const QJsonObject& screen) {
        return screen.value("preview").toObject().value("title").toString()
            == "No trailers available.";
    });
    EXPECT_EQ(
        failed.value("preview").toObject().value("title").toString(), "No trailers available.")
        << qPrintable(run.err());
    EXPECT_EQ(failed.value("label").toString(), "VireoTrailerListsController");
    EXPECT_EQ(failed.value("focus").toInt(-1), 2);
    run.closeInput();
    EXPECT_EQ(run.finish(), 0) << qPrintable(run.err());
}
