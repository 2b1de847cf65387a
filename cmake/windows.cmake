# What Debian has as source or as headers only and Windows needs as well. The headers lie among those of this machine,
# which the compiler for Windows must not see, so they are copied.

file(COPY /usr/include/CLI DESTINATION ${CMAKE_BINARY_DIR}/headers)
add_library(CLI11::CLI11 INTERFACE IMPORTED)
target_include_directories(CLI11::CLI11 INTERFACE ${CMAKE_BINARY_DIR}/headers)

if(QUORVEL_TESTS OR QUORVEL_BENCHES)
    include(GoogleTest)
    set(googletest /usr/src/googletest)
    add_library(quorvel_googletest STATIC ${googletest}/googletest/src/gtest-all.cc
                                          ${googletest}/googlemock/src/gmock-all.cc)
    target_include_directories(quorvel_googletest SYSTEM PUBLIC ${googletest}/googletest/include
                                                                ${googletest}/googlemock/include)
    target_include_directories(quorvel_googletest PRIVATE ${googletest}/googletest ${googletest}/googlemock)
    add_library(quorvel_googletest_main STATIC ${googletest}/googletest/src/gtest_main.cc)
    target_link_libraries(quorvel_googletest_main PUBLIC quorvel_googletest)
    add_library(GTest::gtest ALIAS quorvel_googletest)
    add_library(GTest::gmock ALIAS quorvel_googletest)
    add_library(GTest::gtest_main ALIAS quorvel_googletest_main)
endif()

# The source is not in a package of its own: packaging/windows/bench fetches it.
if(QUORVEL_BENCHES)
    set(QUORVEL_BENCHMARK "" CACHE PATH "Source of Google Benchmark")
    file(GLOB benchmark ${QUORVEL_BENCHMARK}/src/*.cc)
    list(FILTER benchmark EXCLUDE REGEX benchmark_main)
    add_library(quorvel_benchmark STATIC ${benchmark})
    target_include_directories(quorvel_benchmark SYSTEM PUBLIC ${QUORVEL_BENCHMARK}/include)
    target_compile_definitions(quorvel_benchmark PUBLIC BENCHMARK_STATIC_DEFINE PRIVATE HAVE_STD_REGEX HAVE_STEADY_CLOCK)
    target_link_libraries(quorvel_benchmark PRIVATE shlwapi)
    add_library(benchmark::benchmark ALIAS quorvel_benchmark)
endif()
