#include "reposit/sxp/CElement.h"
#include "reposit/sxp/CParser.h"
#include "reposit/sxp/IPersistObj.h"
#include "reposit/sxp/Tag.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using namespace SXP;

namespace {

const Tag kDocTag("doc");
const Tag kItemTag("item");
const Tag kSubTag("sub");

// Writes every event it receives as one line: "<name" for a start, "</name:data" for
// an end, so a test compares a whole run with one vector.
class Recorder : public IPersistObj
{
public:
    explicit Recorder(const Tag& tag, std::vector<std::string>* log, std::string prefix = {})
        : m_tag(tag), m_log(log), m_prefix(std::move(prefix))
    {
    }
    const Tag& GetClassTag() const override { return m_tag; }
    void WriteElement(IOutStreamT<CFileOutStream>*, std::map<std::string, std::string>&) override {}
    void BeginElement(IParser* parser, IElement* element) override
    {
        m_log->push_back(m_prefix + "<" + element->Name());
        if (onBegin)
            onBegin(parser, element);
    }
    void EndElement(IParser*, IElement* element) override
    {
        m_log->push_back(m_prefix + "</" + element->Name() + ":" + element->Data());
    }
    std::function<void(IParser*, IElement*)> onBegin;

private:
    const Tag& m_tag;
    std::vector<std::string>* m_log;
    std::string m_prefix;
};

struct ParseRun
{
    std::vector<std::string> events;
    int code = 0;
};

// Parses doc with a fresh parser and recorder, in pieces of `chunk` bytes (0: whole).
ParseRun parse(const std::string& doc, std::size_t chunk, const Tag& rootTag = kDocTag)
{
    ParseRun run;
    Recorder root(rootTag, &run.events);
    CParser parser(&root);
    if (chunk == 0) {
        run.code = parser.Feed(doc.data(), static_cast<int>(doc.size()), 1);
    } else {
        for (std::size_t pos = 0; pos < doc.size() && run.code == 0; pos += chunk) {
            const std::size_t len = std::min(chunk, doc.size() - pos);
            run.code = parser.Feed(doc.data() + pos, static_cast<int>(len), 0);
        }
        if (run.code == 0)
            run.code = parser.Feed("", 0, 1);
    }
    parser.DoShutdown();
    return run;
}

struct EventCase
{
    const char* name;
    std::string doc;
    std::vector<std::string> events;
};

void PrintTo(const EventCase& c, std::ostream* out) { *out << c.name; }

class ParserEvents : public ::testing::TestWithParam<EventCase>
{
};

TEST_P(ParserEvents, SameEventsWholeAndInSmallChunks)
{
    const EventCase& c = GetParam();
    for (std::size_t chunk = 0; chunk <= 5; ++chunk) {
        const ParseRun run = parse(c.doc, chunk);
        EXPECT_EQ(run.code, 0) << "chunk " << chunk;
        EXPECT_EQ(run.events, c.events) << "chunk " << chunk;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Documents, ParserEvents,
    ::testing::Values(
        EventCase{"Nested", "<doc><item>one</item><item>two</item></doc>",
                  {"<doc", "<item", "</item:one", "<item", "</item:two", "</doc:"}},
        EventCase{"TextBetweenChildrenGoesToParent", "<doc>a<item>x</item>b\nc</doc>",
                  {"<doc", "<item", "</item:x", "</doc:ab\nc"}},
        EventCase{"EntitiesAndCdataJoinInOrder",
                  "<doc><item>a &amp; b &lt;c&gt; <![CDATA[<raw>]]> &#233;t&#xE9;</item></doc>",
                  {"<doc", "<item", "</item:a & b <c> <raw> \xC3\xA9t\xC3\xA9", "</doc:"}},
        EventCase{"Utf8TextKeptAsBytes", "<doc><item>\xE2\x82\xAC \xF0\x9F\x8E\xAC</item></doc>",
                  {"<doc", "<item", "</item:\xE2\x82\xAC \xF0\x9F\x8E\xAC", "</doc:"}},
        EventCase{"UnregisteredNamesNeverPop", "<doc><unknown><doc2/></unknown>t</doc>",
                  {"<doc", "<unknown", "<doc2", "</doc2:", "</unknown:", "</doc:t"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(CParser, RootHandlerPoppedWhenItsElementClosesStopsTheParse)
{
    // The root handler owns "item": when the first item closes, nothing else is seen.
    const ParseRun run = parse("<doc><item>1</item><item>2</item></doc>", 0, kItemTag);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.events, (std::vector<std::string>{"<doc", "<item", "</item:1"}));
}

TEST(CParser, ReadToHandsEventsToChildUntilItsElementCloses)
{
    std::vector<std::string> log;
    Recorder root(kDocTag, &log, "root");
    Recorder child(kSubTag, &log, "child");
    root.onBegin = [&](IParser* parser, IElement* element) {
        if (element->IsA(kSubTag))
            parser->ReadTo(&child);
    };
    CParser parser(&root);
    const std::string doc = "<doc><sub><item>i</item></sub><item>j</item></doc>";
    EXPECT_EQ(parser.Feed(doc.data(), static_cast<int>(doc.size()), 1), 0);
    parser.DoShutdown();
    const std::vector<std::string> expected{
        "root<doc", "root<sub", "child<item", "child</item:i", "child</sub:",
        "root<item", "root</item:j", "root</doc:"};
    EXPECT_EQ(log, expected);
}

TEST(CParser, ShutdownFromHandlerIgnoresLaterEvents)
{
    for (std::size_t chunk : {0u, 1u, 3u}) {
        std::vector<std::string> log;
        Recorder root(kDocTag, &log);
        root.onBegin = [](IParser* parser, IElement* element) {
            if (element->IsA(kSubTag))
                parser->Shutdown();
        };
        CParser parser(&root);
        const std::string doc = "<doc><item>a</item><sub><item>b</item></sub>tail</doc>";
        int code = 0;
        for (std::size_t pos = 0; pos < doc.size(); pos += chunk ? chunk : doc.size()) {
            const std::size_t len = chunk ? std::min(chunk, doc.size() - pos) : doc.size();
            code |= parser.Feed(doc.data() + pos, static_cast<int>(len), pos + len == doc.size());
        }
        EXPECT_EQ(code, 0);
        EXPECT_TRUE(parser.IsStopped());
        parser.DoShutdown(); // frees "doc" and "sub", still open when the parse stopped
        EXPECT_EQ(parser.Feed("<x/>", 4, 1), 0);
        EXPECT_EQ(log, (std::vector<std::string>{"<doc", "<item", "</item:a", "<sub"}));
    }
}

TEST(CParser, AttributesAnswerValuesAndInsertEmptyForAbsentNames)
{
    std::vector<std::string> seen;
    std::vector<std::string> log;
    Recorder root(kDocTag, &log);
    root.onBegin = [&](IParser*, IElement* element) {
        if (!element->IsA("item"))
            return;
        seen.push_back(element->Attrib("a"));
        seen.push_back(element->Attrib("missing"));
        seen.push_back(element->AttribIs("b", "x y") ? "b matches" : "b differs");
        seen.push_back(element->AttribIs("missing", "") ? "missing is empty" : "missing set");
    };
    CParser parser(&root);
    const std::string doc = "<doc><item a='1&amp;2' b=\"x y\"/><item/></doc>";
    EXPECT_EQ(parser.Feed(doc.data(), static_cast<int>(doc.size()), 1), 0);
    const std::vector<std::string> expected{"1&2", "", "b matches", "missing is empty",
                                            "", "", "b differs", "missing is empty"};
    EXPECT_EQ(seen, expected);
}

struct ErrorCase
{
    const char* name;
    std::string doc;
    int code;
    std::string text;
    int line;
    int column;
};

void PrintTo(const ErrorCase& c, std::ostream* out) { *out << c.name; }

class ParserErrors : public ::testing::TestWithParam<ErrorCase>
{
};

TEST_P(ParserErrors, ReportCodeTextAndPosition)
{
    const ErrorCase& c = GetParam();
    std::vector<std::string> log;
    Recorder root(kDocTag, &log);
    CParser parser(&root);
    EXPECT_EQ(parser.Feed(c.doc.data(), static_cast<int>(c.doc.size()), 1), c.code);
    EXPECT_EQ(parser.ErrorText(), c.text);
    EXPECT_EQ(parser.ErrorLine(), c.line);
    EXPECT_EQ(parser.ErrorColumn(), c.column);
}

INSTANTIATE_TEST_SUITE_P(
    Malformed, ParserErrors,
    ::testing::Values(
        ErrorCase{"MismatchedTag", "<doc>\n  <item></doc>", XML_ERROR_TAG_MISMATCH + 1,
                  "mismatched tag", 2, 10},
        ErrorCase{"Unclosed", "<doc>", XML_ERROR_NO_ELEMENTS + 1, "no element found", 1, 5},
        ErrorCase{"BadUtf8", "<doc>\xFF</doc>", XML_ERROR_INVALID_TOKEN + 1,
                  "not well-formed (invalid token)", 1, 5},
        ErrorCase{"UndefinedEntity", "<doc>&nope;</doc>", XML_ERROR_UNDEFINED_ENTITY + 1,
                  "undefined entity", 1, 5}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(CParser, RemapErrorShiftsKnownExpatCodesAndFoldsTheRest)
{
    EXPECT_EQ(CParser::RemapError(XML_ERROR_NONE), 0);
    EXPECT_EQ(CParser::RemapError(XML_ERROR_NO_MEMORY), 2);
    EXPECT_EQ(CParser::RemapError(22), 23);
    EXPECT_EQ(CParser::RemapError(23), 24);
    EXPECT_EQ(CParser::RemapError(XML_ERROR_AMPLIFICATION_LIMIT_BREACH), 24);
    EXPECT_EQ(CParser::RemapError(-1), 24);
}

class ParserFiles : public ::testing::Test
{
protected:
    std::string write(const char* name, const std::string& content)
    {
        const QString path = m_dir.filePath(QString::fromUtf8(name));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content.data(), static_cast<qint64>(content.size()));
        return path.toStdString();
    }
    QTemporaryDir m_dir;
};

TEST_F(ParserFiles, MissingFileAnswersOne)
{
    std::vector<std::string> log;
    Recorder root(kDocTag, &log);
    CParser parser(&root);
    const std::string path = m_dir.filePath("absent.xml").toStdString();
    EXPECT_EQ(parser.FeedFile(path.c_str()), CParser::kCantOpenFile);
    EXPECT_EQ(parser.ErrorText(), "Can't open file");
    EXPECT_EQ(parser.ErrorLine(), -1);
    EXPECT_EQ(parser.ErrorColumn(), -1);
    EXPECT_EQ(parser.Feed("<doc/>", 6, 1), 0);
    EXPECT_TRUE(log.empty());
}

TEST_F(ParserFiles, ReadsFilesAcrossBlockBoundaries)
{
    // Sizes around the 8192-byte block: one short block, exactly one full block
    // followed by an empty final block, and several blocks.
    for (const std::size_t textSize : {10u, 8192u - 24u, 30000u}) {
        const std::string text(textSize, 'x');
        const std::string doc = "<doc><item>" + text + "</item></doc>";
        const std::string path = write("doc.xml", doc);
        std::vector<std::string> log;
        Recorder root(kDocTag, &log);
        CParser parser(&root);
        EXPECT_EQ(parser.FeedFile(path.c_str()), 0) << doc.size();
        EXPECT_EQ(parser.ErrorText(), "No error");
        EXPECT_EQ(log, (std::vector<std::string>{"<doc", "<item", "</item:" + text, "</doc:"}));
    }
}

TEST(CParserEncoding, UEHandlerAcceptsOnlyItsOwnNameAsLatin1)
{
    XML_Encoding info{};
    EXPECT_EQ(CParser::UEHandler(nullptr, "other", &info), XML_STATUS_ERROR);
    ASSERT_EQ(CParser::UEHandler(nullptr, "sxp_encoding", &info), XML_STATUS_OK);
    for (int byte = 0; byte < 256; ++byte)
        ASSERT_EQ(info.map[byte], byte);
    EXPECT_EQ(info.convert, nullptr);

    // Installed on a plain expat parser, it reads byte 0xE9 as U+00E9.
    XML_Parser raw = XML_ParserCreate(nullptr);
    XML_SetUnknownEncodingHandler(raw, &CParser::UEHandler, nullptr);
    std::string text;
    XML_SetUserData(raw, &text);
    XML_SetCharacterDataHandler(raw, [](void* user, const XML_Char* s, int len) {
        static_cast<std::string*>(user)->append(s, static_cast<std::size_t>(len));
    });
    const std::string doc = "<?xml version='1.0' encoding='sxp_encoding'?><d>caf\xE9</d>";
    EXPECT_EQ(XML_Parse(raw, doc.data(), static_cast<int>(doc.size()), 1), XML_STATUS_OK);
    XML_ParserFree(raw);
    EXPECT_EQ(text, "caf\xC3\xA9");
}

TEST(CParserSecurity, BillionLaughsEndsWithAnError)
{
    std::string doc = "<?xml version='1.0'?><!DOCTYPE doc [<!ENTITY l0 'ha'>";
    for (int i = 1; i <= 10; ++i)
        doc += "<!ENTITY l" + std::to_string(i) + " '" + std::string("&l") +
               std::to_string(i - 1) + ";&l" + std::to_string(i - 1) + ";&l" +
               std::to_string(i - 1) + ";&l" + std::to_string(i - 1) + ";&l" +
               std::to_string(i - 1) + ";&l" + std::to_string(i - 1) + ";&l" +
               std::to_string(i - 1) + ";&l" + std::to_string(i - 1) + ";&l" +
               std::to_string(i - 1) + ";&l" + std::to_string(i - 1) + ";'>";
    doc += "]><doc>&l10;</doc>"; // 2 * 10^10 bytes if expanded
    const ParseRun run = parse(doc, 0);
    EXPECT_EQ(run.code, CParser::kOtherExpatError);
}

TEST(CParserSecurity, ExternalEntitiesAreNotLoaded)
{
    QTemporaryDir dir;
    const QString secretPath = dir.filePath("secret.txt");
    QFile secret(secretPath);
    ASSERT_TRUE(secret.open(QIODevice::WriteOnly));
    secret.write("TOPSECRET");
    secret.close();
    const std::string doc = "<!DOCTYPE doc [<!ENTITY ext SYSTEM 'file://" +
                            secretPath.toStdString() + "'>]><doc><item>&ext;</item></doc>";
    for (std::size_t chunk : {0u, 4u}) {
        const ParseRun run = parse(doc, chunk);
        EXPECT_EQ(run.code, 0);
        EXPECT_EQ(run.events, (std::vector<std::string>{"<doc", "<item", "</item:", "</doc:"}));
    }
}

TEST(CParserSecurity, DeepNestingParsesWithoutRecursion)
{
    constexpr int kDepth = 100000;
    std::string doc;
    for (int i = 0; i < kDepth; ++i)
        doc += "<item>";
    for (int i = 0; i < kDepth; ++i)
        doc += "</item>";
    const ParseRun run = parse("<doc>" + doc + "</doc>", 0);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.events.size(), 2u * kDepth + 2);
}

} // namespace
