# Where a distribution would put the program, the shared object and what belongs to them, and what an archive adds.

# Nobody who installs the program waits for the tests.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
set(DOCUMENTS share/doc/pictureqvr)

install(TARGETS pictureqvr RUNTIME DESTINATION bin)
# Where the program looks for it: host/options.cpp.
install(TARGETS PictureQVR LIBRARY DESTINATION lib/pictureqvr)
install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${DOCUMENTS})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${DOCUMENTS} FILES_MATCHING PATTERN *.bas)
if(PICTUREQVR_PAGES)
    install(DIRECTORY ${PICTUREQVR_PAGES}/ DESTINATION ${DOCUMENTS}/html OPTIONAL PATTERN .buildinfo EXCLUDE)
endif()
install(CODE "set(NOTICES_FOLDER ${DOCUMENTS})")
install(SCRIPT ${CMAKE_CURRENT_LIST_DIR}/notices.cmake)

# An archive brings the bundle too, and says on top what is where.
set(ARCHIVE_ONLY COMPONENT archive EXCLUDE_FROM_ALL)
install(FILES ${PROJECT_SOURCE_DIR}/INSTALL.md DESTINATION . ${ARCHIVE_ONLY})
if(PICTUREQVR_BUNDLE)
    set(CONTENTS PictureQVR.bundle/Contents)
    install(FILES ${PICTUREQVR_BUNDLE}/Contents/Info.plist DESTINATION ${CONTENTS} ${ARCHIVE_ONLY})
    install(PROGRAMS ${PICTUREQVR_BUNDLE}/Contents/MacOS/PictureQVR DESTINATION ${CONTENTS}/MacOS ${ARCHIVE_ONLY})
endif()

set(CPACK_GENERATOR External)
set(CPACK_MONOLITHIC_INSTALL ON)
set(CPACK_EXTERNAL_ENABLE_STAGING ON)
set(CPACK_EXTERNAL_PACKAGE_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/archives.cmake)
set(CPACK_PACKAGE_FILE_NAME PictureQVR-${PROJECT_VERSION})
set(CPACK_INSTALL_CMAKE_PROJECTS ${PROJECT_BINARY_DIR} PictureQVR ALL / ${PROJECT_BINARY_DIR} PictureQVR archive /)
set(CPACK_RELEASE_DATE ${RELEASE_DATE})
set(CPACK_VERBATIM_VARIABLES ON)
include(CPack)
