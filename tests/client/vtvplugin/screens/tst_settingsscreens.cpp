#include "../LibraryFixture.h"

#include "toolkit/scene/Scene.h"
#include "toolkit/scene/TextControl.h"
#include "toolkit/stack/ControllerStack.h"
#include "vtvplugin/library/DiskInfo.h"
#include "vtvplugin/library/JUtils.h"
#include "vtvplugin/library/VireoPairInfo.h"
#include "vtvplugin/screens/VireoAboutController.h"
#include "vtvplugin/screens/VireoApplianceController.h"
#include "vtvplugin/screens/VireoConfigController.h"
#include "vtvplugin/screens/VireoSyncingController.h"

#include <QJsonArray>
#include <QRegularExpression>

#include <optional>

using shell::RemoteAction;

// The settings screens, driven through the stack as the remote drives them and read
// from what they report they show.
class SettingsScreensTest : public LibraryFixture {
protected:
    QJsonObject top() const { return m_stack.describeTop(); }
    QStringList strings(const char* list, const char* key, const char* kind = nullptr) const
    {
        QStringList found;
        for (const QJsonValue& item : top().value(QLatin1String(list)).toArray()) {
            if (!kind || item[u"kind"_s].toString() == QLatin1String(kind))
                found.append(item[QLatin1String(key)].toString());
        }
        return found;
    }
    QStringList rows() const { return strings("rows", "title"); }
    // The texts of the top screen's text controls, in the order they are drawn.
    QStringList texts() const { return strings("controls", "text", "text"); }
    // Moves the focus to the row titled `title` as the remote would, then selects it.
    void choose(const QString& title)
    {
        const long target = rows().indexOf(title);
        ASSERT_GE(target, 0) << qPrintable(title);
        while (top().value(u"focus"_s).toInt() != target)
            m_stack.handleAction(
                top().value(u"focus"_s).toInt() < target ? RemoteAction::Down : RemoteAction::Up);
        m_stack.handleAction(RemoteAction::Select);
    }

    shell::Scene m_scene;
    shell::ControllerStack m_stack;
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

    m_stack.pushController(std::make_unique<VireoConfigController>(m_scene));
    EXPECT_EQ(rows(), QStringList({ u"About"_s, u"Syncing"_s }));
    const QStringList screens { u"VireoAboutController"_s, u"VireoSyncingController"_s };
    for (long row = 0; row < 2; ++row) {
        choose(rows().at(row));
        EXPECT_EQ(m_stack.labels(), (QStringList { u"VireoConfigController"_s, screens.at(row) }));
        m_stack.handleAction(RemoteAction::Menu);
    }
    for (const long row : { -1L, 2L, 100L }) {
        qobject_cast<VireoConfigController*>(m_stack.topController())->itemSelected(row);
        EXPECT_EQ(m_stack.count(), 1) << row;
    }
}

TEST_F(SettingsScreensTest, AboutRowsCountPairsAndShowTheDiskFacts)
{
    const struct {
        const char* name;
        QString pairAdded, players;
    } rows[]
        = { { "no pair", {}, u"0 Vireo Players"_s }, { "one pair", kPairA, u"1 Vireo Player"_s },
              { "two pairs", kPairB, u"2 Vireo Players"_s } };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        if (!row.pairAdded.isNull())
            makePair(row.pairAdded, u"Desk"_s);
        QString capacity, used;
        getDiskSpaceInfo(&capacity, nullptr, &used, nullptr, nullptr);
        const VireoAboutController about(m_scene);
        ASSERT_EQ(about.controls().size(), 2u + 12u);
        QStringList labels, values;
        for (std::size_t i = 2; i < about.controls().size(); ++i) {
            const auto& text = dynamic_cast<const shell::TextControl&>(*about.controls()[i]);
            (i % 2 ? values : labels).append(text.text());
            // Labels grow rightwards from one edge, values leftwards from another.
            const QRectF first = about.controls()[2 + i % 2]->frame();
            if (i % 2)
                EXPECT_NEAR(text.frame().right(), first.right(), 0.01);
            else
                EXPECT_EQ(text.frame().x(), first.x());
        }
        EXPECT_EQ(labels,
            QStringList({ u"Syncing"_s, u"Capacity"_s, u"Available"_s, u"Used by Vireo"_s,
                u"Serial Number"_s, u"Vireo Software Version"_s }));
        // Free space changes whenever another process writes: only its form is stable.
        EXPECT_TRUE(QRegularExpression(u"^\\d+\\.\\d\\d \\w*$"_s).match(values[2]).hasMatch());
        values[2] = QString();
        // Not the expected hardware here: the serial row is still drawn, with no text.
        EXPECT_EQ(values,
            QStringList({ row.players, capacity, QString(), used, u""_s, u"0.96.16.118"_s }));
    }
}

