# The bundle. The programs look for each other and for the help pages in Contents/MacOS, where only
# programs can be signed. So the pages are in Contents/Resources, with a link in Contents/MacOS.
# scripts/make-dmg adds Qt and ffmpeg; until then `tool` takes an ffmpeg that is installed.
set_target_properties(lumenfold-recorder PROPERTIES MACOSX_BUNDLE ON MACOSX_BUNDLE_INFO_PLIST
                                                                     "${LUMENFOLD_INFO_PLIST}")
set_target_properties(tool PROPERTIES RUNTIME_OUTPUT_DIRECTORY
                                      "${LUMENFOLD_BIN_DIR}/lumenfold-recorder.app/Contents/MacOS")
set(contents "$<TARGET_BUNDLE_CONTENT_DIR:lumenfold-recorder>")
set(copy_icon "")
if(TARGET lumenfold_icons)
  set(copy_icon COMMAND "${CMAKE_COMMAND}" -E copy "${LUMENFOLD_ICNS}" "${contents}/Resources/")
endif()
add_custom_target(
  lumenfold_bundle ALL
  COMMAND "${CMAKE_COMMAND}" -E make_directory "${contents}/Resources"
  COMMAND "${CMAKE_COMMAND}" -E copy_directory "${LUMENFOLD_BIN_DIR}/help" "${contents}/Resources/help"
  COMMAND "${CMAKE_COMMAND}" -E create_symlink ../Resources/help "${contents}/MacOS/help"
  ${copy_icon}
  COMMENT "Completing the bundle"
  VERBATIM)
add_dependencies(lumenfold_bundle lumenfold-recorder lumenfold_help)
if(TARGET lumenfold_icons)
  add_dependencies(lumenfold_bundle lumenfold_icons)
endif()
