#pragma once

#include "reposit/svcxmlrpc/RXMLRPCScalar.h"
#include "reposit/sxp/IElement.h"
#include "reposit/sxp/TagHashtable.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <vector>

namespace SXP {
class Tag;
}

// The element codes of one handler. An element's code comes from its tag table slot
// with one array access, instead of one IsA per tag on every event; a code leads
// back to its tag and to the kind of scalar its element holds.
class RXMLRPCTagCodes {
public:
    struct Entry {
        const SXP::Tag* tag;
        int code; // positive
        RXMLRPCScalar scalar = RXMLRPCScalar::None;
    };

    // The entries in the order a handler matches elements: of two entries with one
    // name, the first wins. `none` stands for code 0.
    RXMLRPCTagCodes(const SXP::Tag& none, std::initializer_list<Entry> matchOrder);

    // 0 when the element's name is none of the entries.
    int codeOf(SXP::IElement* element) const
    {
        const int slot = element->TagIndex();
        return slot < 0 ? 0 : m_codeBySlot[static_cast<std::size_t>(slot)];
    }

    // The `none` tag for 0 and for codes without an entry.
    const SXP::Tag& tagOf(int code) const;

    RXMLRPCScalar scalarOf(int code) const
    {
        return code > 0 && static_cast<std::size_t>(code) < m_byCode.size()
            ? m_byCode[static_cast<std::size_t>(code)].scalar
            : RXMLRPCScalar::None;
    }

private:
    std::array<signed char, SXP::TagHashtable::kSlots> m_codeBySlot {};
    std::vector<Entry> m_byCode; // indexed by code; holes have a null tag
    const SXP::Tag& m_none;
};
