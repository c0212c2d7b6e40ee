#include "toolkit/appliance/Appliance.h"
#include "toolkit/appliance/ApplianceLoader.h"
#include "toolkit/appliance/Bundle.h"
#include "toolkit/appliance/NotificationCenter.h"

#include <gtest/gtest.h>

#include <QLocale>

namespace {

using shell::ApplianceLoader;
using shell::Bundle;
using shell::NotificationCenter;

// Collects the warnings logged while it lives.
class WarningLog {
public:
    WarningLog()
    {
        s_lines.clear();
        m_previous = qInstallMessageHandler(&WarningLog::record);
    }
    ~WarningLog() { qInstallMessageHandler(m_previous); }
    QStringList lines() const { return s_lines; }

private:
    static void record(QtMsgType type, const QMessageLogContext&, const QString& message)
    {
        if (type == QtWarningMsg)
            s_lines.append(message);
    }
    static inline QStringList s_lines;
    QtMessageHandler m_previous = nullptr;
};

TEST(ApplianceLoader, loadsGoodPluginsInOrderAndReportsEveryBrokenOne)
{
    WarningLog log;
    ApplianceLoader loader;
    loader.loadFolder(QStringLiteral(VIREO_APPLIANCE_FIXTURES));

    // sortOrder first (Zulu is 1), then the name.
    QStringList names;
    for (const ApplianceLoader::Entry& entry : loader.appliances()) {
        names.append(entry.name);
        ASSERT_TRUE(entry.appliance);
        EXPECT_EQ(entry.appliance->moduleName(), entry.name) << entry.fileName.toStdString();
        EXPECT_EQ(entry.appliance->moduleKey(), entry.key) << entry.fileName.toStdString();
        EXPECT_EQ(entry.fileName, "libappliance_" + entry.name.toLower() + ".so");
    }
    EXPECT_EQ(names, QStringList({ "Zulu", "Alpha", "Beta" }));
    EXPECT_EQ(loader.appliances().front().sortOrder, 1);

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
        EXPECT_TRUE(log.lines().contains(
            "Error loading appliance plugin: " + failure.reason + " " + failure.fileName));
    }
    EXPECT_EQ(log.lines().size(), loader.failures().size());
}

TEST(ApplianceLoader, missingFolderLoadsNothing)
{
    ApplianceLoader loader;
    loader.loadFolder(QStringLiteral(VIREO_APPLIANCE_FIXTURES "/no-such-folder"));
    EXPECT_TRUE(loader.appliances().empty());
    EXPECT_TRUE(loader.failures().isEmpty());
}

class LocaleScope {
public:
    explicit LocaleScope(const QString& name) { QLocale::setDefault(QLocale(name)); }
    ~LocaleScope() { QLocale::setDefault(m_saved); }

private:
    QLocale m_saved;
};

TEST(Bundle, looksStringsUpInRegionThenLanguageThenEnglish)
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
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const LocaleScope locale(row.locale);
        EXPECT_EQ(bundle.localizedStringForKey(row.key, row.table), row.expected);
    }
}

TEST(Bundle, findsResourcesUnderItsRoot)
{
    const Bundle bundle(QStringLiteral(":/bundle-fixture"));
    EXPECT_EQ(bundle.pathForResource("Icon", "xpm"), ":/bundle-fixture/Icon.xpm");
    EXPECT_EQ(bundle.urlForResource("Icon", "xpm"), "qrc:/bundle-fixture/Icon.xpm");
    EXPECT_EQ(bundle.imageForResource("Icon", "xpm").size(), QSize(3, 2));

    EXPECT_TRUE(bundle.pathForResource("Icon", "png").isNull());
    EXPECT_TRUE(bundle.urlForResource("Missing", "xpm").isNull());
    EXPECT_TRUE(bundle.imageForResource("Missing", "xpm").isNull());
    // There, but no image.
    EXPECT_TRUE(bundle.imageForResource("strings/Localizable.en", "json").isNull());
}

// Observations on the shared centre, removed again when the test ends.
class NotificationCenterTest : public ::testing::Test {
protected:
    ~NotificationCenterTest() override
    {
        for (const int& token : m_tokens)
            center().removeObserver(&token);
    }
    static NotificationCenter& center() { return NotificationCenter::defaultCenter(); }
    void observe(int token, const QString& name, std::function<void()> also = {})
    {
        center().addObserver(&m_tokens[token], name, [this, token, also](const QString&, QObject*) {
            calls.append(token);
            if (also)
                also();
        });
    }
    const void* observer(int token) const { return &m_tokens[token]; }

    QList<int> calls;

private:
    int m_tokens[4] = {};
};

TEST_F(NotificationCenterTest, callsHandlersInOrderOfAddition)
{
    const int before = center().observationCount();
    observe(2, "shown");
    observe(0, "shown");
    observe(1, "other");
    observe(3, {});
    center().postNotification("shown");
    EXPECT_EQ(calls, QList<int>({ 2, 0, 3 }));
    EXPECT_EQ(center().observationCount(), before + 4);

    center().removeObserver(observer(0));
    calls.clear();
    center().postNotification("shown");
    EXPECT_EQ(calls, QList<int>({ 2, 3 }));
}

TEST_F(NotificationCenterTest, observationRemovedDuringAPostIsNotCalled)
{
    observe(0, "shown", [this] { center().removeObserver(observer(0)); });
    observe(1, "shown", [this] { center().removeObserver(observer(2)); });
    observe(2, "shown");
    observe(3, "shown");
    center().postNotification("shown");
    EXPECT_EQ(calls, QList<int>({ 0, 1, 3 }));
    calls.clear();
    center().postNotification("shown");
    EXPECT_EQ(calls, QList<int>({ 1, 3 }));
}

TEST_F(NotificationCenterTest, handlerMayPostAndAdd)
{
    observe(0, "first", [this] {
        center().postNotification("second");
        observe(3, "first");
    });
    observe(1, "second");
    observe(2, "first");
    center().postNotification("first");
    // The nested notice is delivered inside the first; an observation added meanwhile
    // waits for the next post.
    EXPECT_EQ(calls, QList<int>({ 0, 1, 2 }));
}

} // namespace
