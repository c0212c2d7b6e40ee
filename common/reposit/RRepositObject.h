#pragma once

#include "reposit/RObject.h"
#include "reposit/svcxmlrpc/RXMLRPCValue.h"

#include <QList>
#include <QVariant>

class QSqlRecord;

// Base of every persistable service object. Tracks which columns (1..64) hold a value,
// which changed since the last save and which are being saved now, and three version
// counters for the object as a whole. Derived classes supply values, children and map
// conversions through the virtual hooks; the library only ever calls the hooks, so
// every internal call reaches the override.
//
// It also owns the process-wide guard registry: weak references (guard slots) that are
// set to null when the object they point at is destroyed.
class RRepositObject : public RObject {
public:
    RRepositObject() = default;
    RRepositObject(const RRepositObject&) = default;
    RRepositObject& operator=(const RRepositObject&) = default;

    const RRuntimeClass* GetRuntimeClass() const override;
    ~RRepositObject() override;

    virtual qint32 GetObjectType() const;
    virtual bool compareLessThan(const RRepositObject& other) const;
    virtual bool compareEqual(const RRepositObject& other) const;

    virtual bool isValidForInsert() const;
    virtual bool isValidForUpdate() const;
    virtual bool isValidForDelete() const;
    virtual bool isMarkedForDelete() const;

    virtual void setModified();
    virtual bool isModified() const;
    // Drops a modified flag that no modified column backs up; true when really modified.
    virtual bool checkIfModified();
    virtual void setSaving(bool bSaving);
    virtual bool isSaving() const;
    virtual void setSaved();

    virtual bool setFromRecord(const QSqlRecord& record);
    virtual bool getBindValue(int column, QVariant& value);

    virtual void setCol(unsigned int col);
    virtual void clearAllCols(bool bRecursive);
    virtual void clearAllModifiedCols(bool bRecursive);
    virtual bool hasModifiedCols(bool bRecursive);
    virtual void clearAllSavingCols(bool bRecursive);
    virtual bool hasSavingCols(bool bRecursive);

    virtual bool getChildObjectTypes(QList<const RRuntimeClass*>& types);
    virtual bool getChildObjects(int type, QList<RRepositObject*>& children);
    // False means there are no children to visit.
    virtual bool getAllChildObjects(QList<RRepositObject*>& children);
    virtual bool addChildObject(RRepositObject* child);

    virtual bool convertToMapResponse(RXMLRPCStruct& map);
    virtual bool populateFromMapResponse(const RXMLRPCStruct& map);
    virtual bool convertToRPCRequest(RXMLRPCStruct& map);
    virtual bool populateFromMapRequest(const RXMLRPCStruct& map);

    bool isColSet(unsigned int col) const;
    bool isColModified(unsigned int col) const;
    bool isColSaving(unsigned int col) const;
    bool isColDirty(unsigned int col) const;
    void clearCol(unsigned int col);
    void clearModifiedCol(unsigned int col);

    static bool isColSet(unsigned int col, unsigned long long bits);

    // The record's factory; the caller owns the result.
    static RObject* CreateObject();
    static const RRuntimeClass* GetThisClass();
    static const RRuntimeClass classRRepositObject;

    // Guard registry. A slot is registered with addGuard after storing an object in
    // it, re-pointed only through changeGuard, and unregistered with removeGuard before
    // it goes away. clearGuards nulls every slot registered for the object. Any thread
    // may call these; during process teardown they degrade to leaving slots null.
    static void addGuard(RObject** slot);
    static void removeGuard(RObject** slot);
    static void changeGuard(RObject** slot, RObject* newObject);
    static void clearGuards(RObject* object);

private:
    // The children to recurse into: none when getAllChildObjects answers false.
    QList<RRepositObject*> childrenToVisit();

    quint64 m_setCols = 0;
    quint32 m_nModifiedVersion = 0;
    quint32 m_nSavedVersion = 0;
    quint32 m_nSavingVersion = 0; // 0: no save under way
    quint64 m_modifiedCols = 0;
    quint64 m_savingCols = 0;
};
