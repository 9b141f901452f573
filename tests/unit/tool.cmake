# `tool` is for Linux only.
if(TARGET tool)
  lumenfold_test(tool_arguments_test unit SOURCES tool_arguments_test.cpp LIBRARIES lumenfold_tool_core)
  lumenfold_test(tool_early_keys_test unit SOURCES tool_early_keys_test.cpp LIBRARIES
                 lumenfold_tool_core)
  lumenfold_test(tool_listing_test unit SOURCES tool_listing_test.cpp LIBRARIES lumenfold_tool_core)
  lumenfold_test(tool_sound_track_test unit SOURCES tool_sound_track_test.cpp LIBRARIES
                 lumenfold_tool_core)
  lumenfold_test(tool_ffmpeg_program_test unit SOURCES tool_ffmpeg_program_test.cpp LIBRARIES
                 lumenfold_tool_core)
  lumenfold_test(
    tool_program_test unit SOURCES tool_program_test.cpp LIBRARIES lumenfold_tool_core DEFINITIONS
    TOOL_PROGRAM="$<TARGET_FILE:tool>")
  add_dependencies(tool_program_test tool)
  # With a screen and a sound server.
  find_package(Qt6 6.4 REQUIRED COMPONENTS Network)
  add_executable(tool_recording_test tool_recording_test.cpp tool_movies.cpp)
  target_link_libraries(tool_recording_test PRIVATE lumenfold_flags Qt6::Test Qt6::Network)
  target_compile_definitions(tool_recording_test PRIVATE TOOL_PROGRAM="$<TARGET_FILE:tool>")
  add_dependencies(tool_recording_test tool)
  add_test(NAME tool_recording_test COMMAND "${PROJECT_SOURCE_DIR}/scripts/virtual-desktop" --no-tray
                                            $<TARGET_FILE:tool_recording_test>)
  set_tests_properties(tool_recording_test PROPERTIES LABELS desktop TIMEOUT 300)
  # With the real ffmpeg.
  foreach(test tool_probe_test tool_join_test tool_cut_test tool_merge_test)
    lumenfold_test(${test} unit SOURCES ${test}.cpp tool_movies.cpp LIBRARIES lumenfold_tool_core DEFINITIONS
                   TOOL_PROGRAM="$<TARGET_FILE:tool>")
    add_dependencies(${test} tool)
  endforeach()
  # A minute or two of encoding, nothing that sanitizers would see: it all happens in ffmpeg.
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
  # ffmpeg 4 counts the lead-in of a cut, which no player shows, in the file's duration; and it cannot
  # drop the pictures by which copied parts overlap, so that these drift by some ms a part.
  lumenfold_versions_test(cut_exactly versions_from_5 tool_cut_test
                          "${shown}:moving.mp4 from 4" "${shown}:turned.mp4 from 7")
  lumenfold_versions_test(merge_exactly versions_from_5 tool_merge_test twentyFilesEndInStep:copied)
endif()
