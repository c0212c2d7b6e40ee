// The trailers menu over assets made here, and the menu of the four lists against an
// endpoint that refuses connections; the plugin as the shell loads it.
#include "TrailersMenuFixture.h"

#include "toolkit/appliance/ApplianceLoader.h"
#include "toolkit/media/MediaPreviewController.h"
#include "toolkit/media/MetadataPreviewController.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/player/VideoPlayerController.h"
#include "vtvplugin/appliance/ApplianceConfig.h"
#include "vtvplugin/media/VTVMediaAsset.h"

#include <QElapsedTimer>
#include <QImage>
#include <QLocale>

#include <climits>
#include <vector>

using shell::RemoteAction;

namespace {

using Assets = std::vector<std::shared_ptr<VTVMediaAsset>>;

std::shared_ptr<VTVMediaAsset> makeTrailer(int number)
{
    const QString id = u"c"_s + QString::number(number);
    QString thumbnail = u"http://127.0.0.1:8642/thumbs/"_s;
    return std::make_shared<VTVMediaAsset>(QUrl(u"http://127.0.0.1:8642/t/"_s + id + u"x.flv"_s),
        id, 90, 1000, u"Trailer "_s + QString::number(number), thumbnail, u"About "_s + id);
}

// Trailers numbered 1 .. count, with holes (null entries) at the given indexes.
Assets makeTrailers(int count, std::initializer_list<int> holes = {})
{
    Assets assets;
    for (int i = 0; i < count; ++i)
        assets.push_back(makeTrailer(i + 1));
    for (const int hole : holes)
        assets[size_t(hole)].reset();
    return assets;
}

} // namespace

class TrailersMenuTest : public TrailersMenuFixture {
protected:
    VireoTrailerController* push(const Assets& assets, long size)
    {
        m_stack->pushController(std::make_unique<VireoTrailerController>(
            m_scene, u"Top Rated"_s, assets.empty() ? nullptr : assets.data(), size));
        return trailers();
    }
};

TEST_F(TrailersMenuTest, RowsAreRankedTitlesUpToTheFirstMissingTrailer)
{
    const Assets twelve = makeTrailers(12);
    const Assets gap = makeTrailers(4, { 2 });
    const Assets gapFirst = makeTrailers(3, { 0 });
    const struct {
        const char* name;
        const Assets& assets;
        long size;
        QStringList titles;
    } cases[] = {
        { "twelve", twelve, 12,
            { u"  1  Trailer 1"_s, u"  2  Trailer 2"_s, u"  3  Trailer 3"_s, u"  4  Trailer 4"_s,
                u"  5  Trailer 5"_s, u"  6  Trailer 6"_s, u"  7  Trailer 7"_s, u"  8  Trailer 8"_s,
                u"  9  Trailer 9"_s, u"10  Trailer 10"_s, u"11  Trailer 11"_s,
                u"12  Trailer 12"_s } },
        { "a gap in the middle", gap, 4, { u"  1  Trailer 1"_s, u"  2  Trailer 2"_s } },
        { "a gap first", gapFirst, 3, {} },
        { "fewer than the array holds", twelve, 2, { u"  1  Trailer 1"_s, u"  2  Trailer 2"_s } },
        { "negative size", twelve, -1, {} },
        { "no array", {}, 5, {} },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        VireoTrailerController* menu = push(c.assets, c.size);
        ASSERT_NE(menu, nullptr);
        EXPECT_EQ(menu->itemCount(), c.titles.size());
        EXPECT_EQ(menu->list().count(), c.titles.size());
        EXPECT_EQ(menu->list().title(), u"Top Rated"_s);
        EXPECT_EQ(rowTitles(), c.titles);
        for (long row = 0; row < menu->itemCount(); ++row) {
            const auto item = menu->itemForRow(row);
            ASSERT_NE(item, nullptr);
            EXPECT_EQ(item->kind(), shell::MenuItem::Kind::Plain);
            EXPECT_EQ(item->title(), c.titles.at(row));
            EXPECT_EQ(menu->rowForTitle(c.titles.at(row)), row);
        }
        EXPECT_EQ(m_stack->describeTop().value(u"focus"_s).toInt(-1), c.titles.isEmpty() ? -1 : 0);
        m_stack->popController();
    }
}

