#include "reposit/RRepositObject.h"

#include <QMultiHash>
#include <QReadWriteLock>

#include <atomic>
#include <functional>
#include <memory>

#if defined(__SANITIZE_THREAD__)
#define REPOSIT_TSAN 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define REPOSIT_TSAN 1
#endif
#endif

#ifdef REPOSIT_TSAN
extern "C" void __tsan_acquire(void* addr);
extern "C" void __tsan_release(void* addr);
#endif

namespace {

constexpr unsigned int kColumnCount = 64;

quint64 columnBit(unsigned int col)
{
    if (col == 0 || col > kColumnCount)
        return 0;
    return quint64(1) << (col - 1);
}

// ---- guard registry ------------------------------------------------------------

struct GuardRegistry {
    QMultiHash<RObject*, RObject**> entries;
    QReadWriteLock lock;
};

std::atomic<GuardRegistry*> g_registry { nullptr };
std::atomic<bool> g_registryGone { false };

// Destroys the registry at process exit. It is constructed together with the
// registry, so anything registered with atexit earlier still finds the registry, and
// anything running after it finds it gone for good.
struct GuardRegistryTeardown {
    ~GuardRegistryTeardown()
    {
        g_registryGone.store(true, std::memory_order_release);
        std::unique_ptr<GuardRegistry> gone(
            g_registry.exchange(nullptr, std::memory_order_acq_rel));
    }
};

GuardRegistry* guardRegistry()
{
    if (g_registryGone.load(std::memory_order_acquire))
        return nullptr;
    GuardRegistry* published = g_registry.load(std::memory_order_acquire);
    if (published)
        return published;
    // Racing threads each build one; the loser's is freed when `fresh` goes out of scope.
    auto fresh = std::make_unique<GuardRegistry>();
    if (g_registry.compare_exchange_strong(
            published, fresh.get(), std::memory_order_acq_rel, std::memory_order_acquire)) {
        static GuardRegistryTeardown teardown;
        return fresh.release();
    }
    return published;
}

QMultiHash<RObject*, RObject**>* guardHash()
{
    GuardRegistry* registry = guardRegistry();
    return registry ? &registry->entries : nullptr;
}

QReadWriteLock* guardHashLock()
{
    GuardRegistry* registry = guardRegistry();
    return registry ? &registry->lock : nullptr;
}

// Write lock on the registry. QReadWriteLock is not annotated for ThreadSanitizer the
// way QMutex is, so the happens-before edge it creates is spelled out for TSan here.
class GuardWriteLocker {
public:
    explicit GuardWriteLocker(QReadWriteLock* lock)
        : m_lock(lock)
    {
        m_lock->lockForWrite();
#ifdef REPOSIT_TSAN
        __tsan_acquire(m_lock);
#endif
    }
    ~GuardWriteLocker()
    {
#ifdef REPOSIT_TSAN
        __tsan_release(m_lock);
#endif
        m_lock->unlock();
    }
    GuardWriteLocker(const GuardWriteLocker&) = delete;
    GuardWriteLocker& operator=(const GuardWriteLocker&) = delete;

private:
    QReadWriteLock* const m_lock;
};

// Removes the first entry of `object` that names `slot`; the lock must be held.
void eraseSlotEntry(QMultiHash<RObject*, RObject**>& entries, RObject* object, RObject** slot)
{
    const auto it = entries.constFind(object, slot);
    if (it != entries.cend())
        entries.erase(it);
}

} // namespace

void RRepositObject::addGuard(RObject** slot)
{
    if (!*slot)
        return;
    QMultiHash<RObject*, RObject**>* const entries = guardHash();
    QReadWriteLock* const lock = guardHashLock();
    if (!entries || !lock) {
        *slot = nullptr;
        return;
    }
    const GuardWriteLocker locker(lock);
    entries->insert(*slot, slot);
}

