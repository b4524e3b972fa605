# Warnings, optimisation and sanitizers: the same for every target.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Woverloaded-virtual)

# What is shipped is built for size of code as well as speed; calls between the
# library's own functions need no indirection.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
add_compile_options(-fno-semantic-interposition)
# Calls are seen through across files: a tenth of the instructions of a request.
include(CheckIPOSupported)
check_ipo_supported(RESULT VKMIBH_IPO LANGUAGES CXX)
set(CMAKE_INTERPROCEDURAL_OPTIMIZATION_RELEASE ${VKMIBH_IPO})

if(VKMIBH_SANITIZE)
    add_compile_options(-fsanitize=${VKMIBH_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${VKMIBH_SANITIZE})
endif()

if(VKMIBH_COVERAGE)
    # Counters that threads share are added to atomically; what tests and system headers do is not counted.
    add_compile_options(--coverage -fprofile-update=atomic "-fprofile-exclude-files=^/usr/|/tests/")
    add_link_options(--coverage)
endif()

if(VKMIBH_BUILD_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(VKMIBH_THREAD_SAFETY)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "VKMIBH_THREAD_SAFETY needs clang")
    endif()
    add_compile_options(-Wthread-safety -Werror=thread-safety)
endif()

if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
    find_program(VKMIBH_CCACHE ccache)
    if(VKMIBH_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${VKMIBH_CCACHE})
    endif()
endif()
