# SPDX-License-Identifier: Apache-2.0
# Where cmake --install puts what. The host platform's libraries have Android's names, so they lie in
# a folder of their own, out of the loader's path.

set(MCL_INSTALL_HOST_LIBDIR ${CMAKE_INSTALL_LIBDIR}/mediacodeclogger-host)
set(MCL_INSTALL_HOST_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/mediacodeclogger-host)
set(MCL_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/mediacodeclogger)

# For programs, for the library and for the host platform's libraries. Relative, so that the tree can
# be moved.
file(RELATIVE_PATH bin2lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(CMAKE_INSTALL_RPATH $ORIGIN/${bin2lib} $ORIGIN/${bin2lib}/mediacodeclogger-host
    $ORIGIN/mediacodeclogger-host $ORIGIN)
