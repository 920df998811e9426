# With nothing but the installed kit for another processor, builds the example and lets it be judged, all under emulation.
# cmake -DBUILD=... -DSOURCE=... -DFOLDER=... -DPROCESSOR=... -DCOMPILER=... -DEMULATOR=... -P: as in the build that is installed.

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE "${FOLDER}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${FOLDER}/kit")

# From the base library, and straight from host/.
file(COPY "${SOURCE}/examples/driver" "${SOURCE}/tests/kit/straight" DESTINATION "${FOLDER}")
foreach(driver driver straight)
  run("${CMAKE_COMMAND}" -S "${FOLDER}/${driver}" -B "${FOLDER}/${driver}/build" -DCMAKE_BUILD_TYPE=Release
      "-DCMAKE_PREFIX_PATH=${FOLDER}/kit" -DCMAKE_SYSTEM_NAME=Linux "-DCMAKE_SYSTEM_PROCESSOR=${PROCESSOR}"
      "-DCMAKE_CXX_COMPILER=${COMPILER}" "-DCMAKE_CROSSCOMPILING_EMULATOR=${EMULATOR}")
  run("${CMAKE_COMMAND}" --build "${FOLDER}/${driver}/build")
endforeach()
run("${CMAKE_CTEST_COMMAND}" --test-dir "${FOLDER}/driver/build" --output-on-failure --no-tests=error)
run(${EMULATOR} "${FOLDER}/kit/bin/devhost" conform --runner "${EMULATOR}" "${FOLDER}/straight/build/straight_device.so")
file(REMOVE_RECURSE "${FOLDER}")
