# Warnings and build options live on two interface targets that every target links, so a
# setting is changed in one place.
add_library(vek_warnings INTERFACE)
target_compile_options(vek_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align -Woverloaded-virtual
  -Wnull-dereference -Wdouble-promotion -Wformat=2 -Wimplicit-fallthrough)
if(VEK_WERROR)
  target_compile_options(vek_warnings INTERFACE -Werror)
endif()

add_library(vek_options INTERFACE)
target_include_directories(vek_options INTERFACE ${CMAKE_SOURCE_DIR}/src)
# Container bounds checks in debug builds; never _GLIBCXX_DEBUG, which changes the ABI of
# the distribution's libpqxx.
target_compile_definitions(vek_options INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
if(VEK_SANITIZE)
  target_compile_options(vek_options INTERFACE -fsanitize=address,undefined
                         -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(vek_options INTERFACE -fsanitize=address,undefined)
endif()

# vek_subsystem(NAME SOURCES... [DEPENDS libs...]) makes the static library vek_NAME from
# the sources of one folder under src/ and adds it to vek_lib.
function(vek_subsystem name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  if(ARG_SOURCES)
    add_library(vek_${name} STATIC ${ARG_SOURCES})
    target_link_libraries(vek_${name} PUBLIC vek_options ${ARG_DEPENDS} PRIVATE vek_warnings)
  else()
    # A folder of headers only, so far.
    add_library(vek_${name} INTERFACE)
    target_link_libraries(vek_${name} INTERFACE vek_options ${ARG_DEPENDS})
  endif()
  target_link_libraries(vek_lib INTERFACE vek_${name})
endfunction()

# vek_test(NAME SOURCES... [DEPENDS libs...] [PREFIX text]) makes one GoogleTest executable;
# its tests are listed when ctest runs, so a broken test binary fails the run instead of the
# build. PREFIX goes before every test's name in ctest.
function(vek_test name)
  cmake_parse_arguments(ARG "" "PREFIX" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPENDS} GTest::gtest GTest::gtest_main
                        vek_options vek_warnings)
  target_compile_definitions(${name} PRIVATE VEK_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
                             VEK_BINARY_DIR="${CMAKE_BINARY_DIR}")
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       TEST_PREFIX "${ARG_PREFIX}")
endfunction()

# vek_scenarios(NAME DIRECTORY) makes the test program NAME whose tests are the scenario files
# DIRECTORY/*.scn, one per file, named after its stem (format: tests/support/Scenario.h). The
# list of files is part of the program's build, so that a file added is listed by ctest after
# the next build.
function(vek_scenarios name directory)
  file(GLOB files CONFIGURE_DEPENDS ${directory}/*.scn)
  string(SHA1 listing "${files}")
  add_executable(${name} ${CMAKE_SOURCE_DIR}/tests/support/ScenarioMain.cpp)
  target_link_libraries(${name} PRIVATE vek_test_support vek_options vek_warnings)
  target_compile_definitions(${name} PRIVATE VEK_SCENARIO_SUITE="${name}"
                             VEK_SCENARIO_DIR="${directory}" VEK_SCENARIO_FILES="${listing}")
  add_dependencies(${name} vek)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60)
endfunction()