void RRepositObject::removeGuard(RObject** slot)
{
    if (!*slot)
        return;
    QMultiHash<RObject*, RObject**>* const entries = guardHash();
    QReadWriteLock* const lock = guardHashLock();
    if (!entries || !lock)
        return;
    const GuardWriteLocker locker(lock);
    eraseSlotEntry(*entries, *slot, slot);
}

void RRepositObject::changeGuard(RObject** slot, RObject* newObject)
{
    QMultiHash<RObject*, RObject**>* const entries = guardHash();
    QReadWriteLock* const lock = guardHashLock();
    if (!entries || !lock) {
        *slot = nullptr;
        return;
    }
    const GuardWriteLocker locker(lock);
    if (*slot)
        eraseSlotEntry(*entries, *slot, slot);
    *slot = newObject;
    if (newObject)
        entries->insert(newObject, slot);
}

void RRepositObject::clearGuards(RObject* object)
{
    QMultiHash<RObject*, RObject**>* const entries = guardHash();
    QReadWriteLock* const lock = guardHashLock();
    if (!entries || !lock)
        return;
    const GuardWriteLocker locker(lock);
    // Never erase while walking the object's range: erasing its last entry can move another
    // object's entries back into the freed bucket, and the walk would go on to clear them.
    const QList<RObject**> guarding = entries->values(object);
    for (RObject** slot : guarding)
        *slot = nullptr;
    entries->remove(object);
}

// ---- class record --------------------------------------------------------------

const RRuntimeClass RRepositObject::classRRepositObject
    = { "RRepositObject", &RRepositObject::CreateObject, &RObject::GetThisClass, 0 };

const RRuntimeClass* RRepositObject::GetRuntimeClass() const
{
    return &classRRepositObject;
}

const RRuntimeClass* RRepositObject::GetThisClass()
{
    return &classRRepositObject;
}

RObject* RRepositObject::CreateObject()
{
    return std::make_unique<RRepositObject>().release();
}

RRepositObject::~RRepositObject()
{
    clearGuards(this);
}

// ---- identity and validity defaults --------------------------------------------

qint32 RRepositObject::GetObjectType() const
{
    return GetRuntimeClass()->m_nObjectType;
}

bool RRepositObject::compareLessThan(const RRepositObject& other) const
{
    return std::less<const RRepositObject*>()(this, &other);
}

bool RRepositObject::compareEqual(const RRepositObject& other) const
{
    return this == &other;
}

bool RRepositObject::isValidForInsert() const
{
    return false;
}
bool RRepositObject::isValidForUpdate() const
{
    return false;
}
bool RRepositObject::isValidForDelete() const
{
    return false;
}
bool RRepositObject::isMarkedForDelete() const
{
    return false;
}

// ---- versions ------------------------------------------------------------------

QList<RRepositObject*> RRepositObject::childrenToVisit()
{
    QList<RRepositObject*> children;
    if (!getAllChildObjects(children))
        children.clear();
    return children;
}

void RRepositObject::setModified()
{
    // Already carrying a modification that is neither saved nor being saved.
    if (m_nModifiedVersion > m_nSavedVersion && m_nModifiedVersion > m_nSavingVersion)
        return;
    clearAllModifiedCols(true);
    ++m_nModifiedVersion;
}

bool RRepositObject::isModified() const
{
    return m_nModifiedVersion > m_nSavedVersion;
}

bool RRepositObject::checkIfModified()
{
    if (!isModified())
        return false;
    if (hasModifiedCols(true))
        return true;
    m_nModifiedVersion = m_nSavedVersion;
    return false;
}

void RRepositObject::setSaving(bool bSaving)
{
    if (bSaving && !(m_nModifiedVersion > m_nSavedVersion && m_nModifiedVersion > m_nSavingVersion))
        ++m_nModifiedVersion;
    if (m_nSavingVersion < m_nModifiedVersion) {
        m_savingCols |= m_modifiedCols;
        m_modifiedCols = 0;
    }
    m_nSavingVersion = m_nModifiedVersion;
    for (RRepositObject* child : childrenToVisit())
        child->setSaving(bSaving);
}

