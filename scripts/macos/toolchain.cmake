# Builds for macOS on Linux, for scripts/check-macos, which sets the variables LUMENFOLD_*.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR "$ENV{LUMENFOLD_MACOS_MACHINE}")
set(CMAKE_CXX_COMPILER "$ENV{LUMENFOLD_MACOS_PROGRAMS}/c++")
set(CMAKE_AR "$ENV{LUMENFOLD_MACOS_PROGRAMS}/ar" CACHE FILEPATH "")
set(CMAKE_RANLIB "$ENV{LUMENFOLD_MACOS_PROGRAMS}/ranlib" CACHE FILEPATH "")
set(CMAKE_INSTALL_NAME_TOOL /bin/false CACHE FILEPATH "") # nothing is installed
set(CMAKE_OSX_SYSROOT "" CACHE STRING "")
set(LUMENFOLD_CCACHE "" CACHE FILEPATH "")

# The compiler brings the headers of libiconv, but not the library, and nothing of Security. lib/ has what a
# linker needs to know of both, and the stand-in for Qt.
set(CMAKE_PREFIX_PATH "${CMAKE_CURRENT_LIST_DIR}")
set(Iconv_IS_BUILT_IN FALSE CACHE BOOL "")
set(Iconv_INCLUDE_DIR "$ENV{LUMENFOLD_MACOS_HEADERS}" CACHE PATH "")
set(Iconv_LIBRARY "${CMAKE_CURRENT_LIST_DIR}/lib/libiconv.tbd" CACHE FILEPATH "")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-F\"${CMAKE_CURRENT_LIST_DIR}/frameworks\"")
# The compiler's own C++ library goes into the programs, so it lets calls pass that Apple's of the oldest
# system does not have. Without this definition it refuses them.
set(CMAKE_CXX_FLAGS_INIT "-U_LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS \
-isystem \"${CMAKE_CURRENT_LIST_DIR}/../../tests/window/stand_in\"")
