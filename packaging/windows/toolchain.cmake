# Builds for Windows (x86-64) with Debian's MinGW. QUORVEL_SDK is the folder of what was built for Windows before
# (packaging/windows/qt); without it there is only what comes with the compiler.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(triplet x86_64-w64-mingw32)
find_program(CMAKE_C_COMPILER ${triplet}-gcc-posix REQUIRED)
find_program(CMAKE_CXX_COMPILER ${triplet}-g++-posix REQUIRED)
find_program(CMAKE_RC_COMPILER ${triplet}-windres REQUIRED)

# Nothing of the machine that builds is linked or included; only its programs run.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUORVEL_SDK)
set(CMAKE_FIND_ROOT_PATH /usr/${triplet} ${QUORVEL_SDK})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind IN ITEMS LIBRARY INCLUDE PACKAGE)
    set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
