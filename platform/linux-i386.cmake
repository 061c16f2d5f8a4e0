# A 32-bit build on a 64-bit Linux. SSE2 arithmetic has no excess precision, and the last bit of a double is visible
# wherever a result is truncated.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i386)

include(${CMAKE_CURRENT_LIST_DIR}/requirements.cmake)
find_program(PICTUREQVR_COMPILER clang++-14)
require("${PICTUREQVR_COMPILER}" clang++-14 clang-14)
get_property(in_a_trial GLOBAL PROPERTY IN_TRY_COMPILE)
if(PICTUREQVR_COMPILER AND NOT in_a_trial)
    execute_process(COMMAND ${PICTUREQVR_COMPILER} -m32 -include cstddef -x c++ -fsyntax-only /dev/null
        RESULT_VARIABLE failure ERROR_QUIET)
    string(COMPARE EQUAL "${failure}" 0 compiles)
    require(${compiles} "32-bit C++ library" g++-multilib)
endif()
stop_if_anything_is_missing()

set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse -ffp-contract=off")
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse -ffp-contract=off")
