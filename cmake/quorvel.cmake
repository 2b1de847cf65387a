# What every target of the project shares: the language, the warnings, the place of the binaries, the tests.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC OFF)
set(CMAKE_AUTOUIC OFF)
set(CMAKE_AUTORCC OFF)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set_property(GLOBAL PROPERTY AUTOGEN_SOURCE_GROUP "Generated")

# Every test file is a program of its own; lld links one in a third of the time.
find_program(QUORVEL_LLD ld.lld)
if(QUORVEL_LLD)
    add_link_options(-fuse-ld=lld)
endif()

option(QUORVEL_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)

# The one place for warnings and sanitizers.
add_library(quorvel_flags INTERFACE)
target_compile_options(
    quorvel_flags
    INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual
              -Wformat=2 -Werror
              # GCC 12 takes "text" + std::string for overlapping copies when it optimises
              $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
target_compile_definitions(quorvel_flags INTERFACE QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)
if(QUORVEL_SANITIZE)
    target_compile_options(quorvel_flags INTERFACE -fsanitize=address,undefined -fno-omit-frame-pointer
                                                   -fno-sanitize-recover=all)
    target_link_options(quorvel_flags INTERFACE -fsanitize=address,undefined)
endif()

# quorvel_compile_as_one(<target>)
#
# The headers of Qt and CLI11 cost more time than our own code. The compiler reads the sources of a folder as one, and the
# lint looks at the same units (tools/lint). So a name in an unnamed namespace is used once per folder.
function(quorvel_compile_as_one target)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 0)
endfunction()

# Tests are not optimised, what they test is. Qt's folder names differ from test to test, which would make each need
# precompiled headers of its own.
set(QUORVEL_TEST_OPTIONS -O0 -UQT_TESTCASE_BUILDDIR -UQT_TESTCASE_SOURCEDIR)

# quorvel_add_test(<file.cpp> <library>... [SERIAL] [WINDOW])
#
# Makes one executable of one test file, called after its folder and itself, and registers each of its tests with CTest.
#   SERIAL  its tests measure real time and run alone.
#   WINDOW  its tests show windows: they run on Qt's offscreen platform, with a main() that makes the
#           application object (tests/support/window_test_main.cpp).
function(quorvel_add_test file)
    cmake_parse_arguments(PARSE_ARGV 1 arg "SERIAL;WINDOW" "" "")
    file(RELATIVE_PATH place ${CMAKE_SOURCE_DIR}/tests ${CMAKE_CURRENT_SOURCE_DIR}/${file})
    string(REGEX REPLACE "[/.]" "_" name ${place})
    string(REGEX REPLACE "_cpp$" "" name ${name})
    add_executable(${name} ${file})
    target_link_libraries(${name} PRIVATE ${arg_UNPARSED_ARGUMENTS} quorvel_flags GTest::gmock)
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/tests)
    target_compile_options(${name} PRIVATE ${QUORVEL_TEST_OPTIONS})
    get_target_property(links ${name} LINK_LIBRARIES)
    if("quorvel_test_support" IN_LIST links OR arg_WINDOW)
        target_link_libraries(${name} PRIVATE quorvel_test_support)
        target_precompile_headers(${name} REUSE_FROM quorvel_precompiled_tests)
    endif()
    set(properties TIMEOUT 300)
    if(arg_WINDOW)
        target_link_libraries(${name} PRIVATE quorvel_window_test_main)
    else()
        target_link_libraries(${name} PRIVATE GTest::gtest_main)
    endif()
    if(arg_SERIAL)
        list(APPEND properties RUN_SERIAL TRUE)
    endif()
    get_filename_component(room ${place} DIRECTORY)
    list(APPEND properties LABELS ${room})
    gtest_discover_tests(${name} NO_PRETTY_VALUES PROPERTIES ${properties} DISCOVERY_TIMEOUT 60
                         EXTRA_ARGS --gtest_brief=1)
endfunction()
include(GoogleTest)
