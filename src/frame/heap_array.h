/// \file
/// Working memory of one call.
#pragma once

#include "platform/c_library.h"

#include <stdint.h>

namespace qvr
{

/// A zero-filled array on the heap, freed with its owner. Null when it could not be had or `count` is not
/// positive.
template <class Element>
class HeapArray
{
public:
    explicit HeapArray(int32_t count)
        : elements(count < 1
                       ? nullptr
                       : static_cast<Element*>(libc::calloc(static_cast<size_t>(count), sizeof(Element))))
    {
    }
    ~HeapArray()
    {
        libc::free(elements);
    }
    HeapArray(const HeapArray&) = delete;
    HeapArray& operator=(const HeapArray&) = delete;

    explicit operator bool() const
    {
        return elements != nullptr;
    }
    Element* get() const
    {
        return elements;
    }
    Element& operator[](int32_t index) const
    {
        return elements[index];
    }

private:
    Element* elements;
};

} // namespace qvr
