#include "reposit/sxp/CElement.h"
#include "reposit/sxp/CParser.h"
#include "reposit/sxp/IPersistObj.h"
#include "reposit/sxp/Tag.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>

using namespace SXP;

namespace {

const Tag kDocTag("doc");
const Tag kItemTag("item");
const Tag kSubTag("sub");

// Logs "<name " for a start and "</name:data " for an end, so a test compares a whole run.
// A "sub" element is handed to `child`; a "stop" element shuts the parse down.
class Recorder : public IPersistObj {
public:
    Recorder(const Tag& tag, std::string* log, std::string prefix = {})
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
        *m_log += m_prefix + "<" + element->Name() + " ";
        if (child && element->IsA(kSubTag))
            parser->ReadTo(child);
        if (element->IsA("stop"))
            parser->Shutdown();
    }
    void EndElement(IParser*, IElement* element) override
    {
        *m_log += m_prefix + "</" + element->Name() + ":" + element->Data() + " ";
    }
    Recorder* child = nullptr;

private:
    const Tag& m_tag;
    std::string* m_log;
    std::string m_prefix;
};

std::string times(const std::string& text, int count)
{
    return QByteArray::fromStdString(text).repeated(count).toStdString();
}

struct ParseRun {
    std::string events;
    int code;
    std::string error; // "TEXT LINE:COLUMN"
    bool stopped;
};

// Feeds `doc` in pieces of `chunk` bytes (0: whole), or the file at `path` when `doc` is
// empty; answers the first non-zero code.
ParseRun parse(const std::string& doc, std::size_t chunk = 0, const Tag& root = kDocTag,
    const QByteArray& path = {})
{
    ParseRun run;
    Recorder child(kSubTag, &run.events, "c"), recorder(root, &run.events);
    recorder.child = &child;
    CParser parser(&recorder);
    run.code = 0;
    if (!path.isEmpty())
        run.code = parser.FeedFile(path.constData());
    const std::size_t step = chunk ? chunk : doc.size();
    for (std::size_t pos = 0; pos < doc.size() && run.code == 0; pos += step) {
        const std::size_t len = std::min(step, doc.size() - pos);
        run.code = parser.Feed(doc.data() + pos, int(len), pos + len == doc.size());
    }
    run.error = parser.ErrorText() + " " + std::to_string(parser.ErrorLine()) + ":"
        + std::to_string(parser.ErrorColumn());
    run.stopped = parser.IsStopped();
    parser.DoShutdown();
    EXPECT_EQ(parser.Feed("<x/>", 4, 1), 0); // a shut down parser takes nothing more
    return run;
}

TEST(CParser, EventsAreTheSameWholeAndInSmallChunks)
{
    QTemporaryDir dir;
    QFile secret(dir.filePath("secret.txt"));
    ASSERT_TRUE(secret.open(QIODevice::WriteOnly) && secret.write("TOPSECRET") == 9);
    secret.close();
    struct Case {
        const char* name;
        std::string doc;
        std::string events;
        const Tag& root = kDocTag;
    };
    const Case cases[] = {
        { "unregistered names never pop", "<doc><unknown><doc2/></unknown>t</doc>",
            "<doc <unknown <doc2 </doc2: </unknown: </doc:t " },
        { "closing the root handler's element stops the parse",
            "<doc><item>1</item><item>2</item></doc>", "<doc <item </item:1 ", kItemTag },
        { "ReadTo hands events to a child until its element closes",
            "<doc><sub><item>i</item></sub><item>j</item></doc>",
            "<doc <sub c<item c</item:i c</sub: <item </item:j </doc: " },
        // "doc" and "stop" are still open: DoShutdown frees them.
        { "Shutdown from a handler ignores later events",
            "<doc><item>a</item><stop><item>b</item></stop>tail</doc>",
            "<doc <item </item:a <stop " },
        { "external entities are not loaded",
            "<!DOCTYPE doc [<!ENTITY ext SYSTEM 'file://" + secret.fileName().toStdString()
                + "'>]><doc><item>&ext;</item></doc>",
            "<doc <item </item: </doc: " },
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

TEST(CParser, MalformedXmlAndMissingFilesReportCodeTextAndPosition)
{
    std::string laughs = "<!DOCTYPE doc [<!ENTITY l0 'ha'>"; // 2 * 10^10 bytes if expanded
    for (int i = 1; i <= 10; ++i)
        laughs += "<!ENTITY l" + std::to_string(i) + " '"
            + times("&l" + std::to_string(i - 1) + ";", 10) + "'>";
    const struct {
        std::string doc;
        int code;
        std::string error;
    } cases[] = {
        { "<doc>\n  <item></doc>", XML_ERROR_TAG_MISMATCH + 1, "mismatched tag 2:10" },
        { laughs + "]><doc>&l10;</doc>", CParser::kOtherExpatError,
            "limit on input amplification factor (from DTD and entities) breached 1:590" },
    };
    for (const auto& c : cases) {
        const ParseRun run = parse(c.doc);
        EXPECT_EQ(run.code, c.code) << c.error;
        EXPECT_EQ(run.error, c.error);
    }
    const ParseRun missing = parse({}, 0, kDocTag, "/nonexistent/doc.xml");
    EXPECT_EQ(missing.code, CParser::kCantOpenFile);
    EXPECT_EQ(missing.error, "Can't open file -1:-1");
}

TEST(CParser, DeepNestingParsesWithoutRecursion)
{
    constexpr int kDepth = 100000;
    const ParseRun deep
        = parse("<doc>" + times("<item>", kDepth) + times("</item>", kDepth) + "</doc>");
    EXPECT_EQ(deep.code, 0);
    EXPECT_EQ(deep.events.size(),
        std::string("<doc </doc: ").size() + kDepth * std::string("<item </item: ").size());
}

} // namespace
