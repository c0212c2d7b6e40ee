#include "../LibraryFixture.h"

#include "toolkit/media/MetadataPreviewController.h"
#include "toolkit/menus/MenuItem.h"
#include "toolkit/scene/HeaderControl.h"
#include "toolkit/scene/ImageControl.h"
#include "toolkit/scene/Scene.h"
#include "toolkit/scene/TextControl.h"
#include "toolkit/scene/Theme.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/library/DiskInfo.h"
#include "vtvplugin/library/VireoPairInfo.h"
#include "vtvplugin/media/VTVMediaAsset.h"
#include "vtvplugin/screens/ScreenResources.h"
#include "vtvplugin/screens/VireoAboutController.h"
#include "vtvplugin/screens/VireoConfigController.h"
#include "vtvplugin/screens/VireoPairController.h"
#include "vtvplugin/screens/VireoSyncingController.h"

#include <QJsonArray>

#include <algorithm>
#include <array>
#include <optional>

using shell::RemoteAction;

namespace {

using Box = std::array<double, 4>;

Box box(const QRectF& frame)
{
    return { frame.x(), frame.y(), frame.width(), frame.height() };
}
// Built from single-precision values, as the screens compute their layout.
Box box(float x, float y, float width, float height)
{
    return { x, y, width, height };
}

const shell::TextControl& textAt(const shell::LayerController& screen, std::size_t index)
{
    return dynamic_cast<const shell::TextControl&>(*screen.controls().at(index));
}

// Label and value texts of a screen's text controls from `first` on, in pairs.
QList<QStringList> rowTexts(const shell::LayerController& screen, std::size_t first)
{
    QList<QStringList> rows;
    for (std::size_t i = first; i + 1 < screen.controls().size(); i += 2)
        rows.append({ textAt(screen, i).text(), textAt(screen, i + 1).text() });
    return rows;
}

float right(const QRectF& frame)
{
    return float(frame.x()) + float(frame.width());
}

// What a text takes on one line, measured on a control that was never laid out.
QSizeF oneLine(const shell::TextControl& shown)
{
    shell::TextControl fresh;
    fresh.setText(shown.text(), shown.style());
    return fresh.renderedSize();
}

} // namespace

class SettingsScreensTest : public LibraryFixture {
protected:
    template <typename Screen, typename... Args> Screen* push(Args&&... args)
    {
        m_stack.pushController(std::make_unique<Screen>(m_scene, std::forward<Args>(args)...));
        return qobject_cast<Screen*>(m_stack.topController());
    }

    shell::Scene m_scene;
    shell::ControllerStack m_stack;
    const shell::Theme& m_theme = shell::Theme::shared();
};

TEST_F(SettingsScreensTest, ConfigTypesNameTheListAndOnlyRowsZeroAndOnePush)
{
    const struct {
        const char* name;
        std::optional<int> type;
        QString title;
        long rows;
    } cases[] = { { "plain", std::nullopt, u"Settings"_s, 2 }, { "type 0", 0, QString(), 2 },
        { "type 1", 1, u"About VireoTV"_s, 1 }, { "type 2", 2, u"Syncing"_s, 0 },
        { "type 7", 7, QString(), 0 }, { "type -1", -1, QString(), 0 } };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto menu = c.type ? std::make_unique<VireoConfigController>(m_scene, *c.type)
                                 : std::make_unique<VireoConfigController>(m_scene);
        EXPECT_EQ(menu->list().title(), c.title);
        EXPECT_EQ(menu->list().title().isNull(), c.title.isNull());
        EXPECT_EQ(menu->list().count(), c.rows);
    }

    VireoConfigController* menu = push<VireoConfigController>();
    ASSERT_NE(menu, nullptr);
    const QStringList screens { u"VireoAboutController"_s, u"VireoSyncingController"_s };
    for (long row = 0; row < 2; ++row) {
        EXPECT_EQ(menu->itemForRow(row)->kind(), shell::MenuItem::Kind::Folder);
        menu->itemSelected(row);
        EXPECT_EQ(m_stack.labels(), (QStringList { u"VireoConfigController"_s, screens.at(row) }));
        m_stack.popController();
    }
    EXPECT_EQ(menu->itemForRow(2), nullptr);
    for (const long row : { -1L, 2L, 100L }) {
        menu->itemSelected(row);
        EXPECT_EQ(m_stack.count(), 1) << row;
    }
}

