# Small helpers that keep the per-folder CMake files short. Every folder is one library with an
# explicit source list; the repository root is the one include path, so every include names its folder.

set(TAVREL_EMPTY_SOURCE ${CMAKE_CURRENT_LIST_DIR}/empty.cpp)
if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(TAVREL_CCACHE ccache)
    if(TAVREL_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${TAVREL_CCACHE})
    endif()
endif()

# tavrel_library(<name> SOURCES <file>... QT <Qt5::X>... [LIBS <lib>...])
function(tavrel_library name)
    cmake_parse_arguments(L "" "" "SOURCES;QT;LIBS" ${ARGN})
    add_library(${name} STATIC ${L_SOURCES})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${L_QT} ${L_LIBS})
endfunction()

# tavrel_test(<name> SOURCES <file>... LIBS <lib>...)
# Each test runs in a folder of its own with a private settings store, so tests may run in parallel
# and never see the user's real preferences.
function(tavrel_test name)
    cmake_parse_arguments(T "" "" "SOURCES;LIBS;ENV" ${ARGN})
    add_executable(${name} ${T_SOURCES})
    target_link_libraries(${name} PRIVATE Qt5::Test ${T_LIBS})
    target_compile_definitions(${name} PRIVATE
        TAVREL_TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data"
        TAVREL_BINARY_DIR="${PROJECT_BINARY_DIR}")
    set(run ${PROJECT_BINARY_DIR}/test-run/${name})
    file(MAKE_DIRECTORY ${run})
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES
        WORKING_DIRECTORY ${run}
        TIMEOUT 600
        ENVIRONMENT "XDG_CONFIG_HOME=${run}/config;HOME=${run};QT_QPA_PLATFORM=offscreen;${T_ENV}")
endfunction()
