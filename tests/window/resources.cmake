lumenfold_test(
  resources_test window
  SOURCES resources_test.cpp
  LIBRARIES lumenfold_resources Qt6::Gui)

# The pages are looked at where the program opens them: beside it.
lumenfold_test(
  help_pages_test window
  SOURCES help_pages_test.cpp
  LIBRARIES Qt6::Core
  DEFINITIONS "LUMENFOLD_HELP_DIR=\"${LUMENFOLD_BIN_DIR}/help\"")
add_dependencies(help_pages_test lumenfold_help)
