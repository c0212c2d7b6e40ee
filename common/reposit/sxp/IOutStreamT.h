#pragma once

namespace SXP {

class CFileOutStream;

// The output side of persist objects. Nothing in this system writes documents back,
// so the stream has no operations yet; it only fixes the type that WriteElement takes.
template <typename Stream> class IOutStreamT {
public:
    virtual ~IOutStreamT() = default;
};

} // namespace SXP
