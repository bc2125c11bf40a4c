# SPDX-License-Identifier: Apache-2.0
# cmake --install: the library and its headers, the host platform below it, the programs with man
# pages and completion, the documents, a CMake package and a pkg-config file.

# A sanitizer's build is not for others.
if(MCL_SANITIZE)
    return()
endif()
include(CMakePackageConfigHelpers)

install(TARGETS mediacodeclogger hostPlatform EXPORT mediacodeclogger
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
get_property(hostLibraries GLOBAL PROPERTY MCL_HOST_LIBRARIES)
foreach(library ${hostLibraries})
    install(TARGETS ${library} EXPORT mediacodeclogger
        LIBRARY DESTINATION ${MCL_INSTALL_HOST_LIBDIR})
    get_target_property(folder ${library} SOURCE_DIR)
    # The headers of some come with Debian's packages.
    if(IS_DIRECTORY ${folder}/include)
        install(DIRECTORY ${folder}/include/ DESTINATION ${MCL_INSTALL_HOST_INCLUDEDIR})
    endif()
endforeach()

foreach(program ${MCL_PROGRAMS})
    set(folder ${CMAKE_SOURCE_DIR}/tools/${program})
    if(TARGET ${program}_documents)
        set(folder ${CMAKE_BINARY_DIR}/tools/${program})
    endif()
    install(FILES ${folder}/${program}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES ${folder}/completion.bash RENAME ${program}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES ${folder}/completion.zsh RENAME _${program}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
endforeach()

install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(EXPORT mediacodeclogger NAMESPACE mediacodeclogger:: FILE mediacodecloggerTargets.cmake
    DESTINATION ${MCL_INSTALL_CMAKEDIR})
configure_package_config_file(cmake/mediacodecloggerConfig.cmake.in
    ${CMAKE_BINARY_DIR}/mediacodecloggerConfig.cmake
    INSTALL_DESTINATION ${MCL_INSTALL_CMAKEDIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/mediacodecloggerConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/mediacodecloggerConfig.cmake
    ${CMAKE_BINARY_DIR}/mediacodecloggerConfigVersion.cmake cmake/AndroidPackages.cmake
    DESTINATION ${MCL_INSTALL_CMAKEDIR})

list(TRANSFORM hostLibraries PREPEND -l OUTPUT_VARIABLE MCL_HOST_LIBS)
list(JOIN MCL_HOST_LIBS " " MCL_HOST_LIBS)
# Relative to the file, as the tree can be moved.
file(RELATIVE_PATH pc2prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc2prefix ${pc2prefix})
set(MCL_PC_PREFIX "\${pcfiledir}/${pc2prefix}")
configure_file(cmake/mediacodeclogger.pc.in ${CMAKE_BINARY_DIR}/mediacodeclogger.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/mediacodeclogger.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
