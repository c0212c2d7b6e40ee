#include "reposit/sxp/CParser.h"

#include "reposit/sxp/CElement.h"
#include "reposit/sxp/IPersistObj.h"
#include "reposit/sxp/Tag.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

namespace SXP {

namespace {

    constexpr std::size_t kFileBlock = 8192;
    constexpr std::size_t kLargestFeed = std::size_t(1) << 30;
    constexpr int kLastMappedExpatCode = 22;

    struct FileClose {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

} // namespace

CParser::CParser(IPersistObj* root)
    : m_pParser(XML_ParserCreate(nullptr))
{
    XML_Parser parser = m_pParser.get();
    if (parser) {
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, &CParser::StartElement, &CParser::EndElement);
        XML_SetCharacterDataHandler(parser, &CParser::CharacterData);
        // No external entity is ever fetched: without a handler for external entity
        // references expat skips them, and parameter entities are not parsed at all.
        XML_SetParamEntityParsing(parser, XML_PARAM_ENTITY_PARSING_NEVER);
        XML_SetBillionLaughsAttackProtectionMaximumAmplification(parser, kMaxAmplification);
        XML_SetBillionLaughsAttackProtectionActivationThreshold(parser, kAmplificationThreshold);
    }
    if (root)
        m_handlers.push_back(root);
}

CParser::~CParser() = default;

int CParser::Feed(const char* buf, int len, int isFinal)
{
    if (!m_pParser)
        return kNoError;
    XML_Parser parser = m_pParser.get();
    if (XML_Parse(parser, buf, len, isFinal) != XML_STATUS_ERROR)
        return kNoError;
    const XML_Error code = XML_GetErrorCode(parser);
    m_errorText = XML_ErrorString(code);
    m_nErrorLine = static_cast<int>(XML_GetCurrentLineNumber(parser));
    m_nErrorColumn = static_cast<int>(XML_GetCurrentColumnNumber(parser));
    return RemapError(code);
}

int CParser::FeedAll(const char* buf, std::size_t len)
{
    int result = kNoError;
    do {
        const std::size_t piece = std::min(len, kLargestFeed);
        len -= piece;
        result = Feed(buf, static_cast<int>(piece), len == 0);
        buf += piece;
    } while (len > 0 && result == kNoError);
    return result;
}

int CParser::FeedFile(const char* path)
{
    m_errorText = "No error";
    m_nErrorLine = -1;
    m_nErrorColumn = -1;
    const std::unique_ptr<std::FILE, FileClose> file(std::fopen(path, "rt"));
    if (!file) {
        m_pParser.reset();
        m_errorText = "Can't open file";
        m_nErrorLine = -1;
        m_nErrorColumn = -1;
        return kCantOpenFile;
    }
    std::vector<char> block(kFileBlock);
    int result = kNoError;
    for (;;) {
        const std::size_t got = std::fread(block.data(), 1, block.size(), file.get());
        const bool last = got < block.size();
        result = Feed(block.data(), static_cast<int>(got), last);
        if (last || m_nStop || !m_pParser || result != kNoError)
            break;
    }
    DoShutdown();
    return result;
}

void CParser::ReadTo(IPersistObj* obj)
{
    if (obj)
        m_handlers.push_back(obj);
}

void CParser::Shutdown()
{
    m_nStop = 1;
}

void CParser::DoShutdown()
{
    m_pParser.reset();
    m_handlers.clear();
    m_elements.clear();
    m_nDepth = 0;
}

int CParser::RemapError(int expatCode)
{
    if (expatCode == XML_ERROR_NONE)
        return kNoError;
    if (expatCode >= 1 && expatCode <= kLastMappedExpatCode)
        return expatCode + 1;
    return kOtherExpatError;
}

int XMLCALL CParser::UEHandler(
    void* /*encodingHandlerData*/, const XML_Char* name, XML_Encoding* info)
{
    if (!name || !info || std::strcmp(name, "sxp_encoding") != 0)
        return XML_STATUS_ERROR;
    for (int byte = 0; byte < 256; ++byte)
        info->map[byte] = byte;
    info->data = nullptr;
    info->convert = nullptr;
    info->release = nullptr;
    return XML_STATUS_OK;
}

CElement* CParser::PushElement()
{
    if (m_nDepth == m_elements.size())
        m_elements.push_back(std::make_unique<CElement>());
    return m_elements[m_nDepth++].get();
}

void XMLCALL CParser::StartElement(void* userData, const XML_Char* name, const XML_Char** atts)
{
    auto* self = static_cast<CParser*>(userData);
    if (self->m_nStop)
        return;
    CElement* element = self->PushElement();
    element->Reset(name, atts);
    if (!self->m_handlers.empty())
        self->m_handlers.back()->BeginElement(self, element);
}

void XMLCALL CParser::CharacterData(void* userData, const XML_Char* text, int len)
{
    auto* self = static_cast<CParser*>(userData);
    if (self->m_nStop || self->m_nDepth == 0)
        return;
    self->m_elements[self->m_nDepth - 1]->AppendData(text, len);
}

void XMLCALL CParser::EndElement(void* userData, const XML_Char* name)
{
    auto* self = static_cast<CParser*>(userData);
    if (self->m_nStop || self->m_nDepth == 0)
        return;
    CElement* element = self->m_elements[--self->m_nDepth].get();
    element->setName(name);
    const int index = element->TagIndex();
    if (self->m_handlers.empty())
        return;
    self->m_handlers.back()->EndElement(self, element);
    if (!self->m_handlers.empty() && index == self->m_handlers.back()->GetClassTag().Index()) {
        self->m_handlers.pop_back();
        if (self->m_handlers.empty())
            self->Shutdown();
    }
}

} // namespace SXP
