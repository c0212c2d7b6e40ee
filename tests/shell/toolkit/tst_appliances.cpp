#include "toolkit/appliance/Appliance.h"
#include "toolkit/appliance/ApplianceLoader.h"
#include "toolkit/appliance/Bundle.h"
#include "toolkit/appliance/NotificationCenter.h"

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <QLocale>

namespace {

using shell::ApplianceLoader;
using shell::Bundle;
using shell::NotificationCenter;

TEST(ApplianceLoader, loadsGoodPluginsInOrderAndReportsEveryBrokenOne)
{
    const LogCapture log;
    ApplianceLoader loader;
    loader.loadFolder(QStringLiteral(VIREO_APPLIANCE_FIXTURES));

    // sortOrder first (Zulu is 1), then the name; each library's own appliance.
    QStringList loaded;
    for (const ApplianceLoader::Entry& entry : loader.appliances())
        loaded << entry.fileName + " " + entry.name + " "
                + (entry.appliance ? entry.appliance->moduleKey() : QString());
    EXPECT_EQ(loaded,
        QStringList({ "libappliance_zulu.so Zulu net.vireo.test.zulu",
            "libappliance_alpha.so Alpha net.vireo.test.alpha",
            "libappliance_beta.so Beta net.vireo.test.beta" }));

    struct Broken {
        const char* fileName;
        const char* reasonPart;
    };
    const Broken broken[] = {
        { "libappliance_empty.so", "no appliance" },
        { "libappliance_foreign.so", "net.vireo.shell.SomethingElse/1.0" },
        { "libappliance_fractional.so", "sortOrder" },
        { "libappliance_nameless.so", "no name" },
        { "libappliance_plainlib.so", "not a plugin" },
        { "libappliance_text.so", "not a plugin" },
        { "libappliance_unresolved.so", "fixtureMissingVariable" },
    };
    ASSERT_EQ(loader.failures().size(), qsizetype(std::size(broken)));
    for (qsizetype i = 0; i < loader.failures().size(); ++i) {
        const ApplianceLoader::Failure& failure = loader.failures().at(i);
        SCOPED_TRACE(broken[i].fileName);
        EXPECT_EQ(failure.fileName, broken[i].fileName);
        EXPECT_TRUE(failure.reason.contains(broken[i].reasonPart)) << failure.reason.toStdString();
        EXPECT_TRUE(LogCapture::lines().contains(
            "Error loading appliance plugin: " + failure.reason + " " + failure.fileName));
    }
    EXPECT_EQ(LogCapture::containing("Error").size(), loader.failures().size());

    ApplianceLoader missing;
    missing.loadFolder(QStringLiteral(VIREO_APPLIANCE_FIXTURES "/no-such-folder"));
    EXPECT_TRUE(missing.appliances().empty());
    EXPECT_TRUE(missing.failures().isEmpty());
}

TEST(Bundle, looksStringsUpInRegionThenLanguageThenEnglishAndResourcesUnderItsRoot)
{
    struct Row {
        const char* name;
        const char* locale;
        const char* key;
        const char* table;
        const char* expected;
    };
    const Row rows[] = {
        { "regional table first", "fr_FR", "Greeting", "", "Salut" },
        { "language table next", "fr_FR", "Farewell", "", "Au revoir" },
        { "English last", "fr_FR", "Only English", "", "English only" },
        { "absent everywhere gives the key", "fr_FR", "Nowhere", "", "Nowhere" },
        { "another region of the language", "fr_CA", "Greeting", "", "Bonjour" },
        { "a language without tables", "de_DE", "Greeting", "", "Hello" },
        { "named table", "en_US", "Greeting", "Menus", "Main menu hello" },
        { "missing table gives the key", "en_US", "Greeting", "Nothing", "Greeting" },
        { "unparsable table gives the key", "en_US", "Greeting", "Broken", "Greeting" },
        { "a number is no text", "en_US", "Number", "", "Number" },
    };
    const Bundle bundle(QStringLiteral(":/bundle-fixture"));
    const QLocale saved;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QLocale::setDefault(QLocale(row.locale));
        EXPECT_EQ(bundle.localizedStringForKey(row.key, row.table), row.expected);
    }
    QLocale::setDefault(saved);
    EXPECT_EQ(bundle.urlForResource("Icon", "xpm"), "qrc:/bundle-fixture/Icon.xpm");
    EXPECT_EQ(bundle.imageForResource("Icon", "xpm").size(), QSize(3, 2));
    EXPECT_TRUE(bundle.pathForResource("Missing", "xpm").isNull());
}

// Handlers run in the order they were added. One removed during a post, by itself or by
// another handler, is not called again; one added during a post waits for the next; a
// notice posted from a handler is delivered at once.
TEST(NotificationCenter, postsInOrderWhileHandlersRemoveAddAndPost)
{
    NotificationCenter& center = NotificationCenter::defaultCenter();
    int tokens[5] = {};
    QList<int> calls;
    const auto observe = [&](int token, const QString& name, std::function<void()> also = {}) {
        center.addObserver(&tokens[token], name, [&calls, token, also](const QString&, QObject*) {
            calls.append(token);
            if (also)
                also();
        });
    };
    observe(3, "shown", [&] {
        center.removeObserver(&tokens[3]);
        observe(4, "shown");
        center.postNotification("nested");
    });
    observe(1, "shown", [&] { center.removeObserver(&tokens[2]); });
    observe(2, "shown");
    observe(0, {}); // every notice
    center.postNotification("shown");
    EXPECT_EQ(calls, QList<int>({ 3, 0, 1, 0 }));
    calls.clear();
    center.postNotification("shown");
    EXPECT_EQ(calls, QList<int>({ 1, 0, 4 }));
    for (const int& token : tokens)
        center.removeObserver(&token);
}

} // namespace
