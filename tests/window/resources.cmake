lumenfold_test(
  resources_test window
  SOURCES resources_test.cpp
  LIBRARIES lumenfold_resources Qt6::Gui)

# Compares the committed images with their drawings.
lumenfold_test(
  drawings_test window
  SOURCES drawings_test.cpp
  LIBRARIES Qt6::Gui
  DEFINITIONS "LUMENFOLD_RESOURCES_DIR=\"${PROJECT_SOURCE_DIR}/resources\"")

# The program uses the images through a static library, and so does this test.
add_library(linked_images STATIC linked_images.cpp linked_images.h)
target_link_libraries(
  linked_images
  PUBLIC lumenfold_resources Qt6::Gui
  PRIVATE lumenfold_flags)
lumenfold_test(
  linked_images_test window
  SOURCES linked_images_test.cpp
  LIBRARIES linked_images)

# Checks the pages where the program opens them, beside it.
lumenfold_test(
  help_pages_test window
  SOURCES help_pages_test.cpp
  LIBRARIES Qt6::Core
  DEFINITIONS "LUMENFOLD_HELP_DIR=\"${LUMENFOLD_BIN_DIR}/help\"")
add_dependencies(help_pages_test lumenfold_help)
lumenfold_test(
  help_browser_test window
  SOURCES help_browser_test.cpp
  LIBRARIES Qt6::Core
  DEFINITIONS "LUMENFOLD_HELP_DIR=\"${LUMENFOLD_BIN_DIR}/help\"")
add_dependencies(help_browser_test lumenfold_help)
