# Installs the build to an empty prefix, builds the examples against it as a host would, and lets the installed
# simulator drive one. Called with -DBUILD_DIR=... -DSOURCE_DIR=... -DWORK_DIR=... -DWITH_CONTENT=ON|OFF

file(REMOVE_RECURSE "${WORK_DIR}")

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV} failed:\n${output}\n${errors}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/prefix")
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}/examples" -B "${WORK_DIR}/examples" -G Ninja
  "-DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix" "-DQX_BUILD_CONTENT=${WITH_CONTENT}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/examples")

file(WRITE "${WORK_DIR}/push.json" [[{"aps": {"alert": {"title": "Hello"}}}]])
run("${WORK_DIR}/prefix/bin/qx" push "${WORK_DIR}/push.json"
  --extension "${WORK_DIR}/examples/ServiceExtension.bundle/example-service-extension")
if(NOT output MATCHES "\"greeting\"")
  message(FATAL_ERROR "The example's hook did not run:\n${output}")
endif()
