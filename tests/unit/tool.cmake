# `tool` is for Linux only.
if(TARGET tool)
  foreach(topic
          capture_command
          command
          features
          ffmpeg_program
          frame_fitter
          join_graph
          job_output
          listing
          numbers
          part_description
          part_file
          picture_clock
          picture_pipe
          process
          remembered_devices
          sound_track
          supervisor)
    lumenfold_test(tool_${topic}_test unit SOURCES tool_${topic}_test.cpp LIBRARIES lumenfold_tool_core)
  endforeach()
  # The rooms for macOS, which Linux only tests.
  lumenfold_test(tool_av_command_test unit SOURCES tool_av_command_test.cpp LIBRARIES lumenfold_tool_common
                 lumenfold_tool_avfoundation)
  lumenfold_test(
    tool_av_devices_test unit SOURCES tool_av_devices_test.cpp LIBRARIES lumenfold_tool_common
    lumenfold_tool_avfoundation lumenfold_jobs test_movies DEFINITIONS
    MACOS_SUPPORT="${PROJECT_SOURCE_DIR}/tests/support/macos")
  lumenfold_test(tool_part_note_test unit SOURCES tool_part_note_test.cpp LIBRARIES lumenfold_tool_core test_movies)
  lumenfold_test(
    tool_program_test unit SOURCES tool_program_test.cpp LIBRARIES lumenfold_tool_core DEFINITIONS
    TOOL_PROGRAM="$<TARGET_FILE:tool>")
  add_dependencies(tool_program_test tool)
  lumenfold_test(tool_wayland_screen_test unit SOURCES tool_wayland_screen_test.cpp LIBRARIES lumenfold_tool_core
                 fake_compositor)
endif()
