# vkmibh_gtest(<name> PREFIX <prefix> SOURCES <files> [LIBRARIES <targets>] [LABELS <labels>])
#
# One test program; ctest lists each of its tests as <prefix>.<Suite>.<Name>.
# The list is read when ctest starts, so a program that cannot even list its
# tests fails as a test and not as a build.
include(GoogleTest)

function(vkmibh_gtest name)
    cmake_parse_arguments(arg "" "PREFIX" "SOURCES;LIBRARIES;LABELS" ${ARGN})
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock GTest::gtest GTest::gtest_main)
    if("vkmibh_static" IN_LIST arg_LIBRARIES AND NOT arg_LABELS)
        add_dependencies(library_tests ${name})
    endif()
    gtest_discover_tests(${name}
        TEST_PREFIX ${arg_PREFIX}.
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT 300 LABELS "${arg_LABELS}")
endfunction()
