# Plays one scenario in a fresh folder of its own (with a copy of the scenario folder's
# subfolders beside it) and compares its transcript with the expected one. The folder lies
# under /tmp because the program refuses paths with characters such as "-", which a
# checkout's own path may hold. That folder is written "$DIR" in the
# expected file, in the program's drive form (C:\...), its shown form (C:/...) and as a
# directory without the drive (\...), so the comparison does not depend on where the
# project is checked out.
# One folder per build tree, so that two builds testing at once don't share a folder.
string(MD5 build_key "${OUT}")
string(SUBSTRING "${build_key}" 0 8 build_key)
set(work /tmp/celvane_scenarios/${build_key}/${NAME}${SUFFIX})
file(REMOVE_RECURSE ${work})
file(MAKE_DIRECTORY ${work})
file(GLOB entries ${SOURCE}/*)
foreach(entry ${entries})
  if(IS_DIRECTORY ${entry})
    file(COPY ${entry} DESTINATION ${work})
  endif()
endforeach()
# With TO_STDOUT the transcript is taken from standard output instead of --transcript: the
# two must be the same.
set(transcript ${OUT}/${NAME}${SUFFIX}.transcript)
if(TO_STDOUT)
  execute_process(COMMAND ${BATCH} --seed 1 ${SOURCE}/${NAME}.script
                  WORKING_DIRECTORY ${work}
                  RESULT_VARIABLE status
                  OUTPUT_FILE ${transcript}
                  ERROR_VARIABLE errors)
else()
  execute_process(COMMAND ${BATCH} --seed 1 --transcript ${transcript} ${SOURCE}/${NAME}.script
                  WORKING_DIRECTORY ${work}
                  RESULT_VARIABLE status
                  ERROR_VARIABLE errors)
endif()
set(expected_status 0)
if(EXISTS ${SOURCE}/${NAME}.status)
  file(STRINGS ${SOURCE}/${NAME}.status expected_status LIMIT_COUNT 1)
endif()
if(NOT "${status}" STREQUAL "${expected_status}")
  message(FATAL_ERROR "${NAME}: exit status ${status}, expected ${expected_status}\n${errors}")
endif()

file(READ ${transcript} actual)
set(forward "C:${work}")
string(REPLACE "/" "\\" backward "${forward}")
string(REPLACE "/" "\\" bare "${work}")
string(REPLACE "${backward}" "$DIR" actual "${actual}")
string(REPLACE "${forward}" "$DIR" actual "${actual}")
string(REPLACE "${bare}" "$DIR" actual "${actual}")
file(READ ${SOURCE}/${NAME}.expected expected)
if(NOT actual STREQUAL expected)
  file(WRITE ${OUT}/${NAME}${SUFFIX}.actual "${actual}")
  execute_process(COMMAND diff -u ${SOURCE}/${NAME}.expected ${OUT}/${NAME}${SUFFIX}.actual OUTPUT_VARIABLE difference)
  message(FATAL_ERROR "${NAME}: the transcript differs from the expected one\n${difference}")
endif()
