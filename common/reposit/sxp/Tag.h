#pragma once

namespace SXP {

// A registered element name. Comparing an element with a tag is an integer compare
// once the element has looked its name up, which is what makes the handlers' long
// "which element is this" chains cheap.
class Tag {
public:
    explicit Tag(const char* name);

    Tag(const Tag&) = delete;
    Tag& operator=(const Tag&) = delete;

    const char* Name() const { return m_pName; }
    int Index() const { return m_nIndex; }

private:
    const char* m_pName;
    int m_nIndex = -1;
};

} // namespace SXP
