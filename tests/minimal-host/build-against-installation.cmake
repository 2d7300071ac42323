# Installs BUILD_DIR into WORK_DIR and builds the host in SAMPLE_DIR against the installation, as a separate project:
# cmake -D BUILD_DIR=... -D WORK_DIR=... -D SAMPLE_DIR=... [-D CXX=... -D CXX_FLAGS=...] -P this file
set(first_home "${WORK_DIR}/installed")
set(home "${WORK_DIR}/moved")

file(REMOVE_RECURSE "${WORK_DIR}")
unset(ENV{DESTDIR}) # set during packaging; it would redirect the installation
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${first_home}"
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(RENAME "${first_home}" "${home}") # anything that depends on the original location fails from here on

execute_process(COMMAND "${CMAKE_COMMAND}" -G Ninja -S "${SAMPLE_DIR}" -B "${WORK_DIR}/build"
    "-DCMAKE_PREFIX_PATH=${home}" "-DCMAKE_CXX_COMPILER=${CXX}" "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}"
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${WORK_DIR}/build" COMMAND_ERROR_IS_FATAL ANY)
