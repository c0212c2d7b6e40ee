#include "reposit/svcxmlrpc/RXMLRPCTagCodes.h"

#include "reposit/sxp/Tag.h"

#include <QtGlobal>

RXMLRPCTagCodes::RXMLRPCTagCodes(const SXP::Tag& none, std::initializer_list<Entry> matchOrder)
    : m_none(none)
{
    for (const Entry& entry : matchOrder) {
        Q_ASSERT(entry.code > 0 && entry.code < 128);
        const auto code = static_cast<std::size_t>(entry.code);
        if (m_byCode.size() <= code)
            m_byCode.resize(code + 1, Entry { nullptr, 0 });
        m_byCode[code] = entry;
        // A tag that could not be registered has no slot: its element stays unknown.
        const int slot = entry.tag->Index();
        if (slot >= 0 && m_codeBySlot[static_cast<std::size_t>(slot)] == 0)
            m_codeBySlot[static_cast<std::size_t>(slot)] = static_cast<signed char>(entry.code);
    }
}

const SXP::Tag& RXMLRPCTagCodes::tagOf(int code) const
{
    if (code > 0 && static_cast<std::size_t>(code) < m_byCode.size()) {
        if (const SXP::Tag* tag = m_byCode[static_cast<std::size_t>(code)].tag)
            return *tag;
    }
    return m_none;
}
