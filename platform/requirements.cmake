# Says what is missing and which Debian package has it, where a compiler would complain of a file that nobody knows.

# Notes a missing thing; `found` is what a search for it has found.
function(require found what package)
    if(NOT found)
        set_property(GLOBAL APPEND PROPERTY MISSING_THINGS ${what})
        set_property(GLOBAL APPEND PROPERTY MISSING_PACKAGES ${package})
    endif()
endfunction()

function(require_header header package)
    string(MAKE_C_IDENTIFIER "FOUND_${header}" found)
    find_path(${found} ${header})
    mark_as_advanced(${found})
    require("${${found}}" ${header} ${package})
endfunction()

function(require_file file package)
    file(GLOB found ${file})
    require("${found}" ${file} ${package})
endfunction()

# Ends here, in one line about everything, if anything was missing.
function(stop_if_anything_is_missing)
    get_property(things GLOBAL PROPERTY MISSING_THINGS)
    get_property(packages GLOBAL PROPERTY MISSING_PACKAGES)
    if(things)
        list(JOIN things ", " things)
        list(REMOVE_DUPLICATES packages)
        list(JOIN packages " " packages)
        # Text that is indented keeps its line.
        message(FATAL_ERROR " Missing: ${things}. On Debian: apt install ${packages}")
    endif()
endfunction()
