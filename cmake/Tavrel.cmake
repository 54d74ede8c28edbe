# Small helpers that keep the per-folder CMake files short: every folder is one library whose
# sources are the .cpp/.h files in it, so adding a class never means editing a shared list.

set(TAVREL_EMPTY_SOURCE ${CMAKE_CURRENT_LIST_DIR}/empty.cpp)

# tavrel_library(<name> [EXCLUDE <file>...] QT <Qt5::X>... [LIBS <lib>...])
function(tavrel_library name)
    cmake_parse_arguments(L "" "" "QT;LIBS;EXCLUDE" ${ARGN})
    file(GLOB_RECURSE srcs CONFIGURE_DEPENDS
        ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
    foreach(ex IN LISTS L_EXCLUDE)
        list(REMOVE_ITEM srcs ${CMAKE_CURRENT_SOURCE_DIR}/${ex})
    endforeach()
    if(NOT srcs)
        set(srcs ${TAVREL_EMPTY_SOURCE})
    endif()
    add_library(${name} STATIC ${srcs})
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR})
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