// The user's way through Syncing over a library of two players laid out the way the
// sync side does it: Den synced last, Office never did.
TEST_F(SettingsScreensTest, SyncingShowsThePairsAndUnpairsOnlyOnYes)
{
    m_stack.pushController(std::make_unique<VireoSyncingController>(m_scene));
    EXPECT_EQ(top().value(u"title"_s).toString(), u"Syncing"_s);
    EXPECT_TRUE(rows().isEmpty());
    EXPECT_FALSE(texts().value(0).isEmpty()) << "the help text stays";
    EXPECT_EQ(texts().mid(1), QStringList(8, u" "_s)) << "the panel keeps its blank rows";
    m_stack.handleAction(RemoteAction::Select);
    EXPECT_EQ(m_stack.count(), 1);
    m_stack.popController();

    for (const auto& [pairID, name, movie, title] :
        { std::tuple(kPairA, u"Den"_s, u"a1"_s, u"Alien"_s),
            std::tuple(kPairB, u"Office"_s, u"b1"_s, u"Heat"_s) }) {
        if (pairID == kPairA)
            makePair(pairID, name, 100'000, 2'000'000, u"10.0.0.7"_s);
        else
            makePair(pairID, name, 200'000);
        makeMovie(pairID, movie);
        QString unique = title;
        ASSERT_TRUE(JUtils::makeTitleUnique(pairID, movie + u".m4v"_s, unique));
        ASSERT_TRUE(JUtils::setupLinks(pairID, movie + u".m4v"_s, unique));
    }
    ASSERT_TRUE(JUtils::checkAndFixLinks());
    VireoPlayerPairList list;
    int count = 0;
    ASSERT_TRUE(getAllPairInfos(&list, &count));
    ASSERT_EQ(count, 2);
    const auto facts = [&](long row) {
        const VireoPlayerPair& pair = list[std::size_t(row)];
        return pair.pairID == kPairA
            ? QStringList { u"Name"_s, pair.clientName, u"Paired On"_s, pair.pairedOn,
                  u"Last Sync Time"_s, pair.lastSync, u"Last Peer Address"_s, u"10.0.0.7"_s }
            : QStringList { u"Name"_s, pair.clientName, u"Paired On"_s, pair.pairedOn, u""_s, u""_s,
                  u""_s, u""_s };
    };
    const QStringList players { list[0].clientName, list[1].clientName };

    m_stack.pushController(std::make_unique<VireoApplianceController>(m_scene));
    choose(u"Settings"_s);
    choose(u"Syncing"_s);
    EXPECT_EQ(rows(), players);
    EXPECT_EQ(texts().mid(1), facts(0));
    // The panel is filled again only when the focus lands on another row.
    const int redraws = m_scene.redrawCount();
    for (const auto& [move, shown, redrawn] : { std::tuple(RemoteAction::Down, 1, 1),
             std::tuple(RemoteAction::Down, 1, 1), std::tuple(RemoteAction::Up, 0, 2) }) {
        m_stack.handleAction(move);
        EXPECT_EQ(texts().mid(1), facts(shown));
        EXPECT_EQ(m_scene.redrawCount(), redraws + redrawn);
    }

    // "No" leaves the library alone and comes back to the same rows.
    const QStringList library = snapshot(root());
    choose(u"Office"_s);
    EXPECT_EQ(top().value(u"title"_s).toString(), u"Turn Off Syncing"_s);
    EXPECT_EQ(top().value(u"primaryText"_s).toString(),
        u"To Turn Off Syncing, you must use the Configure VireoTV menu item in the Vireo Player.  If you no longer have access to the Vireo Player, you can Turn Off Syncing below."_s);
    EXPECT_EQ(top().value(u"secondaryText"_s).toString(),
        u"Turning Off Syncing will remove all Movies from this Vireo Player."_s);
    choose(u"No, leave Syncing turned ON"_s);
    EXPECT_EQ(rows(), players);
    EXPECT_EQ(snapshot(root()), library);

    // "Yes" unpairs Den: its folder and links go, and the list drops it at once.
    choose(u"Den"_s);
    choose(u"Yes, Turn off Syncing from this Vireo Player"_s);
    EXPECT_EQ(rows(), QStringList { u"Office"_s });
    EXPECT_FALSE(QFileInfo::exists(pairDir(kPairA)));
    EXPECT_EQ(names(movies()), words("Heat.m4v Heat.xml"));
    releasePairInfoList(list, count);

    // The latest sync time went down with Den, so the top menu lists the library anew.
    m_stack.handleAction(RemoteAction::Menu);
    m_stack.handleAction(RemoteAction::Menu);
    EXPECT_EQ(rows(), (QStringList { u"Heat"_s, u"Settings"_s }));
}
