# Everything around the plug-in: the stand-in host, the program on top of it, the tests and benchmarks.

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PICTUREQVR_OUTPUT_DIRECTORY})

configure_file(${PROJECT_SOURCE_DIR}/platform/build_info.h.in ${PROJECT_BINARY_DIR}/generated/build_info.h @ONLY)
add_library(build_info INTERFACE)
target_include_directories(build_info INTERFACE ${PROJECT_BINARY_DIR}/generated)

# The programs are developed beside each other: a folder joins the build as soon as it describes one.
enable_testing()
foreach(folder host media cli tests bench fuzz)
    if(EXISTS ${PROJECT_SOURCE_DIR}/${folder}/CMakeLists.txt)
        add_subdirectory(${PROJECT_SOURCE_DIR}/${folder} ${PROJECT_BINARY_DIR}/${folder})
    endif()
endforeach()
