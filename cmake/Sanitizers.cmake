# AddressSanitizer and UndefinedBehaviorSanitizer for every target of this
# build, the MEX files included (make check-sanitize). Any finding aborts the
# process, so a report fails the test that ran into it. The numeric flags are
# kept: the instrumented code computes exactly what the shipped code does.

set(HOMODYNE_SANITIZER_FLAGS
  -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
add_compile_options(${HOMODYNE_SANITIZER_FLAGS})
add_link_options(${HOMODYNE_SANITIZER_FLAGS})

if(HOMODYNE_BUILD_MEX)
  # The MEX files are compiled by the host's own compiler (mkoctfile), and the
  # instrumented module needs that compiler's sanitizer runtime loaded first
  # into octave-cli, which is not built with it.
  string(JOIN " " HOMODYNE_MEX_SANITIZER_FLAGS ${HOMODYNE_SANITIZER_FLAGS})
  find_program(MKOCTFILE mkoctfile REQUIRED)
  execute_process(COMMAND ${MKOCTFILE} -p CXX
    OUTPUT_VARIABLE mex_compiler OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(mex_compiler)
  execute_process(COMMAND ${mex_compiler} -print-file-name=libasan.so
    OUTPUT_VARIABLE asan_runtime OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  if(NOT EXISTS "${asan_runtime}")
    message(FATAL_ERROR "No AddressSanitizer runtime for ${mex_compiler} (libasan)")
  endif()
  # Octave does not free everything it allocates before it exits, hence no
  # leak detection inside the host; the unit tests keep it.
  set(HOMODYNE_OCTAVE_SANITIZER_ENVIRONMENT
    "LD_PRELOAD=${asan_runtime}"
    "ASAN_OPTIONS=detect_leaks=0"
    "UBSAN_OPTIONS=print_stacktrace=1")
endif()
