foreach(topic cut_command device_listing duration folder_scan job_report job_thread merge_command
              path_argument record_command recording_status settings text_codec tool_reason tool_runner)
  lumenfold_test(${topic}_test unit SOURCES ${topic}_test.cpp LIBRARIES lumenfold_jobs lumenfold_util)
endforeach()
