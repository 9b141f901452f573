# Stands in for a Qt for macOS: the headers and generators of this machine's Qt. Its libraries are left open;
# packaging/macos/mach_o.py tells whether this machine's Qt has what the programs expect of them.
if(TARGET Qt6::Core)
  return()
endif()
set(qt_headers "$ENV{LUMENFOLD_QT_HEADERS}")
set(qt_programs "$ENV{LUMENFOLD_QT_PROGRAMS}")
set(Qt6Core_VERSION_MAJOR 6)
set(Qt6Core_VERSION_MINOR 4)
set_directory_properties(PROPERTIES QT_VERSION_MAJOR 6 QT_VERSION_MINOR 4)

foreach(program moc uic rcc)
  add_executable(Qt6::${program} IMPORTED)
  set_target_properties(Qt6::${program} PROPERTIES IMPORTED_LOCATION "${qt_programs}/${program}")
endforeach()

# lumenfold_stand_in(NAME USES...)
function(lumenfold_stand_in name)
  string(TOUPPER ${name} upper)
  add_library(Qt6::${name} INTERFACE IMPORTED)
  set_target_properties(
    Qt6::${name} PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES "${qt_headers};${qt_headers}/Qt${name}"
    INTERFACE_COMPILE_DEFINITIONS QT_${upper}_LIB
    INTERFACE_LINK_OPTIONS "-Wl,-undefined,dynamic_lookup"
    INTERFACE_LINK_LIBRARIES "${ARGN}")
endfunction()
lumenfold_stand_in(Core)
lumenfold_stand_in(Gui Qt6::Core)
lumenfold_stand_in(Widgets Qt6::Gui)
lumenfold_stand_in(Core5Compat Qt6::Core)
lumenfold_stand_in(Test Qt6::Core)

# qt6_generate_moc(SOURCE RESULT TARGET target)
function(qt6_generate_moc source result)
  get_filename_component(folder "${result}" DIRECTORY)
  file(MAKE_DIRECTORY "${folder}")
  get_filename_component(source "${source}" ABSOLUTE)
  add_custom_command(
    OUTPUT "${result}"
    COMMAND Qt6::moc -I "${PROJECT_SOURCE_DIR}" "${source}" -o "${result}"
    DEPENDS "${source}"
    VERBATIM)
endfunction()
