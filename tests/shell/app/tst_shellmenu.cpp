#include "LogCapture.h"
#include "PacedSimulatedPlayer.h"
#include "Shell.h"
#include "ShellMenu.h"

#include "toolkit/player/VideoPlayerFactory.h"
#include "video/MpvVideoPlayer.h"

#include <gtest/gtest.h>

#include <QQuickItem>
#include <QTemporaryDir>
#include <QTest>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

using mediashell::Shell;
using mediashell::ShellMenu;
using mediashell::ShellOptions;

namespace {

// What is allocated while it lives is not counted as leaked (with LeakSanitizer only).
struct LeakCheckPause {
#if defined(__SANITIZE_ADDRESS__)
    LeakCheckPause()
    {
        __lsan_disable();
    }
    ~LeakCheckPause()
    {
        __lsan_enable();
    }
#endif
};

// Every text drawn in `item` and below it, in drawing order: what of it shows, in window
// coordinates (the elided width, placed as aligned).
void drawnTexts(QQuickItem* item, QList<std::pair<QString, QRectF>>& texts)
{
    if (!item->isVisible())
        return;
    const QString text = item->property("text").toString();
    if (item->inherits("QQuickText") && !text.isEmpty()) {
        const qreal width = std::min(item->property("contentWidth").toReal(), item->width());
        const int align = item->property("effectiveHorizontalAlignment").toInt();
        const qreal x = align == Qt::AlignRight ? item->width() - width
            : align == Qt::AlignHCenter         ? (item->width() - width) / 2
                                                : 0;
        texts.append({ text,
            item->mapRectToScene(QRectF(x, 0, width, item->property("contentHeight").toReal())) });
    }
    for (QQuickItem* child : item->childItems())
        drawnTexts(child, texts);
}

QStringList titles(ShellMenu& menu)
{
    QStringList titles;
    for (long row = 0; row < menu.itemCount(); ++row)
        titles.append(menu.titleForRow(row));
    return titles;
}

class ShellMenuTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        // Vireo Movies reads the library under the home folder: an empty one.
        qputenv("HOME", m_home.path().toLocal8Bit());
        m_options.applianceDirs = { QStringLiteral(FIXTURE_PLUGIN_DIR) };
    }
    void TearDown() override { qputenv("HOME", m_savedHome); }

    QByteArray m_savedHome = qgetenv("HOME");
    QTemporaryDir m_home;
    ShellOptions m_options;
    LogCapture m_log;
};

TEST_F(ShellMenuTest, RowsComeFromThePluginsThatLoadInSortOrderAndTheRestAreNamed)
{
    Shell shell(m_options);
    shell.loadAppliances();
    ShellMenu& menu = *shell.topMenu();
    // Zulu (1), Alpha and Beta (2, by name), then Vireo Movies (10) and Vireo Trailers
    // (20) from the build tree; "Power" after them all.
    EXPECT_EQ(titles(menu),
        QStringList({ "Zulu", "Alpha", "Beta", "Vireo Movies", "Vireo Trailers", "Power" }));
    // Each Vireo appliance brings its own icon.
    EXPECT_TRUE(menu.iconForRow(0).isNull());
    EXPECT_FALSE(menu.iconForRow(3).isNull());
    EXPECT_NE(menu.iconForRow(3), menu.iconForRow(4));

    for (const char* broken :
        { "empty", "foreign", "nameless", "fractional", "unresolved", "plainlib", "text" }) {
        const QString path = QStringLiteral(FIXTURE_PLUGIN_DIR "/libappliance_%1.so").arg(broken);
        EXPECT_EQ(shell.failures().filter(path).size(), 1) << broken;
        EXPECT_EQ(LogCapture::containing("Skipping the appliance plugin " + path).size(), 1);
    }
}

TEST_F(ShellMenuTest, FoldersComeInOrderAndEachOnce)
{
    m_options.applianceDirs.append(QStringLiteral(FIXTURE_PLUGIN_DIR "/../plugins"));
    const QStringList folders = Shell::applianceFolders(m_options);
    ASSERT_GE(folders.size(), 3);
    EXPECT_EQ(folders.at(0), QStringLiteral(FIXTURE_PLUGIN_DIR));
    EXPECT_EQ(folders.at(1), QStringLiteral(BUILD_APPLIANCE_DIR));
    EXPECT_TRUE(folders.last().endsWith("/lib/mediashell/appliances"))
        << qPrintable(folders.last());
    EXPECT_EQ(folders.filter("plugins").size(), 1);
}

