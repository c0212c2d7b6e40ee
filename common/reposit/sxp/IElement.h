#pragma once

#include "reposit/sxp/IDataInput.h"

namespace SXP {

class Tag;

// One element as the handlers see it, valid from its start event to the end of its
// end event.
class IElement : public IDataInput {
public:
    virtual const char* Name() = 0;
    // The attribute's value; an absent attribute is added with an empty value.
    virtual const char* Attrib(const char* name) = 0;
    virtual bool IsA(const char* name) = 0;
    virtual bool IsA(const Tag& tag) = 0;
    virtual bool AttribIs(const char* name, const char* value) = 0;
    virtual void setName(const char* name) = 0;
    // The tag table's slot for the element's name, or -1 when the name is not a tag.
    // Handlers that tell many tags apart index a table with it instead of asking IsA
    // once per tag.
    virtual int TagIndex() = 0;
};

} // namespace SXP