TEST_F(TrailersMenuTest, RowsOutsideTheListGiveNothingAndSelectNothing)
{
    const Assets assets = makeTrailers(12, { 10 });
    VireoTrailerController* menu = push(assets, 12);
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->itemCount(), 10);
    EXPECT_EQ(menu->rowForTitle(u"10  Trailer 10"_s), 9);
    EXPECT_EQ(menu->rowForTitle(u"Trailer 10"_s), -1);
    EXPECT_EQ(menu->rowForTitle(u"12  Trailer 12"_s), -1) << "past the gap";
    for (const long row : { -1L, LONG_MIN, 10L, 11L, 12L, long(INT_MAX) + 1 }) {
        SCOPED_TRACE(row);
        EXPECT_TRUE(menu->titleForRow(row).isNull());
        EXPECT_EQ(menu->itemForRow(row), nullptr);
        EXPECT_EQ(menu->previewControllerForItem(row), nullptr);
        menu->itemSelected(row);
        EXPECT_EQ(m_stack->topController(), menu);
    }
}

TEST_F(TrailersMenuTest, TheFocusedTrailerShowsItsMediaPreviewWithTheRemoteThumbnail)
{
    const Assets assets = makeTrailers(3);
    VireoTrailerController* menu = push(assets, 3);
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->isNetworkDependent());
    for (long row = 0; row < 3; ++row) {
        SCOPED_TRACE(row);
        menu->setFocusedRow(row);
        const auto* preview = dynamic_cast<const shell::MediaPreviewController*>(menu->preview());
        ASSERT_NE(preview, nullptr);
        EXPECT_EQ(preview->asset(), assets[size_t(row)]);
        EXPECT_TRUE(preview->showsMetadata());
        EXPECT_FALSE(preview->showsMetadataImmediately());
        EXPECT_FALSE(preview->missingMediaType().has_value());
        const QJsonObject described = m_stack->describeTop().value(u"preview"_s).toObject();
        const QString id = u"c"_s + QString::number(row + 1);
        EXPECT_EQ(described[u"kind"_s].toString(), u"media"_s);
        EXPECT_EQ(described[u"title"_s].toString(), u"Trailer "_s + QString::number(row + 1));
        EXPECT_EQ(described[u"image"_s].toString(),
            u"http://127.0.0.1:8642/thumbs/vtv_ca_"_s + id + u".jpg"_s);
        EXPECT_EQ(described[u"duration"_s].toInt(), 90);
    }
}

TEST_F(TrailersMenuTest, ATrailerPlaysFromTheStartWithoutResume)
{
    const Assets assets = makeTrailers(12);
    ASSERT_NE(push(assets, 12), nullptr);
    press(RemoteAction::Down, 10);
    press(RemoteAction::Select);
    const auto* player = qobject_cast<shell::VideoPlayerController*>(m_stack->topController());
    ASSERT_NE(player, nullptr);
    EXPECT_EQ(player->videoPlayer()->media(), assets[10]);
    EXPECT_FALSE(player->allowsResume());
    EXPECT_FALSE(player->resumeOffered());
    EXPECT_EQ(player->state(), shell::VideoPlayerController::State::Playing);
    press(RemoteAction::Menu);
    ASSERT_NE(trailers(), nullptr);
    EXPECT_EQ(trailers()->focusedRow(), 10);
}

TEST_F(TrailersMenuTest, TheListsAreFolderRowsInTheirOrderAndEachEntryIsFresh)
{
    const auto first = m_appliance->applianceControllerWithScene(m_scene);
    const auto second = m_appliance->applianceControllerWithScene(m_scene);
    EXPECT_NE(first.get(), second.get());

    VireoTrailerListsController* menu = enter();
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(menu->list().title(), u"Vireo Trailers"_s);
    EXPECT_TRUE(menu->isNetworkDependent());
    EXPECT_EQ(rowTitles(),
        QStringList(
            { u"Most Viewed"_s, u"Most Downloaded"_s, u"Top Rated"_s, u"Top Favorites"_s }));
    for (long row = 0; row < menu->itemCount(); ++row) {
        SCOPED_TRACE(row);
        EXPECT_EQ(menu->itemForRow(row)->kind(), shell::MenuItem::Kind::Folder);
        menu->setFocusedRow(row);
        const auto* preview
            = dynamic_cast<const shell::MetadataPreviewController*>(menu->preview());
        ASSERT_NE(preview, nullptr);
        EXPECT_TRUE(preview->showsMetadataImmediately());
        EXPECT_EQ(previewTitle(), menu->titleForRow(row));
        EXPECT_EQ(m_stack->describeTop()[u"preview"_s][u"image"_s].toString(),
            u":/vireo-trailers/ApplianceIcon.png"_s);
    }
    EXPECT_EQ(menu->rowForTitle(u"Top Rated"_s), 2);
    for (const long row : { -1L, 4L, long(INT_MAX) + 2 }) {
        SCOPED_TRACE(row);
        EXPECT_TRUE(menu->titleForRow(row).isNull());
        EXPECT_EQ(menu->itemForRow(row), nullptr);
        EXPECT_EQ(menu->previewControllerForItem(row), nullptr);
        menu->itemSelected(row);
        EXPECT_EQ(m_stack->topController(), menu);
        EXPECT_EQ(menu->loader(int(row)), nullptr);
    }
}

