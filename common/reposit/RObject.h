#pragma once

#include "reposit/RRuntimeClass.h"

// Root of the object model. Carries nothing but its class record; weak references to
// it are kept by RRepositObject's guard operations.
class RObject {
public:
    RObject() = default;
    RObject(const RObject&) = default;
    RObject& operator=(const RObject&) = default;

    virtual const RRuntimeClass* GetRuntimeClass() const;
    virtual ~RObject();

    static const RRuntimeClass* GetThisClass();

    // True when this object's class is pClass or derives from it.
    bool IsKindOf(const RRuntimeClass* pClass) const;

    static const RRuntimeClass classRObject;
};
