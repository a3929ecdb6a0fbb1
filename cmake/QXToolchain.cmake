# How every target of this build is compiled. Nothing here is exported to users of the libraries.

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
# Public headers lie below it, so that another major version can be installed beside this one.
set(QX_INSTALL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/qxextensionsdk-${PROJECT_VERSION_MAJOR}")

find_program(QX_CCACHE ccache)
if(PROJECT_IS_TOP_LEVEL AND QX_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  # What the cache asks for to keep what uses precompiled headers.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
    CCACHE_PCH_EXTSUM=true "${QX_CCACHE}")
endif()

set(QX_SANITIZE_FLAGS "")
set(QX_SANITIZE_WARNINGS "")
if(QX_SANITIZE)
  list(JOIN QX_SANITIZE "," QX_SANITIZE_LIST)
  set(QX_SANITIZE_FLAGS -fsanitize=${QX_SANITIZE_LIST} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_compile_options(${QX_SANITIZE_FLAGS})
  add_link_options(${QX_SANITIZE_FLAGS})
  # With sanitizers GCC takes moved-from functions of the standard library for uninitialised ones.
  set(QX_SANITIZE_WARNINGS $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()

# What makes faults harder to use. Not with a sanitizer, which finds them, nor without optimisation, which the checked
# calls of the C library ask for.
option(QX_HARDEN "Harden libraries and programs" ON)
set(QX_HARDEN_FLAGS "")
if(QX_HARDEN AND NOT QX_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES "^(GNU|Clang)$")
  set(QX_HARDEN_FLAGS -fstack-protector-strong "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
  include(CheckCXXCompilerFlag)
  foreach(flag IN ITEMS -fcf-protection -fstack-clash-protection)
    string(MAKE_C_IDENTIFIER "QX_HAS${flag}" has)
    check_cxx_compiler_flag(${flag} ${has})
    if(${has})
      list(APPEND QX_HARDEN_FLAGS ${flag})
    endif()
  endforeach()
  include(CheckPIESupported)
  check_pie_supported()
  add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
endif()

# Has a target carry a precompiled header for those that reuse it. They are to be compiled by the same options.
function(qx_precompile target header)
  set_target_properties(${target} PROPERTIES CXX_COMPILER_LAUNCHER "${PROJECT_SOURCE_DIR}/cmake/precompiled/compile")
  target_precompile_headers(${target} PRIVATE "${header}")
endfunction()
# What the compiler cache asks for of those that carry and those that reuse. GCC forgets in between what the standard
# library's own pragmas silence; the packages are built without, with all warnings.
set(QX_PRECOMPILED_FLAGS
  "$<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess;-Wno-array-bounds;-Wno-stringop-overflow>"
  "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")

# The compiler spends a tenth of its time on collecting what it could as well forget at its end.
set(QX_COLLECT_FLAGS "")
if(PROJECT_IS_TOP_LEVEL AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  set(QX_COLLECT_FLAGS "SHELL:--param ggc-min-heapsize=1048576")  # kilobytes
endif()

# Settings of one of our own targets: warnings, and the source root as include directory; qx_configure(target [SMALL]).
# SMALL: what waits for people, files and networks is optimised for its size, and built sooner.
function(qx_configure target)
  cmake_parse_arguments(arg "SMALL" "" "" ${ARGN})
  set(precompiled qx_precompiled)
  if(arg_SMALL)
    set(precompiled qx_precompiled_small)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-Os>)
  endif()
  # GCC 12 sees overlapping copies in string concatenation where there are none, hence -Wno-restrict.
  target_compile_options(${target} PRIVATE
    ${QX_COLLECT_FLAGS} ${QX_HARDEN_FLAGS} -Wall -Wextra -Wconversion -Wshadow ${QX_SANITIZE_WARNINGS} $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    $<$<BOOL:${QX_WARNINGS_AS_ERRORS}>:-Werror>)
  get_target_property(type ${target} TYPE)
  if(NOT type STREQUAL "EXECUTABLE")
    target_include_directories(${target} PUBLIC
      $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${QX_INSTALL_INCLUDEDIR}>)
    target_compile_features(${target} PUBLIC cxx_std_20)
  else()
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  endif()
  if(QX_PRECOMPILE)
    # Programs as libraries, whose header would not fit otherwise.
    target_compile_options(${target} PRIVATE -fPIC ${QX_PRECOMPILED_FLAGS})
    if(NOT target STREQUAL precompiled)
      target_precompile_headers(${target} REUSE_FROM ${precompiled})
    endif()
  endif()
endfunction()

if(QX_PRECOMPILE)
  foreach(target IN ITEMS qx_precompiled qx_precompiled_small)
    add_library(${target} OBJECT EXCLUDE_FROM_ALL "${PROJECT_SOURCE_DIR}/cmake/precompiled/carrier.cpp")
    qx_precompile(${target} "${PROJECT_SOURCE_DIR}/cmake/precompiled/library.h")
  endforeach()
  qx_configure(qx_precompiled)
  qx_configure(qx_precompiled_small SMALL)
endif()

# Links a program of ours with what it makes use of alone: other libraries stay out, and of the C++ library, which alone
# takes 1.3 MB as a shared one, only what is called comes in.
function(qx_link_lean program)
  target_link_options(${program} PRIVATE -Wl,--as-needed
    $<$<NOT:$<BOOL:${QX_SANITIZE}>>:-static-libstdc++;-static-libgcc;-Wl,--gc-sections>)
endfunction()

# The headers of a library that a host may include; no other is installed.
function(qx_public_headers target)
  list(TRANSFORM ARGN PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/" OUTPUT_VARIABLE headers)
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${headers})
endfunction()

# Manual pages of a program, from its own --help, installed with it.
function(qx_manual_pages program)
  set(directory "${CMAKE_CURRENT_BINARY_DIR}/manual")
  add_custom_command(OUTPUT "${directory}/${program}.1"
    COMMAND "${PROJECT_SOURCE_DIR}/scripts/man-pages" $<TARGET_FILE:${program}> "${directory}" ${ARGN}
    DEPENDS ${program} "${PROJECT_SOURCE_DIR}/scripts/man-pages" ${ARGN} VERBATIM)
  add_custom_target(${program}-manual ALL DEPENDS "${directory}/${program}.1")
  install(DIRECTORY "${directory}/" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT ${program})
endfunction()
