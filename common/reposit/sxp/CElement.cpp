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

bool CElement::IsA(const Tag& tag)
{
    if (m_nTagIndex == -1)
        m_nTagIndex = TagHashtable::TagHT()->Lookup(m_name.c_str());
    return m_nTagIndex == tag.Index();
}

bool CElement::AttribIs(const char* name, const char* value)
{
    return std::strcmp(Attrib(name), value) == 0;
}

void CElement::setName(const char* name)
{
    setName(name, -1);
}

void CElement::setName(const char* name, int tagIndex)
{
    m_name.assign(name);
    m_nTagIndex = tagIndex;
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
