#pragma once

#include <cstddef>

#include "Fundo/Fundo3/Export.h"

/// @file
/// Reference-counted objects of the component framework, and tables of shared ones.

namespace Tovra::Component {

struct UnknownInternal;

namespace Detail {
class CObjectTable;
struct UnknownAccess;
}  // namespace Detail

/// The base of every object that the framework hands out. It ends through its reference count, never through
/// delete: prefer TComPtr to the operations here.
///
/// An object is born with one reference that has no owner yet. Making it a component object, or handing it
/// out for the first time, claims that reference without counting; every later hand-out counts one.
/// References may be taken and dropped on any thread. The reference of a client (IClient) is dropped through
/// Detail::CComponentHelper::release() alone.
class FUNDO_API IUnknown {
public:
    IUnknown();
    virtual ~IUnknown();
    IUnknown(const IUnknown&) = delete;
    IUnknown& operator=(const IUnknown&) = delete;

    /// Ends the object; a concrete class deletes itself.
    virtual void destroy() = 0;
    /// Reserved; the library never calls it.
    virtual void reservedOperation() = 0;
    /// Takes a reference and claims the first one. @return the new count
    virtual int addRef();
    /// Drops a reference; the last one ends the object, after taking it from its table or registry. Must not
    /// be called on an object of a table while the caller holds that table's lock.
    /// @return the new count
    virtual int release();

private:
    friend struct Detail::UnknownAccess;
    UnknownInternal* m_internal;
};

/// Drops a reference and destroys nothing, whatever the result. @return the new count
FUNDO_API int decreaseRefCount(IUnknown* object);
/// The count; the object must not be null.
FUNDO_API int getRefCount(IUnknown* object);
/// Tells an object which table holds it.
FUNDO_API void setObjectTable(IUnknown* object, Detail::CObjectTable* table);
/// Hands an object of a table out: claims the first reference or counts one more.
FUNDO_API void makeInstanceForTable(IUnknown* object);

namespace Detail {

/// A question to the objects of a table.
class FUNDO_API key_base {
public:
    virtual ~key_base();
    /// Whether this is the object that is looked for.
    virtual bool isEqual(IUnknown* object) const = 0;
};

/// A weak list of live shared objects: it keeps no reference, and an object's last release() takes it from
/// the table under the table's lock, so that find() never gives a dying one.
///
/// find(), insert(), erase(), count() and get() take no lock: bracket them with lock() and unlock().
class FUNDO_API CObjectTable {
public:
    CObjectTable();
    /// Frees the table; the objects still listed are left alone.
    ~CObjectTable();
    CObjectTable(const CObjectTable&) = delete;
    CObjectTable& operator=(const CObjectTable&) = delete;

    void lock();    ///< Enters the table's mutex.
    void unlock();  ///< Leaves the table's mutex.

    /// Hands out the first object, in order of insertion, that the key says yes to; null if there is none.
    IUnknown* find(const key_base& key) const;
    /// Appends an object. The reference of a fresh one stays with whoever made it.
    void insert(IUnknown* object);
    /// Removes an object, which must be in the table; the rest keep their order.
    void erase(IUnknown* object);
    /// The number of objects.
    size_t count() const;
    /// The object at an index, asserted to be below count(); no reference is counted.
    IUnknown* get(size_t index) const;

private:
    struct Internal;
    Internal* m_internal;
};

}  // namespace Detail

}  // namespace Tovra::Component
