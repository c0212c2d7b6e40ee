// The menu of the four lists and the numbered trailers of one, through the stack as the
// remote drives them, against a feed server of the test's own.
#include "FeedTestServer.h"

#include "toolkit/menus/MenuItem.h"
#include "toolkit/player/VideoPlayerController.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/appliance/VireoTrailersAppliance.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/trailers/VireoTrailerController.h"
#include "vtvplugin/trailers/VireoTrailerListsController.h"
#include "vtvplugin/trailers/VireoTrailerLoader.h"

#include <QJsonArray>
#include <QTest>

#include <gtest/gtest.h>

#include <climits>
#include <functional>

using namespace Qt::StringLiterals;
using shell::RemoteAction;

namespace {

// Trailers numbered 1 .. count, their thumbnails at http://img.example/.
QByteArray trailerList(int count)
{
    QByteArray videos;
    for (int i = 1; i <= count; ++i)
        videos += "<video><videoID>" + QByteArray::number(i) + "</videoID><title>Trailer "
            + QByteArray::number(i) + "</title><trailerURL>http://cdn.example/t/"
            + QByteArray::number(i)
            + "</trailerURL><lrgThumbnailURL>http://img.example/</lrgThumbnailURL></video>";
    return FeedTestServer::reply("<videos>" + videos + "</videos>");
}

class TrailersMenuTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        setEndpoint(server.url().adjusted(QUrl::RemovePath).toString());
        // The bottom screen stands for the shell's top menu.
        m_stack.pushController(std::make_unique<shell::LayerController>(m_scene));
    }
    void TearDown() override { qunsetenv("VIREO_TRAILER_ENDPOINT"); }

    static void setEndpoint(const QString& base)
    {
        qputenv("VIREO_TRAILER_ENDPOINT", base.toUtf8());
    }
    VireoTrailerListsController* enter()
    {
        m_stack.pushController(m_appliance.applianceControllerWithScene(m_scene));
        return lists();
    }
    VireoTrailerListsController* lists() const
    {
        return qobject_cast<VireoTrailerListsController*>(m_stack.topController());
    }
    VireoTrailerController* trailers() const
    {
        return qobject_cast<VireoTrailerController*>(m_stack.topController());
    }
    void press(RemoteAction action, long times = 1)
    {
        for (long i = 0; i < times; ++i)
            m_stack.handleAction(action);
    }
    QJsonObject preview() const { return m_stack.describeTop().value(u"preview"_s).toObject(); }
    QStringList rowTitles() const
    {
        QStringList titles;
        for (const QJsonValue& row : m_stack.describeTop().value(u"rows"_s).toArray())
            titles.append(row[u"title"_s].toString());
        return titles;
    }
    // Selects the focused row, which says "Loading…" until its list has come.
    void chooseAndWait()
    {
        press(RemoteAction::Select);
        EXPECT_EQ(preview()[u"title"_s].toString(), u"Loading\u2026"_s);
        EXPECT_TRUE(
            QTest::qWaitFor([&] { return trailers() || !lists()->loader(2)->isLoading(); }));
        QCoreApplication::processEvents();
    }

    FeedTestServer server;
    shell::Scene m_scene;
    VireoTrailersAppliance m_appliance;
    shell::ControllerStack m_stack;
};

