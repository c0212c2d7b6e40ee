// The menu of the four lists against the real local feed service, vireo-feedd, run
// for each test over a demo library of its own: loading, the numbered trailers,
// playing one, retrying, and loads that end after the user moved on.
#include "TrailersMenuFixture.h"

#include "FeeddProcess.h"
#include "toolkit/player/VideoPlayerController.h"
#include "vtvplugin/media/VTVMediaAsset.h"

using shell::RemoteAction;

namespace {

constexpr int kLoadLimitMS = 10'000;
constexpr long kTopRated = 2;

} // namespace

class TrailersFeedTest : public TrailersMenuFixture {
protected:
    static void SetUpTestSuite()
    {
        s_feed = std::make_unique<FeeddProcess>(QStringLiteral(VIREO_FEEDD_BIN));
        s_base = s_feed->waitForBase();
    }
    static void TearDownTestSuite() { s_feed.reset(); }

    void SetUp() override
    {
        TrailersMenuFixture::SetUp();
        ASSERT_FALSE(s_base.isEmpty()) << "vireo-feedd said: " << qPrintable(s_feed->output());
        setEndpoint(s_base);
    }

    bool waitForTrailers()
    {
        return QTest::qWaitFor([&] { return trailers(); }, kLoadLimitMS);
    }

    static inline std::unique_ptr<FeeddProcess> s_feed;
    static inline QString s_base;
};

TEST_F(TrailersFeedTest, AChosenListSaysLoadingThenOpensAsNumberedTrailersThatPlay)
{
    VireoTrailerListsController* menu = enter();
    ASSERT_NE(menu, nullptr);
    press(RemoteAction::Down, kTopRated);
    press(RemoteAction::Select);
    EXPECT_EQ(previewTitle(), u"Loading\u2026"_s);
    EXPECT_EQ(m_stack->topController(), menu);
    ASSERT_TRUE(waitForTrailers()) << qPrintable(previewTitle());

    VireoTrailerController* list = trailers();
    EXPECT_EQ(list->list().title(), u"Top Rated"_s);
    const VireoTrailerLoader& loader = *menu->loader(kTopRated);
    ASSERT_GE(list->itemCount(), 10) << "ranks from 10 on need ten trailers";
    EXPECT_EQ(list->itemCount(), loader.assetListSize());
    const QStringList rows = rowTitles();
    const auto title = [&](long row) { return loader.assetList()[row]->title(); };
    for (long row = 0; row < list->itemCount(); ++row) {
        EXPECT_FALSE(title(row).isEmpty()) << row;
        EXPECT_TRUE(rows.at(row).endsWith(u"  "_s + title(row))) << qPrintable(rows.at(row));
    }
    EXPECT_EQ(rows.at(0), u"  1  "_s + title(0));
    EXPECT_EQ(rows.at(8), u"  9  "_s + title(8));
    EXPECT_EQ(rows.at(9), u"10  "_s + title(9));

    press(RemoteAction::Down, 9);
    const QJsonObject preview = m_stack->describeTop().value(u"preview"_s).toObject();
    EXPECT_EQ(preview[u"kind"_s].toString(), u"media"_s);
    EXPECT_TRUE(preview[u"image"_s].toString().startsWith(s_base + u'/'))
        << qPrintable(preview[u"image"_s].toString());
    EXPECT_TRUE(preview[u"image"_s].toString().endsWith(u".jpg"_s));

    press(RemoteAction::Select);
    const auto* player = qobject_cast<shell::VideoPlayerController*>(m_stack->topController());
    ASSERT_NE(player, nullptr);
    EXPECT_EQ(player->videoPlayer()->media(), loader.assetList()[9]);
    EXPECT_FALSE(player->allowsResume());
    EXPECT_EQ(player->state(), shell::VideoPlayerController::State::Playing);
    EXPECT_TRUE(player->videoPlayer()->media()->mediaURL().endsWith(u"x.flv"_s));

    // Back to the lists; the loaded list opens at once, without asking again.
    press(RemoteAction::Menu, 2);
    ASSERT_EQ(lists(), menu);
    press(RemoteAction::Select);
    ASSERT_NE(trailers(), nullptr);
    EXPECT_FALSE(loader.isLoading());
    EXPECT_EQ(trailers()->itemCount(), loader.assetListSize());
}

