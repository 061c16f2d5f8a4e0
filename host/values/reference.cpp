#include "host/values/reference.h"

#include "host/core/core.h"

#include <utility>

namespace standin
{

Reference::Reference(std::shared_ptr<Core> host, Object* object, bool adopt)
    : core(std::move(host)),
      target(object)
{
    if (target == nullptr)
        return;
    if (adopt)
        ++target->held;
    else
        core->retainHeld(*target);
}

Reference::Reference(const Reference& other) : Reference(other.core, other.target, false)
{
}

Reference::Reference(Reference&& other) noexcept
    : core(std::move(other.core)),
      target(std::exchange(other.target, nullptr))
{
}

Reference& Reference::operator=(Reference other) noexcept
{
    std::swap(core, other.core);
    std::swap(target, other.target);
    return *this;
}

Reference::~Reference()
{
    if (target != nullptr)
        core->releaseHeld(*target);
}

void* Reference::handle() const
{
    return target == nullptr ? nullptr : target->handle();
}

int Reference::referenceCount() const
{
    return object().references;
}

Object& Reference::object() const
{
    if (target == nullptr)
        throw Error("nil has no contents");
    return *target;
}

} // namespace standin
