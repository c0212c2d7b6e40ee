#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace SXP {

class Tag;

// The process-wide table of element names. Open addressing over 256 slots: the
// handlers of this library register well under a hundred names, so the table never
// fills and a probe is a handful of string compares at most.
class TagHashtable {
public:
    static constexpr int kSlots = 256;

    // The table, created on first use and freed at process exit.
    static TagHashtable* TagHT();
    static void cleanupHashTable();

    static std::uint32_t Hash(const char* name);

    // Answers the slot that holds the tag's name, storing the name when it is new.
    int Add(const Tag& tag);
    // Answers the slot that holds name, or -1 when the name was never added.
    int Lookup(const char* name) const;

private:
    TagHashtable() = default;

    std::array<std::string, kSlots> m_slots;
};

} // namespace SXP
