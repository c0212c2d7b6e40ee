#include "XmlRpcTestSupport.h"

#include "reposit/svcxmlrpc/RXMLRPCObject.h"
#include "reposit/svcxmlrpc/RXMLRPCRequestImpl.h"
#include "reposit/sxp/CParser.h"

#include <gtest/gtest.h>

#include <string>

namespace {

QByteArray call(const std::string& params, const std::string& name = "m")
{
    return QByteArray::fromStdString("<?xml version=\"1.0\"?>\n<methodCall><methodName>" + name +
                                     "</methodName><params>" + params +
                                     "</params></methodCall>");
}

std::string param(const std::string& value)
{
    return "<param><value>" + value + "</value></param>";
}

// Reads doc through the handler directly, fed to the parser in pieces of `chunk` bytes.
std::string paramsReadInChunks(const QByteArray& doc, int chunk)
{
    RXMLRPCObject object;
    RXMLRPCRequestImpl handler(&object);
    SXP::CParser parser(&handler);
    for (qsizetype pos = 0; pos < doc.size(); pos += chunk) {
        const int len = static_cast<int>(std::min<qsizetype>(chunk, doc.size() - pos));
        if (parser.Feed(doc.constData() + pos, len, pos + len == doc.size()) != 0)
            break;
    }
    parser.DoShutdown();
    return describe(object.params());
}

struct ValueCase
{
    const char* name;
    std::string params;
    std::string expected; // describe() of the parameter list
};

void PrintTo(const ValueCase& c, std::ostream* out) { *out << c.name; }

class RequestValues : public ::testing::TestWithParam<ValueCase>
{
};

TEST_P(RequestValues, ParseIntoParameters)
{
    const ValueCase& c = GetParam();
    const QByteArray doc = call(c.params);
    RXMLRPCObject object;
    QString error;
    EXPECT_TRUE(object.parseRequest(doc, error)) << error.toStdString();
    EXPECT_TRUE(error.isEmpty());
    EXPECT_EQ(object.methodName(), "m");
    EXPECT_EQ(describe(object.params()), c.expected);
    for (int chunk = 1; chunk <= 5; ++chunk)
        EXPECT_EQ(paramsReadInChunks(doc, chunk), c.expected) << "chunk " << chunk;
}

INSTANTIATE_TEST_SUITE_P(
    Scalars, RequestValues,
    ::testing::Values(
        ValueCase{"Int", param("<int>42</int>"), "[int:42,]"},
        ValueCase{"I4LeadingBlank", param("<i4> -7</i4>"), "[int:-7,]"},
        ValueCase{"IntNotANumber", param("<int>abc</int>"), "[int:0,]"},
        ValueCase{"IntTrailingJunk", param("<int>12abc</int>"), "[int:12,]"},
        ValueCase{"BooleanTwoIsTrue", param("<boolean>2</boolean>"), "[bool:true,]"},
        ValueCase{"BooleanZero", param("<boolean>0</boolean>"), "[bool:false,]"},
        ValueCase{"BooleanWordIsFalse", param("<boolean>true</boolean>"), "[bool:false,]"},
        ValueCase{"Double", param("<double>-1.5e3</double>"), "[double:-1500,]"},
        ValueCase{"StringWithEntities", param("<string>a &amp; b &lt;c&gt;</string>"),
                  "[string:a & b <c>,]"},
        ValueCase{"StringUtf8", param("<string>caf\xC3\xA9</string>"), "[string:caf\xC3\xA9,]"},
        ValueCase{"EmptyString", param("<string/>"), "[string:,]"},
        ValueCase{"Base64NotDecoded", param("<base64>aGk=</base64>"), "[string:aGk=,]"},
        ValueCase{"UntypedTextIsNotRead", param("plain"), "[invalid,]"},
        ValueCase{"DateTimeFirstIsInvalid", param("<dateTime.iso8601>20240101T10:00:00</dateTime.iso8601>"),
                  "[invalid,]"},
        ValueCase{"DateTimeRepeatsPreviousValue",
                  param("<int>5</int>") + param("<dateTime.iso8601>20240101T10:00:00</dateTime.iso8601>"),
                  "[int:5,int:5,]"},
        ValueCase{"NoParams", "", "[]"}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Nesting, RequestValues,
    ::testing::Values(
        ValueCase{"Struct",
                  param("<struct><member><name>b</name><value><int>2</int></value></member>"
                        "<member><name>a</name><value><string>x</string></value></member></struct>"),
                  "[{a=string:x;b=int:2;},]"},
        ValueCase{"EqualKeysKeepWireOrder",
                  param("<struct><member><name>k</name><value><int>3</int></value></member>"
                        "<member><name>k</name><value><int>1</int></value></member>"
                        "<member><name>j</name><value><int>0</int></value></member>"
                        "<member><name>k</name><value><int>2</int></value></member></struct>"),
                  "[{j=int:0;k=int:3;k=int:1;k=int:2;},]"},
        ValueCase{"Array",
                  param("<array><data><value><int>1</int></value><value><string>s</string></value>"
                        "</data></array>"),
                  "[[int:1,string:s,],]"},
        ValueCase{"StructInArrayInStruct",
                  param("<struct><member><name>list</name><value><array><data>"
                        "<value><struct><member><name>t</name><value><int>1</int></value></member></struct></value>"
                        "<value><array><data><value><boolean>1</boolean></value></data></array></value>"
                        "</data></array></value></member>"
                        "<member><name>after</name><value><double>0.5</double></value></member></struct>"),
                  "[{after=double:0.5;list=[{t=int:1;},[bool:true,],];},]"},
        ValueCase{"EmptyContainers", param("<struct></struct>") + param("<array><data/></array>"),
                  "[{},[],]"},
        ValueCase{"SeveralParams", param("<int>1</int>") + param("<struct/>") + param("<string>z</string>"),
                  "[int:1,{},string:z,]"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(RequestMessage, MethodNameAndParametersAccumulateOverCalls)
{
    RXMLRPCObject object;
    QString error;
    ASSERT_TRUE(object.parseRequest(call(param("<int>1</int>"), "first"), error));
    ASSERT_TRUE(object.parseRequest(call(param("<int>2</int>"), "second"), error));
    EXPECT_EQ(object.methodName(), "first");
    EXPECT_EQ(describe(object.params()), "[int:1,int:2,]");

    RXMLRPCObject twice;
    const QByteArray doc("<methodCall><methodName>a</methodName><methodName>b</methodName></methodCall>");
    EXPECT_TRUE(twice.parseRequest(doc, error));
    EXPECT_EQ(twice.methodName(), "a");
}

struct MalformedCase
{
    const char* name;
    std::string doc;
    QString error;
    std::string params;
};

void PrintTo(const MalformedCase& c, std::ostream* out) { *out << c.name; }

class RequestErrors : public ::testing::TestWithParam<MalformedCase>
{
};

TEST_P(RequestErrors, FailWithTheirMessageAndKeepWhatWasRead)
{
    const MalformedCase& c = GetParam();
    RXMLRPCObject object;
    QString error;
    EXPECT_FALSE(object.parseRequest(QByteArray::fromStdString(c.doc), error));
    EXPECT_EQ(error, c.error);
    EXPECT_EQ(describe(object.params()), c.params);
}

std::string nestedArrays(int depth)
{
    std::string doc;
    for (int i = 0; i < depth; ++i)
        doc += "<value><array><data>";
    doc += "<value><int>1</int></value>";
    for (int i = 0; i < depth; ++i)
        doc += "</data></array></value>";
    return "<methodCall><params><param>" + doc + "</param></params></methodCall>";
}

INSTANTIATE_TEST_SUITE_P(
    Documents, RequestErrors,
    ::testing::Values(
        MalformedCase{"MemberWithoutName",
                      call(param("<struct><member><value><int>1</int></value></member></struct>"))
                          .toStdString(),
                      "No name for member within structure", "[{unknown=int:1;},]"},
        MalformedCase{"MemberInsideArrayData",
                      call(param("<array><data><member><value><int>1</int></value></member></data></array>"))
                          .toStdString(),
                      "Malformed request: found <member> tag outside a <struct>"
                      "Malformed request: found closing <member> tag outside a <struct>",
                      "[[int:1,],]"},
        MalformedCase{"DataOutsideArray", call(param("<data></data>")).toStdString(),
                      "Malformed request: found <data> tag outside a <array>"
                      "Malformed request: found closing <data> tag outside a <array>",
                      "[invalid,]"},
        MalformedCase{"NameOutsideStruct", call("<param><name>n</name></param>").toStdString(),
                      "Malformed request: found <name> tag outside a <struct>"
                      "Malformed request: found closing <name> tag outside a <struct>",
                      "[]"},
        MalformedCase{"UnknownElement",
                      call(param("<int>1</int>") + param("<nil/>") + param("<int>2</int>")).toStdString(),
                      "Malformed request: Unknown element type found: nil", "[int:1,]"},
        MalformedCase{"ResponseIsNotARequest",
                      "<methodResponse><params/></methodResponse>",
                      "Malformed request: Unknown element type found: methodResponse", "[]"},
        MalformedCase{"WrongRoot", "<params>" + param("<int>1</int>") + "</params>",
                      "Error: malformed request, methodCall tag mismatch.", "[int:1,]"},
        MalformedCase{"NotWellFormed", "<methodCall>\n<params>\n<param></params>",
                      "Bad XML-RPC request: error mismatched tag at line 3 char 9", "[]"},
        MalformedCase{"Truncated", "<methodCall><params>", "Bad XML-RPC request: error no element found at line 1 char 20",
                      "[]"},
        MalformedCase{"HandlerAndExpatErrors", "<methodCall><nil>",
                      "Malformed request: Unknown element type found: nil\n"
                      "Bad XML-RPC request: error no element found at line 1 char 17",
                      "[]"},
        MalformedCase{"NestedTooDeep", nestedArrays(kRXMLRPCMaxDepth + 1),
                      "Malformed request: values nested deeper than 256 levels", "[]"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(RequestLimits, NestingUpToTheLimitIsRead)
{
    RXMLRPCObject object;
    QString error;
    EXPECT_TRUE(object.parseRequest(QByteArray::fromStdString(nestedArrays(kRXMLRPCMaxDepth)), error))
        << error.toStdString();
    ASSERT_EQ(object.params().size(), 1);
    QVariant v = object.params().first();
    for (int depth = 0; depth < kRXMLRPCMaxDepth; ++depth) {
        ASSERT_TRUE(isXMLRPCList(v)) << depth;
        v = asXMLRPCList(v).first();
    }
    EXPECT_EQ(describe(v), "int:1");
}

TEST(RequestLimits, ExpatErrorIsAddedBehindTextTheCallerPassedIn)
{
    RXMLRPCObject object;
    QString error = "earlier";
    EXPECT_FALSE(object.parseRequest("<methodCall>", error));
    EXPECT_EQ(error, "earlier\nBad XML-RPC request: error no element found at line 1 char 12");
}

TEST(RequestSecurity, HostileDocumentsEndWithAnError)
{
    // A hundred thousand nested structs stop at the nesting limit.
    std::string deep = "<methodCall><params><param>";
    for (int i = 0; i < 100000; ++i)
        deep += "<value><struct><member><name>n</name>";
    RXMLRPCObject nested;
    QString error;
    EXPECT_FALSE(nested.parseRequest(QByteArray::fromStdString(deep), error));
    EXPECT_TRUE(error.startsWith("Malformed request: values nested deeper than 256 levels\n"
                                 "Bad XML-RPC request: error no element found"))
        << error.toStdString();

    // Each entity refers ten times to the one before it: 4 * 10^10 bytes expanded.
    std::string laughs = "<!DOCTYPE methodCall [<!ENTITY e0 'aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa'>";
    for (int i = 1; i <= 9; ++i) {
        std::string refs;
        for (int r = 0; r < 10; ++r)
            refs += "&e" + std::to_string(i - 1) + ";";
        laughs += "<!ENTITY e" + std::to_string(i) + " '" + refs + "'>";
    }
    laughs += "]><methodCall><methodName>&e9;</methodName></methodCall>";
    RXMLRPCObject bomb;
    error.clear();
    EXPECT_FALSE(bomb.parseRequest(QByteArray::fromStdString(laughs), error));
    EXPECT_TRUE(error.startsWith("Bad XML-RPC request: error limit on input amplification factor"))
        << error.toStdString();
}

TEST(RequestScale, ManySiblingsWithOneKeyKeepTheirOrder)
{
    constexpr int kMembers = 50000;
    std::string members;
    for (int i = 0; i < kMembers; ++i)
        members += "<member><name>k</name><value><int>" + std::to_string(i) + "</int></value></member>";
    RXMLRPCObject object;
    QString error;
    ASSERT_TRUE(object.parseRequest(call(param("<struct>" + members + "</struct>")), error));
    const RXMLRPCStruct& map = asXMLRPCStruct(object.params().first());
    ASSERT_EQ(map.size(), kMembers);
    int expected = 0;
    for (auto it = map.cbegin(); it != map.cend(); ++it, ++expected)
        ASSERT_EQ(it.value().toInt(), expected);
}

} // namespace