TEST_F(SettingsScreensTest, ConfigPreviewShowsTheIconAndTheCopyright)
{
    VireoConfigController* menu = push<VireoConfigController>();
    ASSERT_NE(menu, nullptr);
    for (const RemoteAction move : { RemoteAction::Up, RemoteAction::Down }) {
        m_stack.handleAction(move);
        const auto* preview = dynamic_cast<shell::MetadataPreviewController*>(menu->preview());
        ASSERT_NE(preview, nullptr);
        EXPECT_TRUE(preview->showsMetadataImmediately());
        const auto asset = preview->asset();
        ASSERT_NE(asset, nullptr);
        EXPECT_EQ(asset->mediaURL(), ScreenResources::iconURL());
        EXPECT_EQ(asset->previewURL(), ScreenResources::iconURL());
        EXPECT_EQ(asset->mediaType(), shell::MediaType::photo);
        const QJsonObject shown = menu->describe().value(u"preview"_s).toObject();
        EXPECT_EQ(shown.value(u"kind"_s).toString(), u"metadata"_s);
        EXPECT_EQ(shown.value(u"copyright"_s).toString(), VTVMediaAsset::copyrightLine());
        EXPECT_EQ(shown.value(u"image"_s).toString(), u":/vireo-movies/ApplianceIcon.png"_s);
    }
}

TEST_F(SettingsScreensTest, AboutRowsCountPairsAndShowTheDiskFacts)
{
    const QString pairs[] = { kPairA, kPairB };
    const QString counted[] = { u"0 Vireo Players"_s, u"1 Vireo Player"_s, u"2 Vireo Players"_s };
    for (int count = 0; count <= 2; ++count) {
        SCOPED_TRACE(count);
        if (count > 0)
            makePair(pairs[count - 1], u"Desk"_s + QString::number(count), 100, 200);
        QString capacity, available, used, serial;
        getDiskSpaceInfo(&capacity, &available, &used, &serial, nullptr);
        // Not the expected hardware here: the serial row is still drawn, with no text.
        EXPECT_EQ(serial, u""_s);
        const VireoAboutController about(m_scene);
        ASSERT_EQ(about.controls().size(), 2u + 12u);
        const QList<QStringList> expected { { u"Syncing"_s, counted[count] },
            { u"Capacity"_s, capacity }, { u"Available"_s, available },
            { u"Used by Vireo"_s, used }, { u"Serial Number"_s, serial },
            { u"Vireo Software Version"_s, u"0.96.16.118"_s } };
        EXPECT_EQ(rowTexts(about, 2), expected);
    }
}

TEST_F(SettingsScreensTest, AboutLayoutFollowsTheTitleSafeFrame)
{
    const VireoAboutController about(m_scene);
    const QRectF safe = m_theme.titleSafeFrame();
    const QRectF master = m_scene.frame();
    const float headerX = float(safe.x()) + 0.55f * float(safe.width());
    const float headerY = float(master.y()) + 0.82f * float(master.height());
    const float headerWidth = 0.45f * float(safe.width());
    const auto& header = dynamic_cast<const shell::HeaderControl&>(*about.controls().at(0));
    EXPECT_EQ(header.title(), u"About VireoTV"_s);
    EXPECT_EQ(box(header.frame()),
        box(headerX, headerY, headerWidth, 0.55f * float(m_theme.listIconHeight())));

    const float iconX = 0.78f * float(safe.x());
    const float side = 0.82f * (headerX - iconX);
    const auto& icon = dynamic_cast<const shell::ImageControl&>(*about.controls().at(1));
    EXPECT_EQ(
        box(icon.frame()), box(iconX, (float(safe.y()) + float(safe.height())) - side, side, side));
    EXPECT_EQ(icon.source(), ScreenResources::iconURL());
    ASSERT_FALSE(icon.image().isNull());
    EXPECT_LE(icon.image().width(), qRound(side));
    EXPECT_FLOAT_EQ(icon.reflectionAmount(), 0.3f);
    EXPECT_FLOAT_EQ(icon.reflectionOffset(), 0.1f);

    const float h = float(m_theme.settingsAboutRowHeight());
    float y = headerY - 2 * h;
    for (std::size_t i = 2; i < about.controls().size(); i += 2, y -= h) {
        SCOPED_TRACE(i);
        const shell::TextControl& label = textAt(about, i);
        const shell::TextControl& value = textAt(about, i + 1);
        const float labelWidth = float(label.renderedSize().width());
        const float valueWidth = float(value.renderedSize().width());
        EXPECT_EQ(valueWidth > 0, !value.text().isEmpty());
        EXPECT_EQ(box(label.frame()), box(headerX, y, labelWidth, h));
        EXPECT_EQ(box(value.frame()), box((headerX + headerWidth) - valueWidth, y, valueWidth, h));
    }
}

