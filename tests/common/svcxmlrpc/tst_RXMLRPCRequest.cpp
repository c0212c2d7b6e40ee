#include "XmlRpcTestSupport.h"

#include "reposit/svcxmlrpc/RXMLRPCObject.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace {

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
        { "StructInArrayInStruct",
            call(param("<struct><member><name>list</name><value><array><data>"
                       "<value><struct>"
                + member("t", "<int>1</int>")
                + "</struct></value>"
                  "<value><array><data><value><boolean>1</boolean></value></data></array></value>"
                  "</data></array></value></member>"
                + member("after", "<double>0.5</double>") + "</struct>")),
            "[{after=double:0.5;list=[{t=int:1;},[bool:true,],];},]" },
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
        { "NotWellFormed", "<methodCall>\n<params>\n<param></params>", "[]",
            "Bad XML-RPC request: error mismatched tag at line 3 char 9" },
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

TEST(RXMLRPCRequest, ParametersAccumulateAndTheFirstMethodNameStays)
{
    RXMLRPCObject object;
    EXPECT_TRUE(parse(object, call(param("<int>1</int>"), "first")).ok);
    EXPECT_EQ(parse(object, call(param("<int>2</int>"), "second")).params, "[int:1,int:2,]");
    EXPECT_TRUE(parse(object, "<methodCall><methodName>third</methodName></methodCall>").ok);
    EXPECT_EQ(object.methodName(), "first");
}

} // namespace
