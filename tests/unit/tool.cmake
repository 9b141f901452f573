foreach(topic
        capture_command
        command
        features
        ffmpeg_program
        join_graph
        job_output
        listing
        numbers
        part_description
        remembered_devices)
  lumenfold_test(tool_${topic}_test unit SOURCES tool_${topic}_test.cpp LIBRARIES lumenfold_tool_core)
endforeach()
lumenfold_test(tool_av_command_test unit SOURCES tool_av_command_test.cpp LIBRARIES lumenfold_tool_common
               lumenfold_tool_avfoundation)
# These test rooms for Linux, or look at what only Linux tells.
if(NOT APPLE)
  foreach(topic
          cast_picture
          cursor
          frame_fitter
          part_file
          picture_clock
          picture_pipe
          process
          restore_token
          sound_drift
          sound_track
          supervisor
          supervisor_end)
    lumenfold_test(tool_${topic}_test unit SOURCES tool_${topic}_test.cpp LIBRARIES lumenfold_tool_core)
  endforeach()
  lumenfold_test(
    tool_av_devices_test unit SOURCES tool_av_devices_test.cpp LIBRARIES lumenfold_tool_common
    lumenfold_tool_avfoundation lumenfold_jobs test_movies DEFINITIONS
    MACOS_SUPPORT="${PROJECT_SOURCE_DIR}/tests/support/macos")
  lumenfold_test(tool_part_note_test unit SOURCES tool_part_note_test.cpp LIBRARIES lumenfold_tool_core test_movies)
  lumenfold_test(
    tool_program_test unit SOURCES tool_program_test.cpp LIBRARIES lumenfold_tool_core DEFINITIONS
    TOOL_PROGRAM="$<TARGET_FILE:tool>")
  add_dependencies(tool_program_test tool)
  foreach(topic outputs picture screen)
    lumenfold_test(tool_wayland_${topic}_test unit SOURCES tool_wayland_${topic}_test.cpp LIBRARIES
                   lumenfold_tool_core fake_compositor)
  endforeach()
endif()
