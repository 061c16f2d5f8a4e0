/// \file
/// Adapts registration records to older hosts: console flags and the narrower record layout.
#pragma once

#include "abi/host_abi.h"

namespace qvr::frame
{

/// The console flag that the tables are written with; hosts from 2010.029 on want another bit for it.
constexpr uint32_t consoleFlag = 0x40000;
/// That other bit; hosts of every version leave it alone.
constexpr uint32_t newConsoleFlag = 4;

/// The flags word as the host's version wants it.
uint32_t fixedFlags(uint32_t flags);

/// Rewrites in place the flags of a class and of its properties, methods, shared properties and shared
/// methods.
void FixConsoleFlags(REALclassDefinition* definition);

/// A class definition in the layout of version 9 and below, newly allocated with its rows; null when there is
/// no memory. The caller copies its 25 words over the static record, whose address the host keeps, and frees
/// it; the rows stay allocated, because the host keeps pointers into them.
REALclassDefinition* FixClass(const REALclassDefinition* definition);

/// Property rows in the layout of version 9 and below, newly allocated; null when there are none, or no
/// memory.
void* FixProperties(const REALproperty* rows, int32_t count);

} // namespace qvr::frame
