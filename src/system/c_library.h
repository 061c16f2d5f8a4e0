/// \file
/// The whole of the C library that the plug-in uses. The project declares it itself, because the Mac bundle
/// is built without the system's headers.
///
/// Every function is reached through a pointer variable: the Mac bundle's linker has no position-independent
/// symbol stubs, so an imported function can be named in initialised data, but never called directly. Fixed
/// small copies are better written with `__builtin_memcpy`, which the compiler expands in place.
#pragma once

#include <stddef.h>

#pragma GCC visibility push(hidden)

namespace qvr::libc
{

/// `size` uninitialised bytes owned by the caller, or null when there is no memory.
extern void* (*malloc)(size_t size);

/// `count * size` zero bytes owned by the caller, or null when there is no memory or the product overflows.
extern void* (*calloc)(size_t count, size_t size);

/// Gives back what `malloc` or `calloc` returned; null is allowed.
extern void (*free)(void* block);

/// Copies `size` bytes between blocks that do not overlap; returns `destination`.
extern void* (*memcpy)(void* destination, const void* source, size_t size);

/// Fills `size` bytes with the low byte of `value`; returns `destination`.
extern void* (*memset)(void* destination, int value, size_t size);

/// Number of bytes before the terminating zero.
extern size_t (*strlen)(const char* text);

} // namespace qvr::libc

#pragma GCC visibility pop
