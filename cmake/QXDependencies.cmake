# The libraries behind platform/, found once for the whole build.

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(CURL 7.88 REQUIRED)
find_package(Boost 1.81 REQUIRED COMPONENTS json)
pkg_check_modules(libdeflate REQUIRED IMPORTED_TARGET libdeflate)
pkg_check_modules(liburiparser REQUIRED IMPORTED_TARGET liburiparser)
pkg_check_modules(libplist REQUIRED IMPORTED_TARGET libplist-2.0)
pkg_check_modules(libsystemd REQUIRED IMPORTED_TARGET libsystemd)
if(QX_BUILD_TOOLS OR QX_BUILD_TESTS)
  find_package(OpenSSL REQUIRED)
  find_package(CLI11 REQUIRED)
endif()
