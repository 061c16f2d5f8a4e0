# Everything around the plug-in: the stand-in host, the program on top of it, the tests and benchmarks.

include(platform/requirements.cmake)
require_header(CLI/CLI.hpp libcli11-dev)
require_header(kainjow/mustache.hpp libkainjow-mustache-dev)
require_header(nlohmann/json.hpp nlohmann-json3-dev)
require_header(rapidxml/rapidxml.hpp librapidxml-dev)
require_header(stb/stb_image.h libstb-dev)
require_header(tao/pegtl.hpp tao-pegtl-dev)
require_header(zlib.h lib32z1-dev)
# Only this library of the system comes for 32-bit programs, and it is linked in, so that the programs need nothing else.
find_library(PICTUREQVR_ZLIB libz.a PATHS /usr/lib32 /usr/lib/i386-linux-gnu NO_DEFAULT_PATH)
require("${PICTUREQVR_ZLIB}" "32-bit libz.a" lib32z1-dev)
# GoogleTest comes as source, since no 32-bit library packages are to be had.
set(GTEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest's source tree")
require_file(${GTEST_SOURCE}/CMakeLists.txt googletest)
stop_if_anything_is_missing()

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PICTUREQVR_OUTPUT_DIRECTORY})

# "## [1.0.0] - 2026-01-31"
file(STRINGS ${PROJECT_SOURCE_DIR}/CHANGELOG.md RELEASES REGEX "^## .*[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]")
string(REGEX MATCH "[0-9]+-[0-9]+-[0-9]+" RELEASE_DATE "${RELEASES}")
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
configure_file(${PROJECT_SOURCE_DIR}/platform/build_info.h.in ${PROJECT_BINARY_DIR}/generated/build_info.h @ONLY)
add_library(build_info INTERFACE)
target_include_directories(build_info INTERFACE ${PROJECT_BINARY_DIR}/generated)

# Half of the time that a small file takes to compile is spent on the standard library's headers.
set(STANDARD_HEADERS <algorithm> <array> <charconv> <cmath> <cstdint> <cstring> <filesystem> <functional> <limits> <map>
    <memory> <optional> <set> <span> <sstream> <string> <string_view> <utility> <variant> <vector>)
# Fuzzers look for new paths through what is tested, not through what it is compared with.
if(PICTUREQVR_SANITIZE)
    set(UNSEEN_BY_FUZZERS -fno-sanitize=fuzzer-no-link)
    # Tests are watched for wrong accesses, which may be the host's fault, and no more: it would double their build.
    set(WATCHED_LESS ${UNSEEN_BY_FUZZERS} -fno-sanitize=undefined,float-cast-overflow)
    # Nobody looks for mistakes in GoogleTest here.
    set(NOT_WATCHED -fno-sanitize=all)
endif()
# For what is waited for more often than it runs.
set(COMPILED_QUICKLY -O0)
# Of a template's copies in several objects the linker keeps the first. Libraries come before a program's own objects
# here, so that what is compiled quickly does not replace what is compiled well.
function(prefer_code_of program)
    list(TRANSFORM ARGN REPLACE "(.+)" "$<TARGET_FILE:\\1>" OUTPUT_VARIABLE archives)
    list(JOIN archives "," archives)
    target_link_options(${program} PRIVATE "LINKER:--whole-archive,${archives},--no-whole-archive")
endfunction()
# Nothing in an object is to depend on when and in which folder its precompiled header was made.
add_compile_options("SHELL:-Xclang -fno-pch-timestamp")
set(CMAKE_CXX_COMPILE_OPTIONS_USE_PCH -Xclang -include-pch -Xclang <PCH_FILE>)

# The programs are developed beside each other: a folder joins the build as soon as it describes one.
enable_testing()
foreach(folder host media script cli tests soak bench fuzz)
    if(EXISTS ${PROJECT_SOURCE_DIR}/${folder}/CMakeLists.txt)
        add_subdirectory(${PROJECT_SOURCE_DIR}/${folder} ${PROJECT_BINARY_DIR}/${folder})
    endif()
endforeach()
include(platform/package/install.cmake)
