# Builds every MEX module for both complex layouts with
# matlab/build_homodyne_mex.m, the same script a user runs inside Octave or
# MATLAB, so the build that is tested is the build that ships.

find_program(OCTAVE_CLI octave-cli REQUIRED)
set(HOMODYNE_MEX_EXTRA_FLAGS "" CACHE STRING "Extra compiler flags for the MEX builds (e.g. sanitizers)")

file(GLOB_RECURSE HOMODYNE_MEX_INPUTS CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/src/*.cpp ${PROJECT_SOURCE_DIR}/src/*.hpp)
list(APPEND HOMODYNE_MEX_INPUTS ${PROJECT_SOURCE_DIR}/matlab/build_homodyne_mex.m)

# The modules that build_homodyne_mex writes (its mex_modules table).
set(HOMODYNE_MEX_MODULES homodyne_mex homodyne_recon_mex ismrmrd_mex)
set(HOMODYNE_MEX_LAYOUTS interleaved separate)
foreach(layout IN LISTS HOMODYNE_MEX_LAYOUTS)
  set(out_dir ${CMAKE_BINARY_DIR}/mex/${layout})
  set(HOMODYNE_MEX_DIR_${layout} ${out_dir})
  list(TRANSFORM HOMODYNE_MEX_MODULES PREPEND ${out_dir}/ OUTPUT_VARIABLE outputs)
  list(TRANSFORM outputs APPEND .mex)
  add_custom_command(
    OUTPUT ${outputs}
    COMMAND ${OCTAVE_CLI} --no-gui --quiet --norc --eval
      "addpath('${PROJECT_SOURCE_DIR}/matlab'); build_homodyne_mex('Layout', '${layout}', 'OutputDir', '${out_dir}', 'ExtraFlags', '${HOMODYNE_MEX_SANITIZER_FLAGS} ${HOMODYNE_MEX_EXTRA_FLAGS}');"
    DEPENDS ${HOMODYNE_MEX_INPUTS}
    COMMENT "Building the MEX modules (${layout} complex layout)"
    VERBATIM)
  add_custom_target(mex_${layout} ALL DEPENDS ${outputs})
endforeach()
