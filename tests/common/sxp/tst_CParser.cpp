#include "reposit/sxp/CElement.h"
#include "reposit/sxp/CParser.h"
#include "reposit/sxp/IPersistObj.h"
#include "reposit/sxp/Tag.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace SXP;
using Events = std::vector<std::string>;

namespace {

const Tag kDocTag("doc");
const Tag kItemTag("item");
const Tag kSubTag("sub");

// Logs "<name" for a start and "</name:data" for an end, so a test compares a whole run.
// A "sub" element is handed to `child`; a "stop" element shuts the parse down.
class Recorder : public IPersistObj {
public:
    Recorder(const Tag& tag, Events* log, std::string prefix = {})
        : m_tag(tag)
        , m_log(log)
        , m_prefix(std::move(prefix))
    {
    }
    const Tag& GetClassTag() const override { return m_tag; }
    void WriteElement(IOutStreamT<CFileOutStream>*, std::map<std::string, std::string>&) override {
    }
    void BeginElement(IParser* parser, IElement* element) override
    {
        m_log->push_back(m_prefix + "<" + element->Name());
        if (child && element->IsA(kSubTag))
            parser->ReadTo(child);
        if (element->IsA("stop"))
            parser->Shutdown();
    }
    void EndElement(IParser*, IElement* element) override
    {
        m_log->push_back(m_prefix + "</" + element->Name() + ":" + element->Data());
    }
    Recorder* child = nullptr;

private:
    const Tag& m_tag;
    Events* m_log;
    std::string m_prefix;
};

std::string times(const std::string& text, int count)
{
    return QByteArray::fromStdString(text).repeated(count).toStdString();
}

struct ParseRun {
    Events events;
    int code;
    std::string errorText;
    int errorLine;
    int errorColumn;
    bool stopped;
};

template <typename FeedFn> ParseRun record(FeedFn feedWith, const Tag& root = kDocTag)
{
    ParseRun run;
    Recorder child(kSubTag, &run.events, "child"), recorder(root, &run.events);
    recorder.child = &child;
    CParser parser(&recorder);
    run.code = feedWith(parser);
    run.errorText = parser.ErrorText();
    run.errorLine = parser.ErrorLine();
    run.errorColumn = parser.ErrorColumn();
    run.stopped = parser.IsStopped();
    parser.DoShutdown();
    EXPECT_EQ(parser.Feed("<x/>", 4, 1), 0); // a shut down parser takes nothing more
    return run;
}

// Feeds doc in pieces of `chunk` bytes (0: whole); answers the first non-zero code.
ParseRun parse(const std::string& doc, std::size_t chunk = 0, const Tag& root = kDocTag)
{
    return record(
        [&](CParser& parser) {
            const std::size_t step = chunk ? chunk : doc.size();
            for (std::size_t pos = 0; pos < doc.size(); pos += step) {
                const std::size_t len = std::min(step, doc.size() - pos);
                if (const int code
                    = parser.Feed(doc.data() + pos, int(len), pos + len == doc.size()))
                    return code;
            }
            return 0;
        },
        root);
}

TEST(CParser, EventsAreTheSameWholeAndInSmallChunks)
{
    QTemporaryDir dir;
    QFile secret(dir.filePath("secret.txt"));
    ASSERT_TRUE(secret.open(QIODevice::WriteOnly));
    ASSERT_EQ(secret.write("TOPSECRET"), 9);
    secret.close();
    struct Case {
        const char* name;
        std::string doc;
        Events events;
        const Tag& root = kDocTag;
    };
    const Case cases[] = {
        { "Nested", "<doc><item>one</item><item>two</item></doc>",
            { "<doc", "<item", "</item:one", "<item", "</item:two", "</doc:" } },
        { "TextBetweenChildrenGoesToParent", "<doc>a<item>x</item>b\nc</doc>",
            { "<doc", "<item", "</item:x", "</doc:ab\nc" } },
        { "EntitiesCdataAndUtf8JoinInOrder",
            "<doc><item>a &amp; b &lt;c&gt; <![CDATA[<raw>]]> &#233;\xE2\x82\xAC</item></doc>",
            { "<doc", "<item", "</item:a & b <c> <raw> \xC3\xA9\xE2\x82\xAC", "</doc:" } },
        { "UnregisteredNamesNeverPop", "<doc><unknown><doc2/></unknown>t</doc>",
            { "<doc", "<unknown", "<doc2", "</doc2:", "</unknown:", "</doc:t" } },
        { "ClosingTheRootHandlersElementStopsTheParse", "<doc><item>1</item><item>2</item></doc>",
            { "<doc", "<item", "</item:1" }, kItemTag },
        { "ReadToHandsEventsToAChildUntilItsElementCloses",
            "<doc><sub><item>i</item></sub><item>j</item></doc>",
            { "<doc", "<sub", "child<item", "child</item:i", "child</sub:", "<item", "</item:j",
                "</doc:" } },
        // "doc" and "stop" are still open: DoShutdown frees them.
        { "ShutdownFromAHandlerIgnoresLaterEvents",
            "<doc><item>a</item><stop><item>b</item></stop>tail</doc>",
            { "<doc", "<item", "</item:a", "<stop" } },
        { "ExternalEntitiesAreNotLoaded",
            "<!DOCTYPE doc [<!ENTITY ext SYSTEM 'file://" + secret.fileName().toStdString()
                + "'>]><doc><item>&ext;</item></doc>",
            { "<doc", "<item", "</item:", "</doc:" } },
    };
    for (const auto& c : cases) {
        for (std::size_t chunk = 0; chunk <= 5; ++chunk) {
            SCOPED_TRACE(std::string(c.name) + ", chunk " + std::to_string(chunk));
            const ParseRun run = parse(c.doc, chunk, c.root);
            EXPECT_EQ(run.code, 0);
            EXPECT_TRUE(run.stopped); // by the root handler's element closing, or by a handler
            EXPECT_EQ(run.events, c.events);
        }
    }
}

TEST(CParser, MalformedXmlReportsCodeTextAndPosition)
{
    std::string laughs = "<!DOCTYPE doc [<!ENTITY l0 'ha'>"; // 2 * 10^10 bytes if expanded
    for (int i = 1; i <= 10; ++i)
        laughs += "<!ENTITY l" + std::to_string(i) + " '"
            + times("&l" + std::to_string(i - 1) + ";", 10) + "'>";
    const struct {
        std::string doc;
        int code;
        std::string text;
        int line, column;
    } cases[] = {
        { "<doc>\n  <item></doc>", XML_ERROR_TAG_MISMATCH + 1, "mismatched tag", 2, 10 },
        { "<doc>", XML_ERROR_NO_ELEMENTS + 1, "no element found", 1, 5 },
        { "<doc>\xFF</doc>", XML_ERROR_INVALID_TOKEN + 1, "not well-formed (invalid token)", 1, 5 },
        { laughs + "]><doc>&l10;</doc>", CParser::kOtherExpatError,
            "limit on input amplification factor (from DTD and entities) breached", 1, 590 },
    };
    for (const auto& c : cases) {
        const ParseRun run = parse(c.doc);
        EXPECT_EQ(run.code, c.code) << c.doc;
        EXPECT_EQ(run.errorText, c.text) << c.doc;
        EXPECT_EQ(run.errorLine, c.line) << c.doc;
        EXPECT_EQ(run.errorColumn, c.column) << c.doc;
    }
    const std::pair<int, int> remapped[]
        = { { 0, 0 }, { 1, 2 }, { 22, 23 }, { 23, 24 }, { -1, 24 } };
    for (const auto& [expat, sxp] : remapped)
        EXPECT_EQ(CParser::RemapError(expat), sxp) << expat;
}

TEST(CParser, FeedFileReadsAcrossBlockBoundariesAndReportsAMissingFile)
{
    QTemporaryDir dir;
    const QByteArray path = dir.filePath("doc.xml").toUtf8();
    const auto fromFile = [&](CParser& parser) { return parser.FeedFile(path.constData()); };
    const ParseRun missing = record(fromFile);
    EXPECT_EQ(missing.code, CParser::kCantOpenFile);
    EXPECT_EQ(missing.errorText, "Can't open file");
    EXPECT_EQ(missing.errorLine, -1);
    EXPECT_EQ(missing.errorColumn, -1);
    EXPECT_TRUE(missing.events.empty());

    // One short block, one full block followed by an empty last one, several blocks.
    for (const int size : { 10, 8192 - 24, 30000 }) {
        const std::string text(std::size_t(size), 'x');
        QFile file(QString::fromUtf8(path));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(QByteArray::fromStdString("<doc><item>" + text + "</item></doc>"));
        file.close();
        const ParseRun run = record(fromFile);
        EXPECT_EQ(run.code, 0) << size;
        EXPECT_EQ(run.errorText, "No error") << size;
        EXPECT_EQ(run.errorLine, -1) << size;
        EXPECT_EQ(run.errorColumn, -1) << size;
        EXPECT_EQ(run.events, (Events { "<doc", "<item", "</item:" + text, "</doc:" })) << size;
    }
}

TEST(CParser, UEHandlerAcceptsOnlyItsOwnNameAsLatin1)
{
    XML_Encoding info {};
    EXPECT_EQ(CParser::UEHandler(nullptr, "other", &info), XML_STATUS_ERROR);
    ASSERT_EQ(CParser::UEHandler(nullptr, "sxp_encoding", &info), XML_STATUS_OK);
    for (int byte = 0; byte < 256; ++byte)
        ASSERT_EQ(info.map[byte], byte);
    EXPECT_EQ(info.convert, nullptr);
}

TEST(CParserSecurity, DeepNestingParsesWithoutRecursion)
{
    constexpr int kDepth = 100000;
    const std::string items = times("<item>", kDepth) + times("</item>", kDepth);
    const ParseRun run = parse("<doc>" + items + "</doc>");
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.events.size(), 2u * kDepth + 2);
}

} // namespace
