/// \file
/// Working memory of one call.
#pragma once

#include "system/c_library.h"

#include <stdint.h>

namespace qvr
{

/// What a new array holds.
enum class Filling : uint8_t
{
    Zeros,
    Nothing, ///< whatever the memory held before
};

/// An array on the heap, freed with its owner. Null when it could not be had or `count` is not positive.
template <class Element>
class HeapArray
{
public:
    explicit HeapArray(int32_t count, Filling filling = Filling::Zeros)
        : elements(count < 1 ? nullptr : static_cast<Element*>(allocate(static_cast<size_t>(count), filling)))
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
    static void* allocate(size_t count, Filling filling)
    {
        if (filling == Filling::Zeros)
            return libc::calloc(count, sizeof(Element));
        return count > SIZE_MAX / sizeof(Element) ? nullptr : libc::malloc(count * sizeof(Element));
    }

    Element* elements;
};

} // namespace qvr
