# cmake --install: the library, its headers, the testing kit, the CMake package
# VKMibH (target VKMibH::VKMibH; with the component Testing, VKMibH::Testing), and
# vkmibh.pc and vkmibh-testing.pc for pkg-config. What is installed stands in
# tests/install/files.txt, all of it.
#
# The component "library" is what programs need to run, "development" what is
# needed to build them; the agent's is "agent" (packaging/).
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VKMibH)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(TARGETS VKMibH EXPORT VKMibHTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vkmibh
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN "*.h")
install(EXPORT VKMibHTargets NAMESPACE VKMibH:: DESTINATION ${package_dir} COMPONENT development)
install(TARGETS VKMibHTesting EXPORT VKMibHTestingTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(EXPORT VKMibHTestingTargets
    NAMESPACE VKMibH:: DESTINATION ${package_dir} COMPONENT development)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/VKMibHConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/VKMibHConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/VKMibHConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/VKMibHConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/VKMibHConfigVersion.cmake
    DESTINATION ${package_dir} COMPONENT development)

# Found from where the file lies, so that the prefix may be moved.
file(RELATIVE_PATH pkgconfig_to_prefix /prefix/${pkgconfig_dir} /prefix)
string(REGEX REPLACE "/$" "" pkgconfig_to_prefix ${pkgconfig_to_prefix})
configure_file(cmake/vkmibh.pc.in vkmibh.pc @ONLY)
configure_file(cmake/vkmibh-testing.pc.in vkmibh-testing.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vkmibh.pc ${CMAKE_CURRENT_BINARY_DIR}/vkmibh-testing.pc
    DESTINATION ${pkgconfig_dir} COMPONENT development)
