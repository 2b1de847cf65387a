# What every target of the project shares: the language, the warnings, the place of the binaries, the tests.

include(program/program)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC OFF)
set(CMAKE_AUTOUIC OFF)
set(CMAKE_AUTORCC OFF)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set_property(GLOBAL PROPERTY AUTOGEN_SOURCE_GROUP "Generated")

# lld links a program in a third of the time; Debian's compiler for Windows does not know it.
find_program(QUORVEL_LLD ld.lld)
if(QUORVEL_LLD AND NOT WIN32)
    add_link_options(-fuse-ld=lld)
endif()

# The options. Without any, the programs are built file by file and nothing else is; the presets switch on what
# developers use.
option(QUORVEL_QT "Build what needs Qt, which is nearly all; without, the rest is compiled and tested" ON)
option(QUORVEL_UNITY "Compile the sources of a folder as one" OFF)
option(QUORVEL_WERROR "Treat warnings as errors" OFF)
option(QUORVEL_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
option(QUORVEL_FUZZ "Build the fuzzers as such, with sanitizers; needs clang" OFF)
option(QUORVEL_COVERAGE "Build programs that count what of them runs, for gcov" OFF)
option(QUORVEL_TESTS "Build the tests; needs GoogleTest. For Windows those that need no tool of another system" OFF)
option(QUORVEL_BENCHES "Build the benchmarks; needs Google Benchmark, GoogleTest and SQLite. For Windows that of the pauses"
       OFF)

# The one place for warnings and sanitizers.
add_library(quorvel_flags INTERFACE)
target_compile_options(
    quorvel_flags
    INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
              -Wcast-qual -Wformat=2 $<$<BOOL:${QUORVEL_WERROR}>:-Werror>
              # GCC 12 takes "text" + std::string for overlapping copies when it optimises
              $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
              # memory for time: the compiler collects its garbage seldom
              $<$<CXX_COMPILER_ID:GNU>:--param=ggc-min-heapsize=524288>)
target_compile_definitions(quorvel_flags INTERFACE QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)
if(WIN32)
    target_compile_definitions(quorvel_flags INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()
if(QUORVEL_SANITIZE)
    target_compile_options(quorvel_flags INTERFACE -fsanitize=address,undefined -fno-omit-frame-pointer
                                                   -fno-sanitize-recover=all)
    target_link_options(quorvel_flags INTERFACE -fsanitize=address,undefined)
endif()
if(QUORVEL_FUZZ)
    target_compile_options(quorvel_flags INTERFACE -fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer
                                                   -fno-sanitize-recover=all)
    target_compile_definitions(quorvel_flags INTERFACE _GLIBCXX_ASSERTIONS)
    target_link_options(quorvel_flags INTERFACE -fsanitize=address,undefined)
endif()
if(QUORVEL_COVERAGE)
    target_compile_options(quorvel_flags INTERFACE --coverage)
    target_link_options(quorvel_flags INTERFACE --coverage)
endif()

# A release defends itself against what slips through (tests/packaging/hardening_test.py).
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
if(NOT QUORVEL_SANITIZE AND NOT QUORVEL_FUZZ)
    set(optimised $<AND:$<CONFIG:Release>,$<NOT:$<BOOL:$<TARGET_PROPERTY:QUORVEL_UNOPTIMISED>>>>)
    target_compile_options(quorvel_flags INTERFACE $<${optimised}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>
                                                   $<$<CONFIG:Release>:-fstack-protector-strong>)
    target_compile_definitions(quorvel_flags INTERFACE $<$<CONFIG:Release>:_GLIBCXX_ASSERTIONS>)
    if(WIN32)
        # these defences are in a library of their own
        target_link_options(quorvel_flags INTERFACE $<$<CONFIG:Release>:-fstack-protector-strong>)
    else()
        target_link_options(quorvel_flags INTERFACE $<$<CONFIG:Release>:-Wl,-z,relro,-z,now>)
    endif()
endif()

# quorvel_compile_as_one(<target>)
#
# The headers of Qt and CLI11 cost more time than our own code. With QUORVEL_UNITY the compiler reads the sources of a
# folder as one, and the lint looks at the same units (tools/lint). So a name in an unnamed namespace is used once per
# folder.
function(quorvel_compile_as_one target)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${QUORVEL_UNITY} UNITY_BUILD_BATCH_SIZE 0)
    if(QUORVEL_UNITY)
        # when the folder's CMakeLists.txt has said whether there is a moc
        cmake_language(EVAL CODE "cmake_language(DEFER CALL quorvel_include_mocs [[${target}]])")
    endif()
endfunction()

# CMake compiles what moc writes by itself, even when the sources are read as one. It becomes one of these sources.
function(quorvel_include_mocs target)
    get_target_property(moc ${target} AUTOMOC)
    if(moc)
        set(mocs ${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/mocs_compilation.cpp)
        set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}_mocs.cpp)
        file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${mocs}\"\n")
        set_source_files_properties(${mocs} PROPERTIES HEADER_FILE_ONLY ON)
        set_source_files_properties(${source} PROPERTIES SKIP_AUTOMOC ON)
        target_sources(${target} PRIVATE ${source})
    endif()
