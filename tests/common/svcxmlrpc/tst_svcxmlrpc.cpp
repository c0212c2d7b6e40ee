#include "reposit/svcxmlrpc/RXMLRPCEscape.h"
#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/svcxmlrpc/RXMLRPCReplyAccess.h"
#include "reposit/svcxmlrpc/RXMLRPCValue.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <string>

namespace {

// A one-line description of a value that names every type ("int:1", "bool:true",
// "QString:x", "{key=...;}", "[...,]"), so that values of different types never compare equal.
std::string describe(const QVariant& value)
{
    std::string out;
    if (isXMLRPCStruct(value)) {
        const RXMLRPCStruct& map = asXMLRPCStruct(value);
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            out += it.key().toStdString() + "=" + describe(it.value()) + ";";
        return "{" + out + "}";
    }
    if (isXMLRPCList(value)) {
        for (const QVariant& item : asXMLRPCList(value))
            out += describe(item) + ",";
        return "[" + out + "]";
    }
    if (!value.isValid())
        return "invalid";
    return std::string(value.typeName()) + ":" + value.toString().toStdString();
}

template <typename Container> std::string describe(const Container& container)
{
    return describe(QVariant::fromValue(container));
}

std::string member(const std::string& name, const std::string& value)
{
    return "<member><name>" + name + "</name><value>" + value + "</value></member>";
}

std::string times(const char* text, int count)
{
    return QByteArray(text).repeated(count).toStdString();
}

std::string call(const std::string& params, const std::string& name = "m")
{
    return "<?xml version=\"1.0\"?>\n<methodCall><methodName>" + name + "</methodName><params>"
        + params + "</params></methodCall>";
}

std::string param(const std::string& value)
{
    return "<param><value>" + value + "</value></param>";
}

// One parameter per text, each in a `type` element.
std::string params(const std::string& type, std::initializer_list<const char*> texts)
{
    std::string out;
    for (const char* text : texts)
        out += param("<" + type + ">" + text + "</" + type + ">");
    return out;
}

// A parameter nested `depth` structs (or arrays) deep around an int.
std::string nested(int depth, bool structs)
{
    std::string value = "<int>1</int>";
    for (int i = 0; i < depth; ++i)
        value = structs ? "<struct>" + member("n", value) + "</struct>"
                        : "<array><data><value>" + value + "</value></data></array>";
    return param(value);
}

struct Parsed {
    bool ok;
    QString error;
    std::string params;
};

Parsed parse(RXMLRPCObject& object, const std::string& doc)
{
    QString error;
    const bool ok = object.parseRequest(QByteArray::fromStdString(doc), error);
    return { ok, error, describe(object.params()) };
}

TEST(RXMLRPCRequest, ParsesIntoParametersOrFailsWithItsMessageKeepingWhatWasRead)
{
    struct Case {
        const char* name;
        std::string doc;
        std::string params;
        QString error = {};
    };
    const Case cases[] = {
        { "IntegersReadLikeAtol",
            call(params("int", { "42", "abc", "12abc" }) + params("i4", { " -7" })),
            "[int:42,int:0,int:12,int:-7,]" },
        { "IntegersSaturateAt32Bits",
            call(params("int", { "4294967338", "2147483647", "-2147483648" })
                + params("i4", { "-1234567890123456789012345678901234567890" })),
            "[int:2147483647,int:2147483647,int:-2147483648,int:-2147483648,]" },
        { "BooleansReadAsNumbers", call(params("boolean", { "2", "0", "true", "4294967296" })),
            "[bool:true,bool:false,bool:false,bool:true,]" },
        { "DoubleStringAndUndecodedBase64",
            call(params("double", { "-1.5e3" })
                + params("string", { "a &amp; b &lt;c&gt; caf\xC3\xA9" })
                + params("base64", { "aGk=" })),
            "[double:-1500,QString:a & b <c> caf\xC3\xA9,QString:aGk=,]" },
        { "EqualKeysKeepWireOrder",
            call(param("<struct>" + member("k", "<int>3</int>") + member("k", "<int>1</int>")
                + member("j", "<string>x</string>") + member("k", "<int>2</int>") + "</struct>")),
            "[{j=QString:x;k=int:3;k=int:1;k=int:2;},]" },
        { "NestingUpToTheLimit", call(nested(kRXMLRPCMaxDepth, false)),
            "[" + times("[", kRXMLRPCMaxDepth) + "int:1," + times("],", kRXMLRPCMaxDepth) + "]" },
        { "NestedTooDeep", call(nested(kRXMLRPCMaxDepth + 1, true)), "[]",
            "Malformed request: values nested deeper than 256 levels" },
        { "MemberWithoutName",
            call(param("<struct><member><value><int>1</int></value></member></struct>")),
            "[{unknown=int:1;},]", "No name for member within structure" },
        { "MemberInsideArrayData",
            call(param("<array><data><member><value><int>1</int></value></member></data></array>")),
            "[[int:1,],]",
            "Malformed request: found <member> tag outside a <struct>"
            "Malformed request: found closing <member> tag outside a <struct>" },
        { "UnknownElementStopsTheParse",
            call(param("<int>1</int>") + param("<nil/>") + param("<int>2</int>")), "[int:1,]",
            "Malformed request: Unknown element type found: nil" },
        { "ResponseIsNotARequest", "<methodResponse><params/></methodResponse>", "[]",
            "Malformed request: Unknown element type found: methodResponse" },
        { "HandlerAndExpatErrors", "<methodCall><nil>", "[]",
            "Malformed request: Unknown element type found: nil\n"
            "Bad XML-RPC request: error no element found at line 1 char 17" },
    };
    // A locale with "," as the decimal separator (where one is installed) must not matter.
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    for (const auto& c : cases) {
        RXMLRPCObject object;
        const Parsed parsed = parse(object, c.doc);
        EXPECT_EQ(parsed.ok, c.error.isEmpty()) << c.name;
        EXPECT_EQ(parsed.error, c.error) << c.name;
        EXPECT_EQ(parsed.params, c.params) << c.name;
    }
    std::setlocale(LC_NUMERIC, "C");
}

QByteArray reply(const std::string& value)
{
    return QByteArray::fromStdString("<methodResponse><params><param><value>" + value
        + "</value></param></params></methodResponse>");
}

QByteArray stringReply(const QString& payload)
{
    return reply("<string>" + escapeXML(payload).toStdString() + "</string>");
}

// An element `depth` levels deep, each level named "e", around "x".
QByteArray nestedPayload(int depth)
{
    return stringReply(QString::fromStdString(times("<e>", depth) + "x" + times("</e>", depth)));
}

RXMLRPCStruct makeStruct(std::initializer_list<std::pair<QString, QVariant>> entries)
{
    RXMLRPCStruct map;
    for (const auto& [key, value] : entries)
        insertInOrder(map, key, value);
    return map;
}

template <typename Container> QVariant v(const Container& container)
{
    return QVariant::fromValue(container);
}

TEST(RXMLRPCReply, FaultFillsCodeAndStringUntilTheNextReply)
{
    // A member that is neither between the two, and the code read like a 32-bit atol.
    RXMLRPCObject object;
    QString error;
    EXPECT_TRUE(object.parseReply(
        QByteArray::fromStdString("<methodResponse><fault><value><struct>"
            + member("faultString", "<string>bad</string>") + member("other", "<int>9</int>")
            + member("faultCode", "<i4>-3000000000</i4>")
            + "</struct></value></fault></methodResponse>"),
        error));
    // Flag, code, string and result together, once for the fault and once for the next reply.
    const auto state = [&object] {
        return QString("%1 %2 %3 ")
                   .arg(object.isFault())
                   .arg(object.faultCode())
                   .arg(object.faultString())
            + QString::fromStdString(describe(object.result()));
    };
    EXPECT_EQ(state(), "1 -2147483648 bad {}");
    EXPECT_TRUE(object.parseReply(stringReply("<k>v</k>"), error));
    EXPECT_EQ(state(), "0 0  {k=QString:v;}");
}

TEST(RXMLRPCReply, PayloadBecomesNestedStructsOfTextOrFailsWithItsMessage)
{
    const struct {
        const char* name;
        QByteArray doc;
        std::string result;
        QString error = {};
    } cases[] = {
        { "SiblingsOfOneNameKeepWireOrder", stringReply("<t>2</t><s>0</s><t>1</t>"),
            "{s=QString:0;t=QString:2;t=QString:1;}" },
        { "AttributesAndTextBetweenChildrenIgnored",
            stringReply("<a id='7'>before<b>1</b>between<c/>after</a>"),
            "{a={b=QString:1;c=QString:;};}" },
        { "EntitiesDecodedOnceByEachLayer", stringReply("<t>a &amp;amp; b &lt;</t>"),
            "{t=QString:a &amp; b <;}" },
        { "NonFaultStructFlattenedToTheFirstValue",
            reply("<struct>" + member("p", "<string>&lt;k&gt;1&lt;/k&gt;</string>")
                + member("q", "<string>&lt;j&gt;2&lt;/j&gt;</string>") + "</struct>"),
            "{k=QString:1;}" },
        { "NestingUpToTheLimit", nestedPayload(kRXMLRPCMaxDepth + 1),
            times("{e=", kRXMLRPCMaxDepth + 1) + "QString:x" + times(";}", kRXMLRPCMaxDepth + 1) },
        { "ArrayIsUnknown", reply("<array><data/></array>"), "{}",
            "Malformed response: Unknown element type found: array" },
        // Counted in the wrapped payload: 13 characters more.
        { "PayloadNotWellFormed", stringReply("<a>1</b>"), "{}",
            "Bad XML-RPC reply: error mismatched tag at line 1 char 19" },
        { "PayloadNestedTooDeep", nestedPayload(kRXMLRPCMaxDepth + 2), "{}",
            "Malformed response: values nested deeper than 256 levels" },
    };
    for (const auto& c : cases) {
        RXMLRPCObject object;
        QString error;
        EXPECT_EQ(object.parseReply(c.doc, error), c.error.isEmpty()) << c.name;
        EXPECT_EQ(error, c.error) << c.name;
        EXPECT_EQ(c.error.isEmpty() ? describe(object.result()) : "{}", c.result) << c.name;
    }
}

TEST(ConvertXMLRPCReply, WritesIndentedEscapedXml)
{
    const RXMLRPCStruct map = makeStruct({
        { "s", "x<y & 'z' \">\"" },
        { "b", v(makeStruct({ { "c", 1 }, { "c", 0.5 } })) },
        { "l", v(RXMLRPCList { 1, v(makeStruct({ { "m", true } })), v(RXMLRPCList { "n" }) }) },
        { "e", QVariant() },
    });
    EXPECT_EQ(convertXMLRPCReply(map, ""),
        "<b>\n  <c>1</c>\n  <c>0.5</c>\n</b>\n"
        "<e></e>\n"
        "<l>\n  <l>1</l>\n  <l>\n    <m>true</m>\n  </l>\n"
        "  <l>\n    <l>n</l>\n  </l>\n</l>\n"
        "<s>x&lt;y &amp; &apos;z&apos; &quot;&gt;&quot;</s>\n");
}

} // namespace