// A list that cannot be had says so on its row, and choosing it again asks again; a
// list that came opens as numbered trailers that play from the start, and opens at
// once from then on.
TEST_F(TrailersMenuTest, AChosenListOpensAsNumberedTrailersOrSaysNoTrailersAvailable)
{
    const std::pair<const char*, std::function<void(FeedTestServer&)>> rows[] = {
        { "a list of twelve", [](FeedTestServer& s) { s.answer(trailerList(12)); } },
        { "an empty list",
            [](FeedTestServer& s) { s.answer(FeedTestServer::reply("<videos/>")); } },
        { "a fault",
            [](FeedTestServer& s) { s.answer("<methodResponse><fault/></methodResponse>"); } },
        { "an unreachable service",
            [](FeedTestServer&) {
                setEndpoint(u"http://127.0.0.1:%1"_s.arg(FeedTestServer::closedPort()));
            } },
    };
    for (const auto& [name, arrange] : rows) {
        SCOPED_TRACE(name);
        arrange(server);
        VireoTrailerListsController* menu = enter();
        ASSERT_NE(menu, nullptr);
        EXPECT_EQ(rowTitles(),
            QStringList(
                { u"Most Viewed"_s, u"Most Downloaded"_s, u"Top Rated"_s, u"Top Favorites"_s }));
        EXPECT_EQ(preview()[u"image"_s].toString(), u":/vireo-trailers/ApplianceIcon.png"_s);
        press(RemoteAction::Down, 2);
        chooseAndWait();
        if (!trailers()) {
            EXPECT_EQ(m_stack.topController(), menu);
            EXPECT_EQ(preview()[u"title"_s].toString(), u"No trailers available."_s);
            press(RemoteAction::Up);
            EXPECT_EQ(preview()[u"title"_s].toString(), u"Most Downloaded"_s);
            press(RemoteAction::Down);
            EXPECT_EQ(preview()[u"title"_s].toString(), u"No trailers available."_s);
            setEndpoint(server.url().adjusted(QUrl::RemovePath).toString());
            server.answer(trailerList(12));
            chooseAndWait();
        }
        ASSERT_NE(trailers(), nullptr);
        EXPECT_EQ(trailers()->list().title(), u"Top Rated"_s);
        const QStringList numbered = rowTitles();
        ASSERT_EQ(numbered.size(), 12);
        EXPECT_EQ(numbered.mid(8, 2), QStringList({ u"  9  Trailer 9"_s, u"10  Trailer 10"_s }));
        // Rows are compared as unsigned numbers: a negative row is past the end.
        for (const long row : { -1L, 12L, long(INT_MAX) + 1 }) {
            EXPECT_TRUE(trailers()->titleForRow(row).isNull()) << row;
            EXPECT_EQ(trailers()->itemForRow(row), nullptr) << row;
            EXPECT_EQ(trailers()->previewControllerForItem(row), nullptr) << row;
        }

        press(RemoteAction::Down, 9);
        EXPECT_EQ(preview()[u"kind"_s].toString(), u"media"_s);
        EXPECT_EQ(preview()[u"image"_s].toString(), u"http://img.example/vtv_ca_10.jpg"_s);
        press(RemoteAction::Select);
        const auto* player = qobject_cast<shell::VideoPlayerController*>(m_stack.topController());
        ASSERT_NE(player, nullptr);
        EXPECT_EQ(player->videoPlayer()->media(), menu->loader(2)->assetList()[9]);
        EXPECT_EQ(player->videoPlayer()->media()->mediaURL(), u"http://cdn.example/t/10x.flv"_s);
        EXPECT_FALSE(player->allowsResume());
        EXPECT_EQ(player->state(), shell::VideoPlayerController::State::Playing);

        const qsizetype asked = server.requests().size();
        press(RemoteAction::Menu, 2);
        ASSERT_EQ(lists(), menu);
        press(RemoteAction::Select);
        EXPECT_NE(trailers(), nullptr);
        EXPECT_EQ(server.requests().size(), asked);
        press(RemoteAction::Menu, 2);
        ASSERT_EQ(m_stack.count(), 1);
    }
}

// A list must not open over whatever the user went on to look at.
TEST_F(TrailersMenuTest, AListTheUserWalkedAwayFromOpensOnlyWhenChosenAgain)
{
    server.answer(trailerList(3));
    VireoTrailerListsController* menu = enter();
    press(RemoteAction::Select);
    press(RemoteAction::Down);
    ASSERT_TRUE(QTest::qWaitFor([&] { return menu->loader(0)->isLoaded(); }));
    QCoreApplication::processEvents();
    EXPECT_EQ(preview()[u"title"_s].toString(), u"Most Downloaded"_s);
    press(RemoteAction::Up);
    press(RemoteAction::Select);
    ASSERT_NE(trailers(), nullptr) << "a loaded list opens at once";
    press(RemoteAction::Menu, 2);

    // Going back out of the appliance abandons the load.
    enter();
    press(RemoteAction::Select);
    press(RemoteAction::Menu);
    QTest::qWait(300);
    EXPECT_EQ(m_stack.count(), 1);

    // A menu taken off the stack mid-load and put back again is not stuck loading.
    menu = enter();
    press(RemoteAction::Select);
    std::unique_ptr<shell::LayerController> taken = m_stack.takeTopController();
    EXPECT_FALSE(menu->loader(0)->isLoading());
    m_stack.pushController(std::move(taken));
    EXPECT_EQ(preview()[u"title"_s].toString(), u"Most Viewed"_s);
    press(RemoteAction::Select);
    EXPECT_TRUE(QTest::qWaitFor([&] { return trailers(); }));
}

} // namespace
