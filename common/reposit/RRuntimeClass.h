#pragma once

#include <QtGlobal>

#include <memory>

class RObject;

// The class record every model class carries: its name, how to make one by name and
// how to reach the record of its direct base. Records are constant aggregates, so they
// are ready before any static constructor runs, and they are compared by address.
struct RRuntimeClass {
    const char* m_lpszClassName;
    RObject* (*m_pfnCreateObject)(); // null: not creatable by name
    const RRuntimeClass* (*m_pfnGetBaseClass)(); // null: the root
    qint32 m_nObjectType;

    // A new object from the factory; null when there is none or when it threw.
    std::unique_ptr<RObject> CreateObject() const;

    // True when this record is pBaseClass or one of its descendants.
    bool IsDerivedFrom(const RRuntimeClass* pBaseClass) const;
};
