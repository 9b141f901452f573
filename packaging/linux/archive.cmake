# The portable archive: one folder with everything a bare desktop lacks. `cmake --build DIR --target
# package` makes build/DIR/package/lumenfold-recorder-VERSION-linux-MACHINE.tar.gz.
find_program(LUMENFOLD_PACKAGE_FFMPEG ffmpeg DOC "The ffmpeg to pack; OFF packs none")

set(LUMENFOLD_FFMPEG_NOTE "Everything else is in this folder, including ffmpeg.")
if(NOT LUMENFOLD_PACKAGE_FFMPEG)
  set(LUMENFOLD_FFMPEG_NOTE "Also ffmpeg (5.1 or newer, with libx264), installed or put beside the program. Everything else is\nin this folder.")
  set(LUMENFOLD_PACKAGE_FFMPEG OFF)
endif()

# The built programs search no folder but Qt's own, where that is not the system's; collect gives the packed
# ones theirs. Were CMake to change it while it installs, it would keep room for that in the built program, with
# colons, and an empty entry is the working directory to the loader.
foreach(program lumenfold-recorder tool)
  set_target_properties(${program} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH_USE_LINK_PATH ON)
endforeach()
install(TARGETS lumenfold-recorder tool RUNTIME DESTINATION .)
install(DIRECTORY "${LUMENFOLD_BIN_DIR}/help" DESTINATION .)
install(PROGRAMS linux/install-desktop-entry DESTINATION .)
install(FILES linux/qt.conf DESTINATION .)
install(FILES "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${PROJECT_SOURCE_DIR}/THIRD-PARTY.md" DESTINATION .)
# The archive needs at least the C library it was linked to.
execute_process(COMMAND getconf GNU_LIBC_VERSION OUTPUT_VARIABLE LUMENFOLD_GLIBC OUTPUT_STRIP_TRAILING_WHITESPACE)
configure_file(linux/README.txt.in "${CMAKE_CURRENT_BINARY_DIR}/README.txt" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/README.txt" DESTINATION .)

# The files that install-desktop-entry copies.
configure_file(linux/com.tarvessa.lumenfold_recorder.metainfo.xml.in
               "${CMAKE_CURRENT_BINARY_DIR}/com.tarvessa.lumenfold_recorder.metainfo.xml" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/com.tarvessa.lumenfold_recorder.metainfo.xml" DESTINATION share/metainfo)
install(FILES linux/lumenfold-recorder.desktop DESTINATION share/applications)
foreach(size IN LISTS icon_sizes)
  if(size LESS 1024)
    install(FILES "${icon_folder}/${size}.png" DESTINATION "share/icons/hicolor/${size}x${size}/apps"
            RENAME lumenfold-recorder.png)
  endif()
endforeach()
install(FILES "${LUMENFOLD_ICON_DRAWING}" DESTINATION share/icons/hicolor/scalable/apps
        RENAME lumenfold-recorder.svg)

# Libraries, Qt's plugins and ffmpeg, as the programs are linked when the archive is made.
get_target_property(qmake Qt6::qmake IMPORTED_LOCATION)
execute_process(COMMAND "${qmake}" -query QT_INSTALL_PLUGINS OUTPUT_VARIABLE qt_plugins
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
# The library that `tool` loads by name; libyuv, Wayland's protocols and PipeWire's headers are compiled into it.
find_library(LUMENFOLD_PULSE_LIBRARY pulse REQUIRED)
pkg_get_variable(wayland_core wayland-scanner pkgdatadir)
pkg_get_variable(wayland_protocols wayland-protocols pkgdatadir)
get_filename_component(wayland_protocols "${wayland_protocols}" REALPATH)
find_path(LUMENFOLD_SPA_HEADERS spa/pod/builder.h PATH_SUFFIXES spa-0.2 REQUIRED)
install(FILES "${PROJECT_SOURCE_DIR}/tool/screen/wayland/protocol/wlr-screencopy-unstable-v1.xml" DESTINATION licenses)
install(
  CODE "execute_process(
    COMMAND \"${CMAKE_CURRENT_SOURCE_DIR}/linux/collect\" \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\"
      \"${LUMENFOLD_BIN_DIR}\" \"${qt_plugins}\" \"${LUMENFOLD_PACKAGE_FFMPEG}\"
      \"${LUMENFOLD_PULSE_LIBRARY}\" \"${LIBYUV_LIBRARY}\"
      \"${wayland_core}/wayland.xml\" \"${wayland_protocols}/unstable/xdg-output/xdg-output-unstable-v1.xml\"
      \"${LUMENFOLD_SPA_HEADERS}/spa/pod/builder.h\"
    COMMAND_ERROR_IS_FATAL ANY)")

set(CPACK_GENERATOR TGZ)
set(CPACK_PACKAGE_NAME lumenfold-recorder)
set(CPACK_PACKAGE_VENDOR Tarvessa)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
string(TOLOWER "${CMAKE_SYSTEM_NAME}" system)
set(CPACK_PACKAGE_FILE_NAME "lumenfold-recorder-${PROJECT_VERSION}-${system}-${CMAKE_SYSTEM_PROCESSOR}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/package")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(LUMENFOLD_ARCHIVE "${CPACK_PACKAGE_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME}.tar.gz")
include(CPack)
