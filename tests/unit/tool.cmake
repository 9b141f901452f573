# `tool` is for Linux only.
if(TARGET tool)
  lumenfold_test(tool_arguments_test unit SOURCES tool_arguments_test.cpp LIBRARIES lumenfold_tool_core)
  lumenfold_test(tool_early_keys_test unit SOURCES tool_early_keys_test.cpp LIBRARIES
                 lumenfold_tool_core)
  lumenfold_test(tool_listing_test unit SOURCES tool_listing_test.cpp LIBRARIES lumenfold_tool_core)
  lumenfold_test(tool_sound_track_test unit SOURCES tool_sound_track_test.cpp LIBRARIES
                 lumenfold_tool_core)
  lumenfold_test(tool_picture_clock_test unit SOURCES tool_picture_clock_test.cpp LIBRARIES
                 lumenfold_tool_core)
  lumenfold_test(tool_picture_pipe_test unit SOURCES tool_picture_pipe_test.cpp LIBRARIES
                 lumenfold_tool_core)
  lumenfold_test(tool_screen_picture_test unit SOURCES tool_screen_picture_test.cpp tool_movies.cpp
                 LIBRARIES lumenfold_tool_core)
  lumenfold_test(tool_ffmpeg_program_test unit SOURCES tool_ffmpeg_program_test.cpp LIBRARIES
                 lumenfold_tool_core)
  lumenfold_test(
    tool_program_test unit SOURCES tool_program_test.cpp LIBRARIES lumenfold_tool_core DEFINITIONS
    TOOL_PROGRAM="$<TARGET_FILE:tool>")
  add_dependencies(tool_program_test tool)
  # With a screen and a sound server.
  find_package(Qt6 6.4 REQUIRED COMPONENTS Network)
  # lumenfold_screen_test(NAME [OPTION...]): run on a virtual desktop that is made with these options.
  function(lumenfold_screen_test name)
    add_executable(${name} ${name}.cpp tool_movies.cpp)
    target_link_libraries(${name} PRIVATE lumenfold_flags lumenfold_tool_core Qt6::Test Qt6::Network)
    target_compile_definitions(
      ${name} PRIVATE TOOL_PROGRAM="$<TARGET_FILE:tool>" TEST_PATTERN="$<TARGET_FILE:test_pattern>"
                      FDATASYNC_PRELOAD="$<TARGET_FILE:fdatasync_preload>")
    add_dependencies(${name} tool test_pattern fdatasync_preload)
    add_test(NAME ${name} COMMAND "${PROJECT_SOURCE_DIR}/scripts/virtual-desktop" ${ARGN} $<TARGET_FILE:${name}>)
    set_tests_properties(${name} PROPERTIES LABELS desktop TIMEOUT 300)
  endfunction()
  lumenfold_screen_test(tool_recording_test --no-tray)
  # "sanitized": with the sanitizers too, as the one test that has `tool` record.
  set_tests_properties(tool_recording_test PROPERTIES LABELS "desktop;sanitized")
  # On a screen that is small, for there are many recordings of it.
  lumenfold_screen_test(tool_cut_short_test --no-tray --size 320x200x24)
  set_tests_properties(tool_cut_short_test PROPERTIES RESOURCE_LOCK encoder)
  # With the real ffmpeg.
  foreach(test tool_probe_test tool_join_test tool_cut_test tool_merge_test tool_settle_test
               tool_torn_input_test)
    lumenfold_test(${test} unit SOURCES ${test}.cpp tool_movies.cpp LIBRARIES lumenfold_tool_core DEFINITIONS
                   TOOL_PROGRAM="$<TARGET_FILE:tool>")
    add_dependencies(${test} tool)
  endforeach()
  # A minute or two of encoding.
  set_tests_properties(tool_cut_test tool_merge_test PROPERTIES LABELS media TIMEOUT 900
                                                                        RESOURCE_LOCK encoder)
endif()

# scripts/other-ffmpegs runs these with each version of ffmpeg that is there: the rows where versions
# differ, and none that measures the same with another picture. Nothing else runs them.
if(TARGET tool)
  # lumenfold_versions_test(NAME LABEL COMMAND...): versions_NAME, of this label.
  function(lumenfold_versions_test name label)
    add_test(NAME versions_${name} CONFIGURATIONS versions COMMAND ${ARGN})
    set_tests_properties(versions_${name} PROPERTIES LABELS ${label} TIMEOUT 300 ENVIRONMENT LC_ALL=C.UTF-8)
  endfunction()
  set(shown cutShowsAPictureAtOnceAndIsAsLongAsAsked)
  set(copied whatFitsIsCopied)
  set(other whatDoesNotFitIsJoinedAllTheSame)
  lumenfold_versions_test(
    cut versions tool_cut_test "${shown}:moving.mp4 from 0" soundAndPictureAreInStep cutOfACutIsExact
    cutFromBehindTheEndHoldsNothing nothingIsEncodedAgain)
  lumenfold_versions_test(
    merge versions tool_merge_test "${copied}:plain.mp4, longer.mp4, plain.mp4" "${copied}:b frames.mp4, b frames.mp4"
    "${copied}:h265.mp4, h265.mp4" "${other}:mute.mp4" "${other}:size.mp4" "${other}:h265.mp4"
    "${other}:sound alone.mp4" "twentyFilesEndInStep:late sound" firstMovieGivesSizeRateAndSound
    partWithoutSoundIsSilent deletedPartsAreJoinedToTheEnd folderWithABarInItsName missingPartIsTold
    damagedPartIsTold)
  lumenfold_versions_test(torn_input versions tool_torn_input_test)
  lumenfold_versions_test(
    cut_short versions "${PROJECT_SOURCE_DIR}/scripts/virtual-desktop" --no-tray --size 320x200x24
    $<TARGET_FILE:tool_cut_short_test> quitLeavesAnOrdinaryMovie recorderKilledEndsTheRecording
    powerCutLosesTwoSeconds fullDiskLeavesWhatHadRoom)
  # ffmpeg 4 counts the lead-in of a cut, which no player shows, in the file's duration; and it cannot
  # drop the pictures by which copied parts overlap, so that these drift by some ms a part.
  lumenfold_versions_test(cut_exactly versions_from_5 tool_cut_test
                          "${shown}:moving.mp4 from 4" "${shown}:turned.mp4 from 7")
  lumenfold_versions_test(merge_exactly versions_from_5 tool_merge_test twentyFilesEndInStep:copied)
endif()
