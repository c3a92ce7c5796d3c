# Shared compile settings and the helpers that register tests and benchmarks.

add_library(tock_options INTERFACE)
target_compile_options(tock_options INTERFACE -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual)
target_compile_definitions(tock_options INTERFACE
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT)
if(TOCK_WERROR)
  target_compile_options(tock_options INTERFACE -Werror)
endif()
if(TOCK_SANITIZE)
  # Applied to everything we build, so a report stops the test that caused it.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# tock_add_test(name SOURCES a.cpp ... LIBS TockCore ...)
# One QtTest executable registered with CTest. Tests run offscreen and with a private
# settings/data location so they never touch the user's files.
function(tock_add_test name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_LIBS} Qt6::Test tock_options)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES
    TIMEOUT 300
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;TOCK_DATA_DIR=${CMAKE_BINARY_DIR}/test-data-dir-unused;XDG_CONFIG_HOME=${CMAKE_BINARY_DIR}/test-config")
endfunction()

# tock_add_bench(name SOURCES a.cpp ... LIBS ...): built by the normal build, never run by CTest.
function(tock_add_bench name)
  cmake_parse_arguments(B "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${B_SOURCES})
  target_link_libraries(${name} PRIVATE ${B_LIBS} Qt6::Test tock_options)
endfunction()