TEST_F(SettingsScreensTest, SyncingLaysOutIconHelpPanelAndARaisedList)
{
    makePair(kPairA, u"Den"_s, 100, 200, u"10.0.0.7"_s);
    const QRectF safe = m_theme.titleSafeFrame();
    const float x = float(safe.x()), y = float(safe.y());
    const float left = x + 0.55f * float(safe.width());
    const float safeRight = x + float(safe.width());
    const float rowHeight = float(m_theme.settingsAboutRowHeight());
    const float aboutHeight = 6 * rowHeight;
    const float side = (left - 0.78f * x) * 0.82f;
    const float iconY = y + float(safe.height()) - side;

    VireoSyncingController* syncing = push<VireoSyncingController>();
    ASSERT_NE(syncing, nullptr);
    ASSERT_EQ(syncing->controls().size(), 2u + 8u);
    const auto& icon = dynamic_cast<const shell::ImageControl&>(*syncing->controls().at(0));
    EXPECT_EQ(box(icon.frame()), box(0.78f * x, iconY, side, side));
    EXPECT_FALSE(icon.image().isNull());
    EXPECT_FLOAT_EQ(icon.reflectionAmount(), 0.3f);
    EXPECT_FLOAT_EQ(icon.reflectionOffset(), 0.1f);

    const shell::TextControl& help = textAt(*syncing, 1);
    EXPECT_EQ(help.text(),
        u"To Turn On Syncing, use the Configure VireoTV menu item in the Vireo Player on your computer."_s);
    EXPECT_EQ(help.maximumLines(), 3);
    EXPECT_EQ(help.style().name, m_theme.iconMessageBodyStyle().name);
    EXPECT_EQ(box(help.frame()), box(x, y, 20 + side, iconY - y));

    for (std::size_t row = 0; row < 4; ++row) {
        SCOPED_TRACE(row);
        const shell::TextControl& label = textAt(*syncing, 2 + 2 * row);
        const shell::TextControl& value = textAt(*syncing, 3 + 2 * row);
        EXPECT_EQ(
            float(label.frame().y()), y + aboutHeight - 2 * rowHeight - float(row) * rowHeight);
        EXPECT_EQ(label.frame().y(), value.frame().y());
        EXPECT_EQ(float(label.frame().x()), left);
        EXPECT_FLOAT_EQ(right(value.frame()), safeRight);
    }

    const QRectF theme = m_theme.listFrame();
    ASSERT_GT(aboutHeight, theme.y());
    const Box raised { theme.x(), theme.y() + aboutHeight, theme.width(),
        theme.height() - aboutHeight };
    EXPECT_EQ(box(syncing->list().frame()), raised);
    syncing->resetLayout();
    EXPECT_EQ(box(syncing->list().frame()), raised);
}

