#include "vtvplugin/platform/PlistNode.h"

#include <utility>

PlistNode::~PlistNode()
{
    if (m_node)
        plist_free(m_node);
}

PlistNode& PlistNode::operator=(PlistNode&& other) noexcept
{
    if (this != &other) {
        if (m_node)
            plist_free(m_node);
        m_node = other.release();
    }
    return *this;
}

plist_t PlistNode::release()
{
    return std::exchange(m_node, nullptr);
}