TEST_F(ShellMenuTest, ThePlayerIsMpvWhenItCanStartElseTheSimulatedOne)
{
    Shell::installVideoPlayer();
    const auto player = shell::VideoPlayerFactory::create();
    if (mediashell::MpvVideoPlayer::isAvailable())
        EXPECT_TRUE(qobject_cast<mediashell::MpvVideoPlayer*>(player.get()));
    else
        EXPECT_EQ(LogCapture::containing("playing with the simulated player").size(), 1);
    qputenv("MEDIASHELL_VIDEO", "simulated");
    Shell::installVideoPlayer();
    qunsetenv("MEDIASHELL_VIDEO");
    EXPECT_TRUE(
        qobject_cast<mediashell::PacedSimulatedPlayer*>(shell::VideoPlayerFactory::create().get()));
    shell::VideoPlayerFactory::setCreator({});
}

// The Syncing screen of a pair with a long name, drawn at both sizes: each value stays
// right of its label, and every text inside the 5% title-safe area.
TEST_F(ShellMenuTest, SyncingFactsAreDrawnBesideTheirLabelsInsideTheSafeArea)
{
    const QString pair = m_home.path() + "/Vireo/0123456789abcdef0123456789ABCDEF/";
    ASSERT_TRUE(QDir().mkpath(pair));
    for (const auto& [file, keys] : { std::pair { "vireo.plist",
                                          "<key>global</key><dict><key>clientName</key><string>The "
                                          "Family's Upstairs Living Room Mac Pro</string><key>"
                                          "pairTime</key><integer>1201824000</integer></dict>" },
             { "vireostats.plist",
                 "<key>lastSyncTime</key><integer>1234567890</integer><key>lastSyncPeer</key>"
                 "<string>10.0.0.7</string>" } }) {
        QFile plist(pair + file);
        ASSERT_TRUE(plist.open(QIODevice::WriteOnly));
        plist.write(QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\">"
                               "<dict>")
            + keys + "</dict></plist>");
    }
    m_options.applianceDirs = { QStringLiteral(BUILD_APPLIANCE_DIR) };
    // Qt 6.4's pixmap store keeps the texture of a control's image past an in-process
    // window's end (the shell itself ends with its process); not this test's to report.
    [[maybe_unused]] const LeakCheckPause pause;
    for (const QSize size : { QSize(1280, 720), QSize(1920, 1080) }) {
        SCOPED_TRACE(size.width());
        m_options.size = size;
        m_options.windowed = true;
        Shell shell(m_options);
        QString error;
        ASSERT_TRUE(shell.showWindow(&error)) << qPrintable(error);
        // Vireo Movies, its only row "Settings", then "Syncing".
        for (const auto action : { shell::RemoteAction::Select, shell::RemoteAction::Select,
                 shell::RemoteAction::Down, shell::RemoteAction::Select })
            shell.performAction(action);
        QList<std::pair<QString, QRectF>> texts;
        const auto labelAt = [&] {
            texts.clear();
            drawnTexts(shell.window()->contentItem(), texts);
            return std::find_if(texts.cbegin(), texts.cend(), [](const auto& text) {
                return text.first == "Paired On";
            }) - texts.cbegin();
        };
        ASSERT_TRUE(QTest::qWaitFor([&] {
            return shell.window()->contentItem()->size() == size && labelAt() < texts.size();
        }));
        const QRectF safe(size.width() * 0.05 - 1, size.height() * 0.05 - 1, size.width() * 0.9 + 2,
            size.height() * 0.9 + 2);
        for (const auto& [text, rect] : texts)
            EXPECT_TRUE(safe.contains(rect)) << qPrintable(text);
        // Name, Paired On, Last Sync Time, Last Peer Address: each label then its value.
        const qsizetype pairedOn = labelAt();
        for (qsizetype label = pairedOn - 2; label <= pairedOn + 4; label += 2) {
            EXPECT_LT(texts[label].second.right(), texts[label + 1].second.left())
                << qPrintable(texts[label].first);
        }
    }
}

} // namespace
