#include "editor/copy.h"

#include "editor/arithmetic.h"
#include "platform/c_library.h"

namespace qvr
{

bool isStreamedSize(int64_t bytes)
{
    constexpr int64_t smallestStreamed = 4 << 20;
    return bytes >= smallestStreamed;
}

void copyBytes(uint8_t* destination, const uint8_t* source, size_t size, bool streamed)
{
    typedef uint8_t Bytes __attribute__((vector_size(16)));

    if (streamed)
    {
        const size_t misaligned = reinterpret_cast<uintptr_t>(destination) % sizeof(Bytes);
        const size_t head = misaligned == 0 ? 0 : minimum(sizeof(Bytes) - misaligned, size);
        libc::memcpy(destination, source, head);
        size_t done = head;
        for (; done + 4 * sizeof(Bytes) <= size; done += 4 * sizeof(Bytes))
        {
            Bytes bytes[4];
            __builtin_memcpy(bytes, source + done, sizeof bytes);
            for (size_t i = 0; i < 4; ++i)
                __builtin_nontemporal_store(bytes[i],
                                            reinterpret_cast<Bytes*>(destination + done + i * sizeof(Bytes)));
        }
        destination += done;
        source += done;
        size -= done;
    }
    libc::memcpy(destination, source, size);
}

} // namespace qvr
