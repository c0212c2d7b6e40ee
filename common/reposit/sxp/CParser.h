#pragma once

#include "reposit/sxp/IParser.h"

#include <expat.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace SXP {

class CElement;

// Turns expat's events into BeginElement/EndElement calls on a stack of handlers.
// One parser reads one document.
class CParser : public IParser {
public:
    // Codes answered by Feed and FeedFile.
    enum ErrorCode {
        kNoError = 0,
        kCantOpenFile = 1,
        // 2..23: expat's codes 1..22 plus one
        kOtherExpatError = 24,
    };

    // Entity expansion may exceed the document's own size by this factor at most...
    static constexpr float kMaxAmplification = 100.0f;
    // ...once the expansion has passed this many bytes.
    static constexpr unsigned long long kAmplificationThreshold = 1024 * 1024;

    explicit CParser(IPersistObj* root);
    ~CParser() override;

    CParser(const CParser&) = delete;
    CParser& operator=(const CParser&) = delete;

    int Feed(const char* buf, int len, int isFinal);
    // Feeds a buffer of any size as the last piece of the document.
    int FeedAll(const char* buf, std::size_t len);
    int FeedFile(const char* path);

    void ReadTo(IPersistObj* obj) override;
    void Shutdown() override;
    // Frees expat and forgets the handlers and open elements; Feed does nothing after.
    void DoShutdown();

    bool IsStopped() const { return m_nStop != 0; }
    const std::string& ErrorText() const { return m_errorText; }
    int ErrorLine() const { return m_nErrorLine; }
    int ErrorColumn() const { return m_nErrorColumn; }

    static int RemapError(int expatCode);

    // Accepts only "sxp_encoding", read as Latin-1. Not installed by the parser.
    static int XMLCALL UEHandler(
        void* encodingHandlerData, const XML_Char* name, XML_Encoding* info);

private:
    struct ExpatFree {
        void operator()(XML_ParserStruct* parser) const { XML_ParserFree(parser); }
    };

    static void XMLCALL StartElement(void* userData, const XML_Char* name, const XML_Char** atts);
    static void XMLCALL EndElement(void* userData, const XML_Char* name);
    static void XMLCALL CharacterData(void* userData, const XML_Char* text, int len);

    CElement* PushElement();

    std::vector<IPersistObj*> m_handlers;
    // Element stack: the open element at depth d is m_elements[d]; entries above
    // m_nDepth are kept for reuse by later elements.
    std::vector<std::unique_ptr<CElement>> m_elements;
    std::size_t m_nDepth = 0;
    std::unique_ptr<XML_ParserStruct, ExpatFree> m_pParser;
    int m_nStop = 0;
    int m_nErrorLine = -1;
    int m_nErrorColumn = -1;
    std::string m_errorText;
};

} // namespace SXP
