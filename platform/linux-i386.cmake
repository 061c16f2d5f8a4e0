# A 32-bit build on a 64-bit Linux. SSE2 arithmetic has no excess precision, and the last bit of a double is visible
# wherever a result is truncated.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i386)

set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse -ffp-contract=off")
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse -ffp-contract=off")
