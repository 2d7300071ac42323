# Compiler options for all targets of the project, and functions that declare layers and tests.
include(GNUInstallDirs)

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# The build tree has the layout of the installed one, so that in both the program finds the plug-in by the same relative path.
set(VITRELUX_PLUGIN_DIR "lib/vitrelux")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/${VITRELUX_PLUGIN_DIR}")

if(VITRELUX_SANITIZE)
    add_compile_options(-fsanitize=${VITRELUX_SANITIZE} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${VITRELUX_SANITIZE})
    if(VITRELUX_SANITIZE MATCHES "undefined")
        add_compile_options(-fno-sanitize-recover=undefined)
    endif()
endif()

# Bit-identical results on every CPU: no fused multiply-add, which compilers would otherwise use in functions compiled for
# CPUs that have it.
add_compile_options(-ffp-contract=off)

if(VITRELUX_SCALAR)
    add_compile_definitions(VITRELUX_SCALAR)
endif()

if(VITRELUX_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link) # coverage feedback from the kernels for the fuzzers
endif()

# Turns on warnings, and defines the macros of Qt that forbid implicit string conversions and the keywords "signals" and
# "slots".
function(vitrelux_compile_rules target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow -Wconversion
        -Wno-deprecated-declarations)  # deprecated parts of Qt, such as qrand, are used on purpose
    if(VITRELUX_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    target_compile_definitions(${target} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_KEYWORDS)
endfunction()

# vitrelux_layer(name SOURCES ... LINKS ...): one layer. Targets that link it see its folder and those of the layers that it
# links; an include of any other layer does not compile.
function(vitrelux_layer name)
    cmake_parse_arguments(arg "" "" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${arg_SOURCES})
    add_library(Vitrelux::${name} ALIAS ${name})
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>
        $<INSTALL_INTERFACE:include/vitrelux>)
    target_link_libraries(${name} PUBLIC ${arg_LINKS})
    vitrelux_compile_rules(${name})
endfunction()

# Environment of tests: no display, no user settings, sanitizer options.
set(VITRELUX_TEST_ENVIRONMENT
    "QT_QPA_PLATFORM=offscreen;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp;TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/tsan.supp;ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1;LC_ALL=C.UTF-8;XDG_DATA_HOME=${CMAKE_BINARY_DIR}/tests/home/data;XDG_CONFIG_HOME=${CMAKE_BINARY_DIR}/tests/home/config")

# vitrelux_test(name SOURCES ... LINKS ... [TIMEOUT SECONDS] [THREADS]): one QtTest program, run without a display. THREADS
# marks programs to run under the thread sanitizer: those with several std::threads and no Qt locks, which it doesn't support.
set(VITRELUX_TEST_TIMEOUT 300 CACHE STRING "Seconds until a test is ended; unoptimized kernels need more")
add_custom_target(thread_tests)
function(vitrelux_test name)
    cmake_parse_arguments(arg "THREADS" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT ${VITRELUX_TEST_TIMEOUT})
    endif()
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE ${arg_LINKS} Qt5::Test)
    vitrelux_compile_rules(${name})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT} ENVIRONMENT "${VITRELUX_TEST_ENVIRONMENT}")
    if(arg_THREADS)
        set_tests_properties(${name} PROPERTIES LABELS threads)
        add_dependencies(thread_tests ${name})
    endif()
endfunction()
