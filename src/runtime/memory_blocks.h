/// \file
/// How much of a host's memory block may be touched.
#pragma once

#include "runtime/host_functions.h"

namespace qvr
{

/// The size of a memory block, as far as the host tells it.
class BlockSize
{
public:
    /// `block` is not null.
    explicit BlockSize(REALmemoryBlockStruct* block)
        : hostTellsSizes(host.REALMemoryBlockGetSize.available()),
          reported(hostTellsSizes ? host.REALMemoryBlockGetSize(block) : 0)
    {
    }

    /// 0 when the size is unknown.
    int32_t bytes() const
    {
        return reported > 0 ? reported : 0;
    }
    /// The host tells no sizes, or a negative one for this block.
    bool isUnknown() const
    {
        return !hostTellsSizes || reported < 0;
    }
    /// Whether the block has so many bytes. Where the host tells no sizes every block is trusted; where it
    /// does, one of 0 bytes or fewer is empty, whatever its address.
    bool holds(int64_t wanted) const
    {
        return !hostTellsSizes || wanted <= bytes();
    }

private:
    bool hostTellsSizes;
    int32_t reported;
};

} // namespace qvr
