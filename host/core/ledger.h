#pragma once

#include <string>
#include <vector>

namespace standin
{

/// What the plug-in holds at one moment, and what it has done wrong so far. References that the host side
/// owns (C++ holders such as `Picture`, masks, instance fields) are not the plug-in's and are not counted.
struct Ledger
{
    /// Sum over all live objects of the references that the plug-in has taken or made and not given back.
    /// Negative where it gave back more than it had.
    int references = 0;
    /// Picture descriptions locked and not unlocked; with hosts before 2012.0, those too whose lock failed.
    int descriptionLocks = 0;
    /// Two-argument locks that gave another type than a GWorld and were not unlocked. The host does not mind
    /// them, so they are no imbalance.
    int looseLocks = 0;
    /// Calls of `LockPixels` without `UnlockPixels`.
    int pixelLocks = 0;
    /// Heap blocks of the plug-in, those made while it was being loaded (its adapted tables) excepted.
    int heapBlocks = 0;
    /// String data filled by the host and not disposed of.
    int stringData = 0;
    /// CoreFoundation objects and QuickDraw regions; the one loaded framework, which stays, excepted.
    int systemObjects = 0;
    /// Everything wrong seen so far, oldest first: foreign or dead handles, unlocking what is not locked,
    /// freeing twice, bytes written outside of a picture's pixels or behind a heap block, a drawing port not
    /// restored.
    std::vector<std::string> faults;
    /// What is outstanding, one text an object.
    std::vector<std::string> outstanding;

    /// Nothing is outstanding and nothing went wrong.
    bool balanced() const
    {
        return outstanding.empty() && faults.empty();
    }
    /// One line: "balanced", or all that is outstanding and wrong.
    std::string describe() const;
};

} // namespace standin