// A refused connection fails at once; the row says so well within the loader's own
// time-out, and choosing it again asks the service again.
TEST_F(TrailersMenuTest, AnUnreachableServiceSaysNoTrailersAvailableAndChoosingAgainRetries)
{
    const QString endpoint = FeeddProcess::closedBase();
    ASSERT_FALSE(endpoint.isEmpty());
    setEndpoint(endpoint);
    VireoTrailerListsController* menu = enter();
    ASSERT_NE(menu, nullptr);
    press(RemoteAction::Down, 2);
    for (int attempt = 1; attempt <= 2; ++attempt) {
        SCOPED_TRACE(attempt);
        LogCapture::lines().clear();
        QElapsedTimer clock;
        clock.start();
        press(RemoteAction::Select);
        EXPECT_EQ(previewTitle(), u"Loading\u2026"_s);
        EXPECT_EQ(menu->listState(2), VireoTrailerListsController::ListState::Loading);
        EXPECT_TRUE(menu->loader(2)->isLoading());
        ASSERT_TRUE(waitForPreview(u"No trailers available."_s, 5000))
            << qPrintable(previewTitle());
        EXPECT_LT(clock.elapsed(), 5000);
        EXPECT_EQ(m_stack->topController(), menu);
        EXPECT_FALSE(menu->loader(2)->isLoading());
        EXPECT_EQ(LogCapture::containing(u"Connection failed! Error -"_s).size(), 1);
        EXPECT_EQ(LogCapture::containing(u"Warning: no trailers for Top Rated:"_s).size(), 1);
    }
    // The other rows are untouched, and the failed one keeps saying so.
    press(RemoteAction::Up);
    EXPECT_EQ(previewTitle(), u"Most Downloaded"_s);
    press(RemoteAction::Down);
    EXPECT_EQ(previewTitle(), u"No trailers available."_s);
}

TEST_F(TrailersMenuTest, ThePluginLoadsAsTheShellLoadsItAfterVireoMovies)
{
    shell::ApplianceLoader loader;
    loader.loadFolder(QStringLiteral(VIREO_APPLIANCE_DIR));
    for (const auto& failure : loader.failures())
        EXPECT_NE(failure.fileName, u"vireo-trailers.so"_s) << qPrintable(failure.reason);
    QStringList names;
    for (const auto& entry : loader.appliances())
        names.append(entry.fileName);
    EXPECT_EQ(names, QStringList({ u"vireo-movies.so"_s, u"vireo-trailers.so"_s }));
    ASSERT_EQ(loader.appliances().size(), 2u);
    const auto& entry = loader.appliances().back();
    EXPECT_EQ(entry.name, u"Vireo Trailers"_s);
    EXPECT_EQ(entry.key, ApplianceConfig::trailersModuleKey());
    EXPECT_NE(entry.key, ApplianceConfig::moduleKey());
    ASSERT_NE(entry.appliance, nullptr);
    EXPECT_EQ(entry.appliance->moduleKey(), entry.key);
    EXPECT_EQ(entry.appliance->moduleIconName(), u"ApplianceIcon.png"_s);

    const QImage icon = entry.appliance->bundle().imageForResource(u"ApplianceIcon"_s, u"png"_s);
    const QImage moviesIcon = loader.appliances().front().appliance->bundle().imageForResource(
        u"ApplianceIcon"_s, u"png"_s);
    EXPECT_GE(icon.width(), 256);
    EXPECT_EQ(icon.width(), icon.height());
    EXPECT_FALSE(moviesIcon.isNull());
    EXPECT_NE(icon, moviesIcon) << "each appliance draws its own icon";

    const struct {
        QLocale::Language language;
        QString name;
    } languages[] = { { QLocale::English, u"Vireo Trailers"_s },
        { QLocale::German, u"Vireo Trailer"_s }, { QLocale::French, u"Vireo Bandes-annonces"_s },
        { QLocale::Japanese, u"Vireo Trailers"_s } };
    const QLocale previous;
    for (const auto& c : languages) {
        QLocale::setDefault(QLocale(c.language));
        EXPECT_EQ(entry.appliance->moduleName(), c.name) << c.language;
    }
    QLocale::setDefault(previous);
}
