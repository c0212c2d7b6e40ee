#pragma once

#include "reposit/sxp/IElement.h"

#include <map>
#include <string>

namespace SXP {

// The parser keeps one CElement per nesting depth and reuses it for every element
// at that depth, so the strings below keep their capacity from element to element,
// and an element named like its predecessor at that depth keeps the looked-up tag
// index (a name's slot never changes once it is in the table).
class CElement : public IElement {
public:
    const char* Data() override { return m_data.c_str(); }
    const char* Name() override { return m_name.c_str(); }
    const char* Attrib(const char* name) override;
    bool IsA(const char* name) override;
    bool IsA(const Tag& tag) override;
    bool AttribIs(const char* name, const char* value) override;
    void setName(const char* name) override;
    int TagIndex() override;

    // Prepares the element for a new start event: name set, data and attributes
    // emptied, then expat's name/value list stored (a later duplicate wins).
    void Reset(const char* name, const char** atts);
    void AppendData(const char* text, int len)
    {
        m_data.append(text, static_cast<std::size_t>(len));
    }

    std::size_t DataSize() const { return m_data.size(); }

private:
    std::string m_name;
    std::string m_data;
    std::map<std::string, std::string> m_attributes;
    int m_nTagIndex = -1;
};

} // namespace SXP
