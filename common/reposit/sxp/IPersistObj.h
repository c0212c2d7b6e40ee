#pragma once

#include "reposit/sxp/IOutStreamT.h"

#include <map>
#include <string>

namespace SXP {

class IElement;
class IParser;
class Tag;

// An event handler on the parser's handler stack. It owns the element named by its
// class tag: when that element closes the parser pops the handler.
class IPersistObj {
public:
    virtual ~IPersistObj() = default;
    virtual const Tag& GetClassTag() const = 0;
    virtual void WriteElement(
        IOutStreamT<CFileOutStream>* stream, std::map<std::string, std::string>& attributes)
        = 0;
    virtual void BeginElement(IParser* parser, IElement* element) = 0;
    virtual void EndElement(IParser* parser, IElement* element) = 0;
};

} // namespace SXP
