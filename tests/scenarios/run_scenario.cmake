# Plays one scenario and compares its transcript with the expected one. The folder the
# scenario runs in is written "$DIR" in the expected file, in the program's drive form
# (C:\...) and in its shown form (C:/...), so the comparison does not depend on where the
# project is checked out.
set(transcript ${OUT}/${NAME}.transcript)
execute_process(COMMAND ${BATCH} --seed 1 --transcript ${transcript} ${SOURCE}/${NAME}.script
                WORKING_DIRECTORY ${SOURCE}
                RESULT_VARIABLE status
                ERROR_VARIABLE errors)
set(expected_status 0)
if(EXISTS ${SOURCE}/${NAME}.status)
  file(STRINGS ${SOURCE}/${NAME}.status expected_status LIMIT_COUNT 1)
endif()
if(NOT "${status}" STREQUAL "${expected_status}")
  message(FATAL_ERROR "${NAME}: exit status ${status}, expected ${expected_status}\n${errors}")
endif()

file(READ ${transcript} actual)
set(forward "C:${SOURCE}")
string(REPLACE "/" "\\" backward "${forward}")
string(REPLACE "${backward}" "$DIR" actual "${actual}")
string(REPLACE "${forward}" "$DIR" actual "${actual}")
# The file dialog shows the directory without its drive.
string(REPLACE "/" "\\" backward_without_drive "${SOURCE}")
string(REPLACE "${backward_without_drive}" "$DIR" actual "${actual}")
file(READ ${SOURCE}/${NAME}.expected expected)
if(NOT actual STREQUAL expected)
  file(WRITE ${OUT}/${NAME}.actual "${actual}")
  execute_process(COMMAND diff -u ${SOURCE}/${NAME}.expected ${OUT}/${NAME}.actual OUTPUT_VARIABLE difference)
  message(FATAL_ERROR "${NAME}: the transcript differs from the expected one\n${difference}")
endif()
