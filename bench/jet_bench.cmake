# Database files beside SQLite and mdb-export.
find_package(SQLite3 REQUIRED)
add_executable(jet_rows jet_rows.cpp)
target_include_directories(jet_rows PRIVATE ${CMAKE_SOURCE_DIR}/src)
target_link_libraries(jet_rows PRIVATE quorvel_jet quorvel_flags benchmark::benchmark SQLite::SQLite3)
