#pragma once

namespace SXP {

class IPersistObj;

class IParser {
public:
    virtual ~IParser() = default;
    // Hands the following events to obj until obj's own element closes.
    virtual void ReadTo(IPersistObj* obj) = 0;
    // Ignores every later event of the document.
    virtual void Shutdown() = 0;
};

} // namespace SXP