endfunction()

# quorvel_optimise_little(<target>)
#
# For what is mostly templates of CLI11 and waits for a person or a slow line: in a release the compiler saves itself
# the costly optimisations.
function(quorvel_optimise_little target)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
endfunction()

# quorvel_optimise_nothing(<target>): for programs of the tests.
function(quorvel_optimise_nothing target)
    target_compile_options(${target} PRIVATE -O0)
    set_target_properties(${target} PROPERTIES QUORVEL_UNOPTIMISED ON)
endfunction()

# quorvel_add_tests(<name> FILES <file.cpp>... LIBRARIES <library>... [SERIAL] [WINDOW])
#
# Makes one executable <name>_test of test files of a folder, which the compiler reads as one, and registers each of
# their tests with CTest under the label of the folder. Tests are not optimised, what they test is.
#   SERIAL  the tests measure real time and run alone.
#   WINDOW  the tests need the application object or show windows: they run on Qt's offscreen platform, with a main()
#           that makes it (tests/support/window_test_main.cpp).
function(quorvel_add_tests name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "SERIAL;WINDOW" "" "FILES;LIBRARIES")
    set(target ${name}_test)
    add_executable(${target} ${arg_FILES})
    target_link_libraries(${target} PRIVATE ${arg_LIBRARIES} quorvel_flags GTest::gmock)
    target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/tests)
    quorvel_optimise_nothing(${target})
    quorvel_compile_as_one(${target})
    if(arg_WINDOW)
        target_link_libraries(${target} PRIVATE quorvel_test_support quorvel_window_test_main)
    else()
        target_link_libraries(${target} PRIVATE GTest::gtest_main)
    endif()
    file(RELATIVE_PATH folder ${CMAKE_SOURCE_DIR}/tests ${CMAKE_CURRENT_SOURCE_DIR})
    # what the programs keep of a user's, the journal of writes among it, is kept here instead
    set(properties TIMEOUT 300 LABELS ${folder} ENVIRONMENT XDG_DATA_HOME=${CMAKE_CURRENT_BINARY_DIR}/users_data)
    if(arg_SERIAL)
        list(APPEND properties RUN_SERIAL TRUE)
    endif()
    if(CMAKE_CROSSCOMPILING)
        # each start of a program costs half a second there
        add_test(NAME ${target} COMMAND ${target} --gtest_brief=1 --gtest_filter=-${QUORVEL_NOT_FOR_WINE})
        set_tests_properties(${target} PROPERTIES ${properties} TIMEOUT 1800)
        return()
    endif()
    gtest_discover_tests(${target} NO_PRETTY_VALUES PROPERTIES ${properties} DISCOVERY_TIMEOUT 60
                         EXTRA_ARGS --gtest_brief=1)
endfunction()

# quorvel_add_fuzzer(<name> LIBRARIES <library>...)
#
# Makes <name>_fuzz of fuzz/<name>_fuzz.cpp. With QUORVEL_FUZZ it looks for inputs that do harm (tools/fuzz); otherwise
# a test runs it over the inputs in fuzz/corpus/<name>.
function(quorvel_add_fuzzer name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBRARIES")
    set(target ${name}_fuzz)
    add_executable(${target} fuzz/${target}.cpp)
    target_link_libraries(${target} PRIVATE ${arg_LIBRARIES} quorvel_flags)
    target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/tests ${CMAKE_SOURCE_DIR})
    if(QUORVEL_FUZZ)
        target_link_options(${target} PRIVATE -fsanitize=fuzzer)
        return()
    endif()
    target_link_libraries(${target} PRIVATE quorvel_replay)
    quorvel_optimise_nothing(${target})
    add_test(NAME Fuzz.${name}.StoredInputsDoNoHarm COMMAND ${target} ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/corpus/${name})
    file(RELATIVE_PATH folder ${CMAKE_SOURCE_DIR}/tests ${CMAKE_CURRENT_SOURCE_DIR})
    set_tests_properties(Fuzz.${name}.StoredInputsDoNoHarm PROPERTIES TIMEOUT 300 LABELS ${folder})
endfunction()