bool RRepositObject::isSaving() const
{
    return m_nSavingVersion != 0;
}

void RRepositObject::setSaved()
{
    if (m_nSavingVersion == 0)
        return;
    m_nSavedVersion = m_nSavingVersion;
    m_nSavingVersion = 0;
    m_savingCols = 0;
    for (RRepositObject* child : childrenToVisit())
        child->setSaved();
}

// ---- data hooks ----------------------------------------------------------------

bool RRepositObject::setFromRecord(const QSqlRecord&)
{
    return true;
}
bool RRepositObject::getBindValue(int, QVariant&)
{
    return true;
}

bool RRepositObject::getChildObjectTypes(QList<const RRuntimeClass*>&)
{
    return true;
}
bool RRepositObject::getChildObjects(int, QList<RRepositObject*>&)
{
    return true;
}
bool RRepositObject::getAllChildObjects(QList<RRepositObject*>&)
{
    return true;
}
bool RRepositObject::addChildObject(RRepositObject*)
{
    return false;
}

bool RRepositObject::convertToMapResponse(RXMLRPCStruct&)
{
    return false;
}
bool RRepositObject::populateFromMapResponse(const RXMLRPCStruct&)
{
    return false;
}
bool RRepositObject::convertToRPCRequest(RXMLRPCStruct&)
{
    return false;
}
bool RRepositObject::populateFromMapRequest(const RXMLRPCStruct&)
{
    return false;
}

// ---- columns -------------------------------------------------------------------

void RRepositObject::setCol(unsigned int col)
{
    const quint64 bit = columnBit(col);
    m_setCols |= bit;
    m_modifiedCols |= bit;
}

void RRepositObject::clearCol(unsigned int col)
{
    m_setCols &= ~columnBit(col);
}

void RRepositObject::clearModifiedCol(unsigned int col)
{
    m_modifiedCols &= ~columnBit(col);
}

bool RRepositObject::isColSet(unsigned int col, unsigned long long bits)
{
    return (bits & columnBit(col)) != 0;
}

bool RRepositObject::isColSet(unsigned int col) const
{
    return isColSet(col, m_setCols);
}
bool RRepositObject::isColModified(unsigned int col) const
{
    return isColSet(col, m_modifiedCols);
}
bool RRepositObject::isColSaving(unsigned int col) const
{
    return isColSet(col, m_savingCols);
}

bool RRepositObject::isColDirty(unsigned int col) const
{
    return isColSet(col, m_modifiedCols | m_savingCols);
}

void RRepositObject::clearAllCols(bool bRecursive)
{
    m_setCols = 0;
    if (bRecursive) {
        for (RRepositObject* child : childrenToVisit())
            child->clearAllCols(true);
    }
}

void RRepositObject::clearAllModifiedCols(bool bRecursive)
{
    if (!isModified())
        m_modifiedCols = 0;
    if (bRecursive) {
        for (RRepositObject* child : childrenToVisit())
            child->clearAllModifiedCols(true);
    }
}

bool RRepositObject::hasModifiedCols(bool bRecursive)
{
    if (m_modifiedCols != 0)
        return true;
    if (bRecursive) {
        for (RRepositObject* child : childrenToVisit()) {
            if (child->hasModifiedCols(true))
                return true;
        }
    }
    return false;
}

void RRepositObject::clearAllSavingCols(bool bRecursive)
{
    if (!isSaving())
        m_savingCols = 0;
    if (bRecursive) {
        for (RRepositObject* child : childrenToVisit())
            child->clearAllSavingCols(true);
    }
}

bool RRepositObject::hasSavingCols(bool bRecursive)
{
    if (m_savingCols != 0)
        return true;
    if (bRecursive) {
        for (RRepositObject* child : childrenToVisit()) {
            if (child->hasSavingCols(true))
                return true;
        }
    }
    return false;
}