TEST_F(TrailersFeedTest, AListThatFailedIsFetchedAgainWhenChosenAgain)
{
    setEndpoint(FeeddProcess::closedBase());
    VireoTrailerListsController* menu = enter();
    ASSERT_NE(menu, nullptr);
    press(RemoteAction::Select);
    ASSERT_TRUE(waitForPreview(u"No trailers available."_s, 5000));

    setEndpoint(s_base);
    press(RemoteAction::Select);
    EXPECT_EQ(previewTitle(), u"Loading\u2026"_s);
    ASSERT_TRUE(waitForTrailers());
    EXPECT_EQ(trailers()->list().title(), u"Most Viewed"_s);
    EXPECT_GE(trailers()->itemCount(), 1);
}

TEST_F(TrailersFeedTest, AListThatComesBackEmptySaysNoTrailersAvailable)
{
    const QString library = root() + u"/empty-feed"_s;
    writeFile(library + u"/catalogue.json"_s,
        R"({"trailers": [], "lists": {"vireo.stats.videos.getMostViewed": [],
            "vireo.stats.videos.getMostDownloaded": [], "vireo.stats.videos.getTopRated": [],
            "vireo.stats.videos.getTopFavorites": []}})");
    FeeddProcess empty(QStringLiteral(VIREO_FEEDD_BIN), library);
    const QString base = empty.waitForBase();
    ASSERT_FALSE(base.isEmpty()) << "vireo-feedd said: " << qPrintable(empty.output());
    setEndpoint(base);

    VireoTrailerListsController* menu = enter();
    ASSERT_NE(menu, nullptr);
    press(RemoteAction::Down, 3);
    for (int attempt = 1; attempt <= 2; ++attempt) {
        SCOPED_TRACE(attempt);
        press(RemoteAction::Select);
        EXPECT_EQ(previewTitle(), u"Loading\u2026"_s);
        ASSERT_TRUE(waitForPreview(u"No trailers available."_s, kLoadLimitMS));
        EXPECT_EQ(m_stack->topController(), menu);
        EXPECT_FALSE(menu->loader(3)->isLoaded());
    }
}

// The user chose a list and then moved on before it came: it must not open over
// whatever they are looking at now.
TEST_F(TrailersFeedTest, AListThatArrivesAfterTheFocusMovedOnOpensOnlyWhenChosenAgain)
{
    VireoTrailerListsController* menu = enter();
    ASSERT_NE(menu, nullptr);
    press(RemoteAction::Select);
    press(RemoteAction::Down);
    ASSERT_TRUE(QTest::qWaitFor([&] { return menu->loader(0)->isLoaded(); }, kLoadLimitMS));
    QCoreApplication::processEvents();
    EXPECT_EQ(m_stack->topController(), menu);
    EXPECT_EQ(previewTitle(), u"Most Downloaded"_s);
    press(RemoteAction::Up);
    EXPECT_EQ(previewTitle(), u"Most Viewed"_s);
    press(RemoteAction::Select);
    ASSERT_NE(trailers(), nullptr) << "a loaded list opens at once";
}

TEST_F(TrailersFeedTest, GoingBackAbandonsTheLoadAndAMenuTakenOffMidLoadStartsAfresh)
{
    ASSERT_NE(enter(), nullptr);
    press(RemoteAction::Select);
    press(RemoteAction::Menu);
    // Time for a reply to turn up anyway: the service answers within tens of
    // milliseconds (see the tests above).
    QTest::qWait(500);
    EXPECT_EQ(m_stack->count(), 1);

    // A menu taken off the stack mid-load and put back again is not stuck loading.
    VireoTrailerListsController* menu = enter();
    press(RemoteAction::Select);
    std::unique_ptr<shell::LayerController> taken = m_stack->takeTopController();
    EXPECT_FALSE(menu->loader(0)->isLoading());
    QTest::qWait(500);
    m_stack->pushController(std::move(taken));
    ASSERT_EQ(lists(), menu);
    EXPECT_EQ(previewTitle(), u"Most Viewed"_s);
    press(RemoteAction::Select);
    EXPECT_EQ(previewTitle(), u"Loading\u2026"_s);
    EXPECT_TRUE(waitForTrailers());
}
