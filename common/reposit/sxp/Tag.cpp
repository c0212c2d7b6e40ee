#include "reposit/sxp/Tag.h"

#include "reposit/sxp/TagHashtable.h"

namespace SXP {

Tag::Tag(const char* name)
    : m_pName(name)
{
    m_nIndex = TagHashtable::TagHT()->Add(*this);
}

} // namespace SXP
