# Cross-builds the Mac OS X bundle on Linux, without Mac headers, libraries or Apple's tools. On a Mac none of this is
# needed: configure with CMAKE_OSX_ARCHITECTURES=i386 and no toolchain file.

set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR i386)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

include(${CMAKE_CURRENT_LIST_DIR}/requirements.cmake)
find_program(PICTUREQVR_COMPILER clang++-14)
require("${PICTUREQVR_COMPILER}" clang++-14 clang-14)
# The last lld that links i386 for the Mac. It cannot relocate symbol stubs or pointers between object files:
# ARCHITECTURE.md says what follows from that.
find_program(PICTUREQVR_MACOS_LINKER ld64.lld.darwinold HINTS /usr/lib/llvm-13/bin)
require("${PICTUREQVR_MACOS_LINKER}" ld64.lld.darwinold lld-13)
stop_if_anything_is_missing()

set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_CXX_COMPILER_TARGET i386-apple-macosx10.6)

file(GLOB PICTUREQVR_MACOS_STUBS ${CMAKE_CURRENT_LIST_DIR}/macos/*.yaml)
list(JOIN PICTUREQVR_MACOS_STUBS " " PICTUREQVR_MACOS_STUBS)
# Between two constants it writes whatever memory it was given; the C library can fill that with zeros.
set(CMAKE_CXX_CREATE_SHARED_MODULE
    "<CMAKE_COMMAND> -E env MALLOC_PERTURB_=255 \
${PICTUREQVR_MACOS_LINKER} -arch i386 -macosx_version_min 10.6 -sdk_version 10.6 -bundle \
-exported_symbols_list ${CMAKE_CURRENT_LIST_DIR}/macos/exports.txt \
<OBJECTS> ${PICTUREQVR_MACOS_STUBS} -o <TARGET>")

# The same linker finds a constant by the symbol in front of it, and of the constants in __TEXT,__const without a symbol
# always takes the first. So the compiler's labels are made symbols on the way.
set(CMAKE_CXX_COMPILE_OBJECT
    "<CMAKE_CXX_COMPILER> <DEFINES> <INCLUDES> <FLAGS> -S -o <OBJECT>.s <SOURCE>"
    "sed -E -i -f ${CMAKE_CURRENT_LIST_DIR}/macos/name_constants.sed <OBJECT>.s"
    "<CMAKE_CXX_COMPILER> -c -o <OBJECT> <OBJECT>.s")
