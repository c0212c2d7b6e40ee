#include "reposit/RObject.h"

const RRuntimeClass RObject::classRObject = { "RObject", nullptr, nullptr, 0 };

const RRuntimeClass* RObject::GetRuntimeClass() const
{
    return &classRObject;
}

// Deliberately leaves guards alone: only repository objects are ever guarded.
RObject::~RObject() = default;

const RRuntimeClass* RObject::GetThisClass()
{
    return &classRObject;
}

bool RObject::IsKindOf(const RRuntimeClass* pClass) const
{
    return GetRuntimeClass()->IsDerivedFrom(pClass);
}
