#pragma once

#include "host/objects/objects_fwd.h"

#include <memory>

namespace standin
{

/// Owns one reference of a host object, and keeps the host alive as long. Copies own a reference of their
/// own. Base of `Picture`, `String`, `MemoryBlock` and `Instance`; an empty one is the language's nil.
class Reference
{
public:
    Reference() = default;
    Reference(const Reference& other);
    Reference(Reference&& other) noexcept;
    Reference& operator=(Reference other) noexcept;
    ~Reference();

    explicit operator bool() const
    {
        return target != nullptr;
    }
    bool isNil() const
    {
        return target == nullptr;
    }
    /// Whether both are the same host object.
    bool operator==(const Reference& other) const
    {
        return target == other.target;
    }
    /// The handle that the plug-in sees, or null.
    void* handle() const;
    /// All references that exist now, this one included.
    int referenceCount() const;

protected:
    friend class Core;

    /// Takes over a reference that exists already (`adopt`), or adds one.
    Reference(std::shared_ptr<Core> host, Object* object, bool adopt);

    /// The object; throws Error when this is nil.
    Object& object() const;

    std::shared_ptr<Core> core;
    Object* target = nullptr;
};

} // namespace standin