TEST_F(SettingsScreensTest, SyncingPanelShowsTheFocusedPairOnce)
{
    makePair(kPairA, u"Den"_s, 1'000'000, 2'000'000, u"10.0.0.7"_s);
    makePair(kPairB, u"Office"_s, 3'000'000);
    VireoPlayerPairList pairs;
    int count = 0;
    ASSERT_TRUE(getAllPairInfos(&pairs, &count));
    ASSERT_EQ(count, 2);

    VireoSyncingController* syncing = push<VireoSyncingController>();
    ASSERT_NE(syncing, nullptr);
    EXPECT_EQ(syncing->pairCount(), 2);
    for (long row = 0; row < 2; ++row) {
        SCOPED_TRACE(row);
        const VireoPlayerPair& pair = pairs[std::size_t(row)];
        EXPECT_EQ(syncing->titleForRow(row), pair.clientName);
        syncing->setFocusedRow(row);
        EXPECT_EQ(syncing->currentIndex(), row);
        EXPECT_EQ(syncing->preview(), nullptr);
        const bool synced = pair.pairID == kPairA;
        const QList<QStringList> expected { { u"Name"_s, pair.clientName },
            { u"Paired On"_s, pair.pairedOn },
            synced ? QStringList { u"Last Sync Time"_s, pair.lastSync }
                   : QStringList { u""_s, u""_s },
            synced ? QStringList { u"Last Peer Address"_s, u"10.0.0.7"_s }
                   : QStringList { u""_s, u""_s } };
        EXPECT_EQ(rowTexts(*syncing, 2), expected);
        const QRectF name = textAt(*syncing, 2).frame();
        const QRectF value = textAt(*syncing, 3).frame();
        EXPECT_EQ(name.height(), value.height());
        EXPECT_FLOAT_EQ(right(value), float(m_theme.titleSafeFrame().right()));
        // Texts of several words ("Paired On", the dates) are not wrapped at the width
        // of what the row showed before.
        for (std::size_t i = 2; i < 10; ++i) {
            SCOPED_TRACE(i);
            const shell::TextControl& text = textAt(*syncing, i);
            EXPECT_FLOAT_EQ(float(text.frame().width()), float(oneLine(text).width()));
            const std::size_t label = i - i % 2;
            EXPECT_FLOAT_EQ(float(text.frame().height()),
                float(std::max(oneLine(textAt(*syncing, label)).height(),
                    oneLine(textAt(*syncing, label + 1)).height())));
        }
    }
    releasePairInfoList(pairs, count);

    const int redraws = m_scene.redrawCount();
    EXPECT_EQ(syncing->previewControllerForItem(1), nullptr);
    m_stack.handleAction(RemoteAction::Down); // already on the last row
    EXPECT_EQ(m_scene.redrawCount(), redraws);
    m_stack.handleAction(RemoteAction::Up);
    EXPECT_EQ(m_scene.redrawCount(), redraws + 1);
    EXPECT_EQ(syncing->currentIndex(), 0);

    EXPECT_EQ(syncing->titleForRow(2), u"Menu Item 3"_s);
    syncing->itemSelected(2);
    EXPECT_EQ(m_stack.count(), 1);
}

TEST_F(SettingsScreensTest, SyncingWithoutPairsKeepsTheHelpAndBlankPanel)
{
    VireoSyncingController* syncing = push<VireoSyncingController>();
    ASSERT_NE(syncing, nullptr);
    EXPECT_EQ(syncing->itemCount(), 0);
    EXPECT_EQ(syncing->list().title(), u"Syncing"_s);
    EXPECT_EQ(syncing->titleForRow(0), u"Menu Item 1"_s);
    EXPECT_FALSE(textAt(*syncing, 1).text().isEmpty());
    const QList<QStringList> blank(4, QStringList { u" "_s, u" "_s });
    EXPECT_EQ(rowTexts(*syncing, 2), blank);
    m_stack.handleAction(RemoteAction::Select);
    EXPECT_EQ(m_stack.count(), 1);
}

TEST_F(SettingsScreensTest, PairScreenAsksBeforeTurningSyncingOff)
{
    const VireoPlayerPair pair { kPairA, u"Den"_s, {}, {}, {}, 0, 0 };
    VireoPairController* question = push<VireoPairController>(&pair);
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(question->kind(), u"centered"_s);
    EXPECT_EQ(question->title(), u"Turn Off Syncing"_s);
    EXPECT_EQ(question->primaryInfoText(),
        u"To Turn Off Syncing, you must use the Configure VireoTV menu item in the Vireo Player.  If you no longer have access to the Vireo Player, you can Turn Off Syncing below."_s);
    EXPECT_EQ(question->secondaryInfoText(),
        u"Turning Off Syncing will remove all Movies from this Vireo Player."_s);
    EXPECT_EQ(question->primaryInfoStyle().name, m_theme.settingsAboutLabelStyle().name);
    EXPECT_EQ(question->secondaryInfoStyle().name, m_theme.settingsAboutLabelStyle().name);
    EXPECT_FALSE(question->displaysGoBack());
    EXPECT_EQ(question->list().count(), 2);
    const QStringList answers { u"No, leave Syncing turned ON"_s,
        u"Yes, Turn off Syncing from this Vireo Player"_s };
    for (long row = 0; row < 2; ++row) {
        const auto item = question->itemForRow(row);
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->kind(), shell::MenuItem::Kind::Plain);
        EXPECT_EQ(item->title(), answers.at(row));
    }
    EXPECT_EQ(question->itemForRow(2), nullptr);
    EXPECT_EQ(question->previewControllerForItem(0), nullptr);

    // Without a record, "Yes" has nothing to unpair and only closes the question.
    makePair(kPairA, u"Den"_s, 100, 200);
    const QStringList before = snapshot(home());
    push<VireoPairController>(nullptr)->itemSelected(1);
    EXPECT_EQ(m_stack.count(), 1);
    EXPECT_EQ(snapshot(home()), before);
}
