# The plug-in itself, for whichever target is being configured.

# What every target of the project is compiled with.
add_library(project_warnings INTERFACE)
target_compile_options(project_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wno-sign-conversion -Wold-style-cast -Wcast-qual
    -Wnon-virtual-dtor -Wextra-semi)

# Module libraries do exist on the bare target that the Mac toolchain file names.
set_property(GLOBAL PROPERTY TARGET_SUPPORTS_SHARED_LIBS TRUE)

file(GLOB_RECURSE PLUGIN_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*.cpp)
add_library(PictureQVR MODULE ${PLUGIN_SOURCES})
target_include_directories(PictureQVR PRIVATE ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(PictureQVR PRIVATE project_warnings)
target_compile_options(PictureQVR PRIVATE
    -ffreestanding -nostdinc++ -nostdlibinc
    -fno-exceptions -fno-rtti -fno-threadsafe-statics -fno-unwind-tables -fno-asynchronous-unwind-tables
    -fno-stack-protector -fno-math-errno -ffp-contract=off
    # Linux hosts of the plug-in's age align their stacks to 4 bytes, and vectors are spilled to aligned places.
    -mstackrealign
    # Nothing runs when the plug-in is loaded or unloaded; only the host's first call does.
    -Wglobal-constructors -Wexit-time-destructors)
set_target_properties(PictureQVR PROPERTIES
    PREFIX ""
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON
    UNITY_BUILD ${PICTUREQVR_UNITY}
    UNITY_BUILD_BATCH_SIZE 0)

if(PICTUREQVR_COVERAGE)
    target_compile_options(PictureQVR PRIVATE -fprofile-instr-generate -fcoverage-mapping)
    target_link_options(PictureQVR PRIVATE -fprofile-instr-generate)
endif()
if(PICTUREQVR_SANITIZE OR PICTUREQVR_COVERAGE)
    set(INSTRUMENTED ON)
    # Instrumented helpers of a formula are too large for the inliner's taste. One that stays outside a wide loop while
    # its caller goes in is called with vectors in registers that it does not look for: this compiler does not notice.
    target_compile_options(PictureQVR PRIVATE "SHELL:-mllvm -inline-threshold=2000")
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
    # Without optimisation every helper stays outside.
    target_compile_options(PictureQVR PRIVATE -O2 "SHELL:-mllvm -inline-threshold=2000")
endif()

if(CMAKE_SYSTEM_NAME STREQUAL Linux)
    set_target_properties(PictureQVR PROPERTIES
        LIBRARY_OUTPUT_DIRECTORY ${PICTUREQVR_OUTPUT_DIRECTORY}
        LINK_DEPENDS ${PROJECT_SOURCE_DIR}/platform/linux/exports.map)
    target_compile_options(PictureQVR PRIVATE -ffunction-sections)
    target_link_options(PictureQVR PRIVATE
        -Wl,--version-script=${PROJECT_SOURCE_DIR}/platform/linux/exports.map -Wl,--gc-sections)
    if(NOT INSTRUMENTED)
        target_link_options(PictureQVR PRIVATE -nostartfiles -nodefaultlibs -Wl,-z,defs)
        target_link_libraries(PictureQVR PRIVATE c)
    endif()
elseif(APPLE)
    set_target_properties(PictureQVR PROPERTIES
        BUNDLE ON
        MACOSX_BUNDLE_INFO_PLIST ${PROJECT_SOURCE_DIR}/platform/macos/Info.plist.in
        LIBRARY_OUTPUT_DIRECTORY ${PICTUREQVR_OUTPUT_DIRECTORY})
    target_link_libraries(PictureQVR PRIVATE "-framework CoreFoundation" "-framework CoreServices")
else()
    set(BUNDLE_CONTENTS ${PICTUREQVR_OUTPUT_DIRECTORY}/PictureQVR.bundle/Contents)
    configure_file(${PROJECT_SOURCE_DIR}/platform/macos/Info.plist.in ${BUNDLE_CONTENTS}/Info.plist @ONLY)
    set_target_properties(PictureQVR PROPERTIES
        SUFFIX ""
        LIBRARY_OUTPUT_DIRECTORY ${BUNDLE_CONTENTS}/MacOS)
endif()
