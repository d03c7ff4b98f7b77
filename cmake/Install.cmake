# The installed tree, and the CMake package that a host finds:
#
#   find_package(sqstorage REQUIRED)
#   target_link_libraries(host PRIVATE sqstorage::dmsqStorage)
#   add_version_info(host COMPANY "..." PRODUCT "...")
#
# The libraries lie side by side in lib, since they find each other by name; programs look for them in ../lib. The
# tree may be moved.

include(CMakePackageConfigHelpers)

# What a host links, and what that needs.
set(_exported dmsqStorage dmsqStorageInterface dmudfcom dmFirebird diagnostics platform)
# What is found by its name while a program runs.
set(_loaded debug_object)
set(_package_folder lib/cmake/sqstorage)

foreach(name IN LISTS _exported)
  install(TARGETS sq_${name} EXPORT sqstorageTargets
    LIBRARY DESTINATION lib
    ARCHIVE DESTINATION lib
    RUNTIME DESTINATION bin)
  get_target_property(folder sq_${name} SQ_PUBLIC_FOLDER)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/${folder}/" DESTINATION "include/sqstorage/${folder}"
    FILES_MATCHING PATTERN "*.h"
    PATTERN tests EXCLUDE PATTERN benchmarks EXCLUDE PATTERN fuzz EXCLUDE PATTERN posix EXCLUDE)
endforeach()
foreach(name IN LISTS _loaded)
  install(TARGETS sq_${name} LIBRARY DESTINATION lib)
endforeach()
install(TARGETS sqstorage RUNTIME DESTINATION bin)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/data" DESTINATION share/sqstorage)
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION share/doc/sqstorage)

install(EXPORT sqstorageTargets NAMESPACE sqstorage:: DESTINATION ${_package_folder})
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/sqstorageConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/sqstorageConfig.cmake" INSTALL_DESTINATION ${_package_folder})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/sqstorageConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/sqstorageConfig.cmake"
  "${PROJECT_BINARY_DIR}/sqstorageConfigVersion.cmake"
  "${CMAKE_CURRENT_LIST_DIR}/VersionInfo.cmake"
  DESTINATION ${_package_folder})
