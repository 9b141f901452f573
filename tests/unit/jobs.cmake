foreach(topic device_listing duration job_thread record_command recording_status settings text_codec
              tool_runner)
  lumenfold_test(${topic}_test unit SOURCES ${topic}_test.cpp LIBRARIES lumenfold_jobs lumenfold_util)
endforeach()
