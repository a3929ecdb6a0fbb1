# Debian packages, made by scripts/packages: one for each component that is installed.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The maintainers of QXExtensionSDK <maintainers@qxextensionsdk.example.org>")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/debian")
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/debian/CompressManual.cmake")
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE qxextensionsdk)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

# What Debian wants to find in each: who may copy it, and what changed.
set(documents "${PROJECT_BINARY_DIR}/debian-documents")
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE "${documents}/changelog" "qxextensionsdk (${PROJECT_VERSION}) stable; urgency=medium\n\n"
  "  * See CHANGELOG.md in the source.\n\n -- ${CPACK_PACKAGE_CONTACT}  ${now}\n")
execute_process(COMMAND gzip -9nf "${documents}/changelog" COMMAND_ERROR_IS_FATAL ANY)

# A package: qx_package(name [LIBRARY] SECTION section [DEPENDS text] [RECOMMENDS text] SUMMARY text ABOUT text)
macro(qx_package name)
  cmake_parse_arguments(package "LIBRARY" "SECTION;SUMMARY;DEPENDS;RECOMMENDS;ABOUT" "" ${ARGN})
  string(TOUPPER ${name} upper)
  list(APPEND CPACK_COMPONENTS_ALL ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${package_SECTION})
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${package_DEPENDS}")
  set(CPACK_DEBIAN_${upper}_PACKAGE_RECOMMENDS "${package_RECOMMENDS}")
  set(CPACK_COMPONENT_${upper}_DESCRIPTION "${package_SUMMARY}\n${package_ABOUT}")
  if(package_LIBRARY)
    set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
  endif()
  install(FILES "${documents}/changelog.gz" "${PROJECT_SOURCE_DIR}/cmake/debian/copyright"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${name}" COMPONENT ${name} EXCLUDE_FROM_ALL)
endmacro()

set(CPACK_COMPONENTS_ALL)
qx_package(libqxextensionsdk1 LIBRARY SECTION libs
  SUMMARY "rich push and delivery receipts for notification extensions"
  ABOUT "What an app's service extension runs for every push before it is\nshown, and the container that the app and its extensions share.")
qx_package(libqxextensionsdk-content1 LIBRARY SECTION libs DEPENDS "libqxextensionsdk1 (= ${PROJECT_VERSION})"
  SUMMARY "image carousels for expanded notifications"
  ABOUT "What an app's content extension shows when a notification is expanded.")
qx_package(libqxextensionsdk-dev SECTION libdevel
  DEPENDS "libqxextensionsdk1 (= ${PROJECT_VERSION}), libqxextensionsdk-content1 (= ${PROJECT_VERSION}), libssl-dev, qt6-base-dev"
  SUMMARY "rich push for notification extensions, for developers"
  ABOUT "Headers, CMake package and pkg-config files, and what a host tests its\nhooks with.")
# Galleries hold their pictures as WebP, which a plugin writes that no link shows.
qx_package(qx SECTION devel DEPENDS "qt6-image-formats-plugins"
  SUMMARY "simulator for pushes and notification extensions"
  ABOUT "Plays the operating system, the host app and the back end: sends, checks and\npacks pushes, and draws carousels.")
qx_package(qx-agent SECTION net RECOMMENDS "default-dbus-session-bus | dbus-session-bus"
  SUMMARY "delivers pushes to apps that do not run"
  ABOUT "Takes an app's Web Push messages, leads them through its extensions and\nshows them as desktop notifications.")
include(CPack)
