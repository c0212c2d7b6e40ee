#pragma once

#include <plist/plist.h>

// Sole owner of a libplist node tree: frees it with plist_free unless ownership is
// handed on with release() (for instance to a dictionary that adopts the node).
class PlistNode {
public:
    PlistNode() = default;
    explicit PlistNode(plist_t node)
        : m_node(node)
    {
    }
    ~PlistNode();

    PlistNode(PlistNode&& other) noexcept
        : m_node(other.release())
    {
    }
    PlistNode& operator=(PlistNode&& other) noexcept;
    PlistNode(const PlistNode&) = delete;
    PlistNode& operator=(const PlistNode&) = delete;

    plist_t get() const { return m_node; }
    plist_t release();
    explicit operator bool() const { return m_node != nullptr; }

private:
    plist_t m_node = nullptr;
};
