# SPDX-License-Identifier: Apache-2.0

# A room is one folder: a static library of all its sources, which may include only the rooms it names. A test room is
# one executable, run test by test.

add_library(marrowby_options INTERFACE)
target_include_directories(marrowby_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(marrowby_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wimplicit-fallthrough -Wswitch-enum
    -fstack-protector-strong
    # Frames are compared pixel for pixel across compilers, so no fused multiply-add.
    -ffp-contract=off
    # A Mac's compiler and headers are newer than the tested ones: warnings are not errors there.
    $<$<NOT:$<PLATFORM_ID:Darwin>>:-Werror>
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wthread-safety>
    # g++ 12 warns of an overlap in std::string's operator+ (GCC bug 105651).
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    # In a unity build it takes every .cpp for a header.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<BOOL:${CMAKE_UNITY_BUILD}>>:-Wno-subobject-linkage>)

# OpenCV's library of picture files brings ninety more with it; who calls none of a library does not load it.
target_link_options(marrowby_options INTERFACE $<$<PLATFORM_ID:Linux>:-Wl,--as-needed>)

set(MARROWBY_SANITIZE "" CACHE STRING "Sanitizers for everything that is built, e.g. address,undefined")
if(MARROWBY_SANITIZE)
    target_compile_options(marrowby_options INTERFACE
        -fsanitize=${MARROWBY_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(marrowby_options INTERFACE -fsanitize=${MARROWBY_SANITIZE})
endif()

option(MARROWBY_FUZZ "Count what is run, for the targets in Fuzz/" OFF)
if(MARROWBY_FUZZ)
    target_compile_options(marrowby_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

function(marrowby_room name)
    cmake_parse_arguments(ROOM "" "" "USES" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    if(sources)
        add_library(${name} STATIC ${sources})
        target_link_libraries(${name} PUBLIC marrowby_options ${ROOM_USES})
    else()
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE marrowby_options ${ROOM_USES})
    endif()
endfunction()

# What the thread sanitizer tries: the rooms of the product that start threads.
add_custom_target(threaded-tests)

# marrowby_tests(NAME USES rooms... [FOLDERS folders...] [SERIAL] [THREADED]): the tests of this folder and of the named
# subfolders. SERIAL tests own a display or a locker and run alone; THREADED ones run under the thread sanitizer, too.
function(marrowby_tests name)
    cmake_parse_arguments(ROOM "SERIAL;THREADED" "" "USES;FOLDERS" ${ARGN})
    set(patterns *.cpp *.mm)
    foreach(folder IN LISTS ROOM_FOLDERS)
        list(APPEND patterns ${folder}/*.cpp)
    endforeach()
    list(TRANSFORM patterns PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    file(GLOB sources CONFIGURE_DEPENDS ${patterns})
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    target_link_libraries(${name} PRIVATE marrowby_options ${ROOM_USES} Fakes GTest::gmock GTest::gtest_main)
    target_compile_definitions(${name} PRIVATE MARROWBY_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
    set(properties TIMEOUT 300 SKIP_REGULAR_EXPRESSION "\\[  SKIPPED \\]")
    if(ROOM_SERIAL)
        list(APPEND properties RESOURCE_LOCK desktop)
    endif()
    if(ROOM_THREADED)
        list(APPEND properties LABELS threaded)
        add_dependencies(threaded-tests ${name})
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES ${properties})
endfunction()
