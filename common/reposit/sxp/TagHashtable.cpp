#include "reposit/sxp/TagHashtable.h"

#include "reposit/sxp/Tag.h"

#include <cstdlib>
#include <cstring>

namespace SXP {

namespace {
    TagHashtable* g_pHashTable = nullptr;
}

TagHashtable* TagHashtable::TagHT()
{
    if (!g_pHashTable) {
        // A plain pointer on purpose: static Tags of other files register names before
        // this file's globals are initialised and after they would be destroyed, so the
        // table lives until cleanupHashTable runs at exit.
        g_pHashTable = new TagHashtable;
        std::atexit(&TagHashtable::cleanupHashTable);
    }
    return g_pHashTable;
}

void TagHashtable::cleanupHashTable()
{
    delete g_pHashTable;
    g_pHashTable = nullptr;
}

std::uint32_t TagHashtable::Hash(const char* name)
{
    std::uint32_t h = 0;
    for (const char* p = name; *p; ++p)
        h = h * 31u + static_cast<std::uint32_t>(static_cast<std::int8_t>(*p));
    return h;
}

int TagHashtable::Add(const Tag& tag)
{
    int slot = static_cast<int>(Hash(tag.Name()) % kSlots);
    for (int probes = 0; probes < kSlots; ++probes) {
        std::string& text = m_slots[slot];
        if (text.empty()) {
            text = tag.Name();
            return slot;
        }
        if (text == tag.Name())
            return slot;
        slot = (slot + 1) % kSlots;
    }
    return -1;
}

int TagHashtable::Lookup(const char* name) const
{
    int slot = static_cast<int>(Hash(name) % kSlots);
    for (int probes = 0; probes < kSlots; ++probes) {
        const std::string& text = m_slots[slot];
        if (text.empty())
            return -1;
        if (std::strcmp(text.c_str(), name) == 0)
            return slot;
        slot = (slot + 1) % kSlots;
    }
    return -1;
}

} // namespace SXP
