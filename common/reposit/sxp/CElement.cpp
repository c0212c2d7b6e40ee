#include "reposit/sxp/CElement.h"

#include "reposit/sxp/Tag.h"
#include "reposit/sxp/TagHashtable.h"

#include <cstring>

namespace SXP {

const char* CElement::Attrib(const char* name)
{
    return m_attributes[name].c_str();
}

bool CElement::IsA(const char* name)
{
    return m_name == name;
}

int CElement::TagIndex()
{
    if (m_nTagIndex == -1)
        m_nTagIndex = TagHashtable::TagHT()->Lookup(m_name.c_str());
    return m_nTagIndex;
}

bool CElement::IsA(const Tag& tag)
{
    return TagIndex() == tag.Index();
}

bool CElement::AttribIs(const char* name, const char* value)
{
    return std::strcmp(Attrib(name), value) == 0;
}

namespace {

    // One pass over two short names, where operator== would take strlen and then memcmp.
    bool sameName(const std::string& current, const char* name)
    {
        const char* a = current.c_str();
        while (*a && *a == *name) {
            ++a;
            ++name;
        }
        return *a == *name;
    }

} // namespace

void CElement::setName(const char* name)
{
    if (sameName(m_name, name))
        return;
    m_name.assign(name);
    m_nTagIndex = -1;
}

void CElement::Reset(const char* name, const char** atts)
{
    setName(name);
    m_data.clear();
    m_attributes.clear();
    if (!atts)
        return;
    for (const char** a = atts; a[0] && a[1]; a += 2)
        m_attributes[a[0]] = a[1];
}

} // namespace SXP
