# What Debian has as source or as headers only and Windows needs as well. The headers lie among those of this machine,
# which the compiler for Windows must not see, so they are copied.

file(COPY /usr/include/CLI DESTINATION ${CMAKE_BINARY_DIR}/headers)
add_library(CLI11::CLI11 INTERFACE IMPORTED)
target_include_directories(CLI11::CLI11 INTERFACE ${CMAKE_BINARY_DIR}/headers)

if(QUORVEL_TESTS)
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
