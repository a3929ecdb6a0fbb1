# What an embedding project gets: libraries, public headers, and packages that find_package() and pkg-config find.
# Components are named as the Debian packages that they become.

include(CMakePackageConfigHelpers)

set(QX_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/QXExtensionSDK")

function(qx_install_libraries export component)
  install(TARGETS ${ARGN} EXPORT ${export}
    LIBRARY COMPONENT ${component} NAMELINK_COMPONENT libqxextensionsdk-dev
    ARCHIVE COMPONENT libqxextensionsdk-dev
    FILE_SET HEADERS DESTINATION "${QX_INSTALL_INCLUDEDIR}" COMPONENT libqxextensionsdk-dev)
  install(EXPORT ${export} NAMESPACE QX:: DESTINATION "${QX_PACKAGE_DIR}" COMPONENT libqxextensionsdk-dev)
endfunction()

qx_install_libraries(QXExtensionSDKTargets libqxextensionsdk1 ${QX_SERVICE_LIBRARIES})
if(QX_BUILD_CONTENT)
  # A set of its own, so that a service extension needs no view toolkit to be built.
  qx_install_libraries(QXExtensionSDKContentTargets libqxextensionsdk-content1 ${QX_CONTENT_LIBRARIES})
endif()
if(QX_BUILD_TEST_SUPPORT)
  qx_install_libraries(QXTestSupportTargets libqxextensionsdk-dev QXTestSupport)
endif()

configure_package_config_file(cmake/QXExtensionSDKConfig.cmake.in
  "${PROJECT_BINARY_DIR}/QXExtensionSDKConfig.cmake" INSTALL_DESTINATION "${QX_PACKAGE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/QXExtensionSDKConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/QXExtensionSDKConfig.cmake"
  "${PROJECT_BINARY_DIR}/QXExtensionSDKConfigVersion.cmake"
  DESTINATION "${QX_PACKAGE_DIR}" COMPONENT libqxextensionsdk-dev)

# For pkg-config: found from where the files lie, so that the prefix can be moved.
string(REGEX REPLACE "[^/]+" ".." QX_PKGCONFIG_TO_PREFIX "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
if(BUILD_SHARED_LIBS)
  set(QX_PKGCONFIG_LIBS -lqxextensionsdk)
  set(QX_PKGCONFIG_CONTENT_LIBS -lqxextensionsdk-content)
else()
  list(JOIN QX_PKG_CONFIG_MODULES " " modules)
  set(QX_PKGCONFIG_REQUIRES "libcurl zlib ${modules}")
  set(QX_PKGCONFIG_LIBS "-lQXExtensionSDK -lAppGroupSDK -lQXLogging -lQXPlatform -l:libboost_json.a -pthread")
  set(QX_PKGCONFIG_CONTENT_REQUIRES "Qt6Svg libavif lcms2 libwebp libwebpdemux libpng libjpeg")
  set(QX_PKGCONFIG_CONTENT_LIBS "-lQXExtensionSDKContent -lQXExtensionSDKContentCore -lQXPlatformUI -lgif")
endif()
set(QX_PKGCONFIG_FILES qxextensionsdk)
if(QX_BUILD_CONTENT)
  list(APPEND QX_PKGCONFIG_FILES qxextensionsdk-content)
endif()
foreach(name IN LISTS QX_PKGCONFIG_FILES)
  configure_file(cmake/${name}.pc.in "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${name}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT libqxextensionsdk-dev)
endforeach()

if(PROJECT_IS_TOP_LEVEL)
  add_custom_target(uninstall COMMAND "${CMAKE_COMMAND}" "-DMANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt"
    -P "${PROJECT_SOURCE_DIR}/cmake/Uninstall.cmake")
endif()
