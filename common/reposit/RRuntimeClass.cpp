#include "reposit/RRuntimeClass.h"

#include "reposit/RObject.h"

std::unique_ptr<RObject> RRuntimeClass::CreateObject() const
{
    if (!m_pfnCreateObject)
        return nullptr;
    try {
        return std::unique_ptr<RObject>(m_pfnCreateObject());
    } catch (...) {
        // A factory is client code; whatever it throws must not leave the library.
        return nullptr;
    }
}

bool RRuntimeClass::IsDerivedFrom(const RRuntimeClass* pBaseClass) const
{
    if (!pBaseClass)
        return false;
    const RRuntimeClass* current = this;
    while (current != pBaseClass) {
        if (!current->m_pfnGetBaseClass)
            return false;
        current = current->m_pfnGetBaseClass();
        if (!current)
            return false;
    }
    return true;
}
