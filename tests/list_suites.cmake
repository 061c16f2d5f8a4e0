# Writes a CTest entry for every test suite of TEST_PROGRAM into SUITE_LIST.

execute_process(COMMAND ${TEST_PROGRAM} --gtest_list_tests OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
# A suite's line starts in the first column and ends in a dot; its tests are indented below it.
string(REGEX MATCHALL "(^|\n)[^ \n]+\\." suites "${listing}")
string(REPLACE "\n" "" suites "${suites}")

set(entries "")
foreach(suite IN LISTS suites)
    string(REGEX REPLACE "\\.$" "" name "${PREFIX}${suite}")
    string(APPEND entries
        "add_test([==[${name}]==] [==[${TEST_PROGRAM}]==] [==[--gtest_filter=${suite}*]==] --gtest_brief=1)\n"
        "set_tests_properties([==[${name}]==] PROPERTIES TIMEOUT 600\n"
        "    ENVIRONMENT \"ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1:malloc_context_size=8;UBSAN_OPTIONS=print_stacktrace=1\")\n")
    # Two of these at a time are more than some machines have memory for.
    if(suite MATCHES "LargePictures")
        string(APPEND entries "set_tests_properties([==[${name}]==] PROPERTIES RESOURCE_LOCK memory)\n")
    endif()
endforeach()
file(WRITE ${SUITE_LIST} "${entries}")
