# The libraries that a host links, under the same names in this build and of the installed package. They are the static
# libraries themselves or, by BUILD_SHARED_LIBS, two shared ones that are made of them; what is built here besides (tools,
# agent, tests) links the static ones in either case.

set(QX_SERVICE_LIBRARIES QXPlatform QXLogging AppGroupSDK QXExtensionSDK)
set(QX_CONTENT_LIBRARIES QXExtensionSDKContentCore)
if(QX_BUILD_CONTENT)
  list(APPEND QX_CONTENT_LIBRARIES QXPlatformUI QXExtensionSDKContent)
endif()

if(NOT BUILD_SHARED_LIBS)
  foreach(library IN LISTS QX_SERVICE_LIBRARIES QX_CONTENT_LIBRARIES)
    add_library(QX::${library} ALIAS ${library})
  endforeach()
  return()
endif()

# Of what goes into a shared library the linker hides what the export list does not name.
set_target_properties(${QX_SERVICE_LIBRARIES} ${QX_CONTENT_LIBRARIES} PROPERTIES CXX_VISIBILITY_PRESET default)

# Writes a linker's version script that exports the names of cmake/abi/<library>.names (classes with all that is theirs,
# functions, constants) and nothing else.
function(qx_write_exports library script)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/cmake/abi/${library}.names")
  file(STRINGS "${PROJECT_SOURCE_DIR}/cmake/abi/${library}.names" names REGEX "^[^#]")
  foreach(name IN LISTS names)
    set(list public)
    if(name MATCHES "^private (.*)")
      set(list private)
      set(name "${CMAKE_MATCH_1}")
    endif()
    foreach(before IN ITEMS "" "*?for?" "*?thunk?to?")
      # The name alone, or with what is inside it, its arguments or its template's.
      string(APPEND ${list} "    ${before}${name};\n    ${before}${name}[!0-9A-Z_a-z]*;\n")
    endforeach()
  endforeach()
  string(MAKE_C_IDENTIFIER "${library}_${PROJECT_VERSION_MAJOR}" node)
  string(TOUPPER ${node} node)
  set(text "${node} {\n  global: extern \"C++\" {\n${public}  };\n  local: *;\n};\n")
  if(private)
    string(APPEND text "${node}_PRIVATE {\n  global: extern \"C++\" {\n${private}  };\n};\n")
  endif()
  file(CONFIGURE OUTPUT "${script}" CONTENT "${text}" @ONLY)
endfunction()

# A shared library of the objects and public headers of static ones: qx_shared_library(name
# ALIASES QX-names… FROM libraries…). It resolves all that it needs.
function(qx_shared_library name)
  cmake_parse_arguments(arg "" "" "ALIASES;FROM" ${ARGN})
  add_library(${name} SHARED)
  qx_configure(${name})
  foreach(library IN LISTS arg_FROM)
    get_target_property(headers ${library} HEADER_SET)
    get_target_property(links ${library} LINK_LIBRARIES)
    list(FILTER links EXCLUDE REGEX "^(QX|AppGroupSDK)")
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:${library}>
      PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${headers})
    target_link_libraries(${name} PRIVATE ${links})
  endforeach()
  set(exports "${CMAKE_CURRENT_BINARY_DIR}/${name}.map")
  qx_write_exports(${name} "${exports}")
  target_link_options(${name} PRIVATE -Wl,-z,defs "-Wl,--version-script=${exports}")
  list(POP_FRONT arg_ALIASES first)
  set_target_properties(${name} PROPERTIES
    LINKER_LANGUAGE CXX LINK_DEPENDS "${exports}"
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} EXPORT_NAME ${first})
  add_library(QX::${first} ALIAS ${name})
  set(targets ${name})
  foreach(alias IN LISTS arg_ALIASES)
    add_library(${name}-${alias} INTERFACE)
    target_link_libraries(${name}-${alias} INTERFACE ${name})
    set_target_properties(${name}-${alias} PROPERTIES EXPORT_NAME ${alias})
    add_library(QX::${alias} ALIAS ${name}-${alias})
    list(APPEND targets ${name}-${alias})
  endforeach()
  set(${name}_TARGETS ${targets} PARENT_SCOPE)
endfunction()

qx_shared_library(qxextensionsdk
  ALIASES QXExtensionSDK AppGroupSDK QXPlatform FROM ${QX_SERVICE_LIBRARIES})
set(QX_SERVICE_LIBRARIES ${qxextensionsdk_TARGETS})
if(QX_BUILD_CONTENT)
  qx_shared_library(qxextensionsdk-content
    ALIASES QXExtensionSDKContent FROM ${QX_CONTENT_LIBRARIES})
  target_link_libraries(qxextensionsdk-content PUBLIC qxextensionsdk Qt6::Widgets)
  set(QX_CONTENT_LIBRARIES ${qxextensionsdk-content_TARGETS})
else()
  set(QX_CONTENT_LIBRARIES)
endif()
