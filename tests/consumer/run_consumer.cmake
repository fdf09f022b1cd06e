# Installs the built tree into a scratch prefix, builds a host project (PROJECT_DIR, by default
# the consumer) against that prefix only, and runs its PROGRAM, when one is named.
if(NOT PROJECT_DIR)
    set(PROJECT_DIR ${SOURCE_DIR}/tests/consumer)
endif()
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
    message("${out}${err}")
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "failed (${result}): ${ARGN}")
    endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
run(${CMAKE_COMMAND} -S ${PROJECT_DIR} -B ${WORK_DIR}/build -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
if(PROGRAM)
    run(${WORK_DIR}/build/${PROGRAM})
endif()
