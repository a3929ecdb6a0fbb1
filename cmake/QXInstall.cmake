# What an embedding project gets: libraries, public headers and a package that find_package() finds.

include(CMakePackageConfigHelpers)

set(QX_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/QXExtensionSDK")

install(TARGETS QXPlatform QXLogging AppGroupSDK QXExtensionSDK QXExtensionSDKContentCore
  EXPORT QXExtensionSDKTargets)
install(EXPORT QXExtensionSDKTargets NAMESPACE QX:: DESTINATION "${QX_PACKAGE_DIR}")
if(QX_BUILD_CONTENT)
  # A set of its own, so that a service extension needs no view toolkit to be built.
  install(TARGETS QXPlatformUI QXExtensionSDKContent EXPORT QXExtensionSDKContentTargets)
  install(EXPORT QXExtensionSDKContentTargets NAMESPACE QX:: DESTINATION "${QX_PACKAGE_DIR}")
endif()
install(DIRECTORY QXPlatform AppGroupSDK QXExtensionSDK DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  FILES_MATCHING PATTERN "*.h" PATTERN "libraries" EXCLUDE PATTERN "posix" EXCLUDE PATTERN "linux" EXCLUDE PATTERN "qt" EXCLUDE)

configure_package_config_file(cmake/QXExtensionSDKConfig.cmake.in
  "${PROJECT_BINARY_DIR}/QXExtensionSDKConfig.cmake" INSTALL_DESTINATION "${QX_PACKAGE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/QXExtensionSDKConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/QXExtensionSDKConfig.cmake"
  "${PROJECT_BINARY_DIR}/QXExtensionSDKConfigVersion.cmake" DESTINATION "${QX_PACKAGE_DIR}")
