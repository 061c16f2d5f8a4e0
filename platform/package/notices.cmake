# Run when the project is installed: writes down whose work is in the programs and on the pages, and on what terms,
# as Debian's packages state it.

set(in_programs
    "libcli11-dev" "reads the command line"
    "libkainjow-mustache-dev" "fills in the demo's page"
    "librapidxml-dev" "reads a bundle's description of itself"
    "libstb-dev" "reads, writes and scales images"
    "libstdc++-12-dev" "the standard library, with its parts of the compiler's own"
    "nlohmann-json3-dev" "writes JSON"
    "tao-pegtl-dev" "reads programs"
    "zlib1g-dev" "compresses PNG files")
set(in_pages
    "alsa-utils" "the sound that waveforms are drawn of"
    "furo" "how the pages look"
    "libjs-jquery" "used by the search"
    "libjs-sphinxdoc" "the search"
    "libjs-underscore" "used by the search"
    "mate-backgrounds" "the photograph nature/LadyBird.jpg, from which most pictures are made"
    "node-normalize.css" "makes pages look alike in all browsers"
    "python3-pygments" "the colours of programs"
    "python3-sphinx-copybutton" "copies programs"
    "sphinx-basic-ng" "how the pages are laid out")

set(folder /usr/share/doc)
set(licences "")
set(rule "--------------------------------------------------------------------------------\n")

# Appends the text of a file below its title.
macro(append_file title file)
    file(READ ${file} text)
    string(APPEND notices "\n${rule}${title}\n${rule}\n${text}")
endmacro()

function(append_notices packages)
    while(packages)
        list(POP_FRONT packages package purpose)
        if(EXISTS ${folder}/${package}/copyright)
            append_file("${package}: ${purpose}" ${folder}/${package}/copyright)
            string(REGEX MATCHALL "/usr/share/common-licenses/[A-Za-z0-9]+(-[0-9]+(\\.[0-9]+)?)?" named "${text}")
            list(APPEND licences ${named})
        else()
            message(WARNING "There is no ${folder}/${package}/copyright, from which a notice would be made")
        endif()
    endwhile()
    set(notices "${notices}" PARENT_SCOPE)
    set(licences ${licences} PARENT_SCOPE)
endfunction()

set(notices "The program pictureqvr and the pages contain work of others. What follows are the notices of the Debian packages
that it comes from, and the licences that these name. The plug-in itself, the bundle and the shared object, contains none.

In the program pictureqvr:
")
append_notices("${in_programs}")
string(APPEND notices "\nIn the pages:\n")
append_notices("${in_pages}")
string(APPEND notices "\nThe licences named above:\n")
list(SORT licences)
list(REMOVE_DUPLICATES licences)
foreach(licence IN LISTS licences)
    append_file(${licence} ${licence})
endforeach()

set(target $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/${NOTICES_FOLDER}/third-party-notices.txt)
file(WRITE ${target} "${notices}")
file(CHMOD ${target} PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
