/// \file
/// Counted references to host objects.
#pragma once

#include "runtime/host_functions.h"

namespace qvr
{

/// Owns one reference to a host object or string and gives it back.
template <class Object>
class Reference
{
public:
    /// Takes over the caller's reference; null is allowed.
    explicit Reference(Object* owned) : object(owned)
    {
    }
    ~Reference()
    {
        if (object != nullptr)
            unlock(object);
    }
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;

    /// The object, still owned by this guard.
    Object* get() const
    {
        return object;
    }
    explicit operator bool() const
    {
        return object != nullptr;
    }

    /// Adds a reference of its own to an object that somebody else holds.
    static Object* retain(Object* object)
    {
        if (object != nullptr)
            lock(object);
        return object;
    }

private:
    static void lock(REALobject any)
    {
        host.REALLockObject(any);
    }
    static void lock(REALstringStruct* string)
    {
        host.REALLockString(string);
    }
    static void unlock(REALobject any)
    {
        host.REALUnlockObject(any);
    }
    static void unlock(REALstringStruct* string)
    {
        host.REALUnlockString(string);
    }

    Object* object;
};

} // namespace qvr
