# SPDX-License-Identifier: Apache-2.0
# Imported targets for the Android libraries that Debian packages: android::utils, android::cutils,
# android::log and android::base. They lie outside the loader's path and have no pkg-config files.

set(MCL_ANDROID_LIBDIR /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android
    CACHE PATH "Folder of Debian's Android libraries")
set(MCL_ANDROID_INCLUDEDIR /usr/include/android CACHE PATH "Folder of Debian's Android headers")

foreach(name utils cutils log base)
    add_library(android::${name} SHARED IMPORTED GLOBAL)
    set_target_properties(android::${name} PROPERTIES
        IMPORTED_LOCATION ${MCL_ANDROID_LIBDIR}/lib${name}.so
        INTERFACE_INCLUDE_DIRECTORIES ${MCL_ANDROID_INCLUDEDIR}
        INTERFACE_LINK_OPTIONS "-Wl,-rpath,${MCL_ANDROID_LIBDIR};-Wl,-rpath-link,${MCL_ANDROID_LIBDIR}")
endforeach()

foreach(file ${MCL_ANDROID_LIBDIR}/libutils.so ${MCL_ANDROID_INCLUDEDIR}/binder/Parcel.h)
    if(NOT EXISTS ${file})
        message(FATAL_ERROR "${file} is missing; ./test installs the packages that the build needs")
    endif()
endforeach()
