# cmake --install: headers, the shared library and the package VKMibH, whose
# target is VKMibH::VKMibH.
include(CMakePackageConfigHelpers)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VKMibH)

install(TARGETS VKMibH EXPORT VKMibHTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vkmibh
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(EXPORT VKMibHTargets NAMESPACE VKMibH:: DESTINATION ${package_dir})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/VKMibHConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/VKMibHConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/VKMibHConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/VKMibHConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/VKMibHConfigVersion.cmake DESTINATION ${package_dir})
