# cmake --install: the requester library with its versioned soname, its
# public headers under include/ccamrequester, a CMake package
# (find_package(CCamRequester CONFIG): CCamRequester::CCamRequester and one
# target per platform library) with a version file, and ccamrequester.pc.
#
# Components:
#   CCamRequester   the library, the public headers, the package files
#   kxcom, almsnd, kxhttp
#                   the replacement platform libraries, each with its header
#                   (left out for a board whose own libraries are installed;
#                   with CAMREQ_DEVICE_PLATFORM they are not built at all)
#
#   cmake --install build --prefix /opt/camreq
#   cmake --install build --prefix /opt/camreq --component CCamRequester
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(CAMREQ_INCLUDE_SUBDIR ccamrequester)
set(CAMREQ_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/${CAMREQ_INCLUDE_SUBDIR})
set(CAMREQ_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/CCamRequester)
set(CAMREQ_PLATFORM_LIBS kxcom almsnd kxhttp)

# The headers that a user of the library includes: the three requester
# classes, the parameter records, the camera types, the visibility macro,
# the fields both requesters share, and the platform header they include.
set(CAMREQ_PUBLIC_HEADERS
  ${PROJECT_SOURCE_DIR}/requester/CCamRequester.h
  ${PROJECT_SOURCE_DIR}/rtp/CCamRequester_Cgi_Kobu_Rtp.h
  ${PROJECT_SOURCE_DIR}/http/CCamRequester_Cgi_Kobu_Http.h
  ${PROJECT_SOURCE_DIR}/requester/CamRequesterParam.h
  ${PROJECT_SOURCE_DIR}/requester/CamRequesterFields.h
  ${PROJECT_SOURCE_DIR}/requester/CamRequesterExport.h
  ${PROJECT_SOURCE_DIR}/requester/CamTypes.h)
# The platform headers: CAMREQ_PLATFORM_HEADER_<lib> (cmake/Exports.cmake).

# Include folders of the source tree hold for the build only; an installed
# user sees include/ccamrequester.
function(_camreq_install_interface target)
  get_target_property(_dirs ${target} INTERFACE_INCLUDE_DIRECTORIES)
  set(_new "")
  foreach(_d IN LISTS _dirs)
    if(_d MATCHES "^\\$<")
      list(APPEND _new "${_d}")
    else()
      list(APPEND _new "$<BUILD_INTERFACE:${_d}>")
    endif()
  endforeach()
  list(APPEND _new "$<INSTALL_INTERFACE:${CAMREQ_INSTALL_INCLUDEDIR}>")
  set_property(TARGET ${target} PROPERTY INTERFACE_INCLUDE_DIRECTORIES "${_new}")
endfunction()

# The requester's platform libraries are CCamRequester::<name> once installed,
# whether they are the replacements or the device's own.
function(_camreq_platform_links_as_installed target)
  get_target_property(_links ${target} INTERFACE_LINK_LIBRARIES)
  set(_new "")
  foreach(_l IN LISTS _links)
    if(_l IN_LIST CAMREQ_PLATFORM_LIBS)
      list(APPEND _new "$<BUILD_INTERFACE:${_l}>" "$<INSTALL_INTERFACE:CCamRequester::${_l}>")
    else()
      list(APPEND _new "${_l}")
    endif()
  endforeach()
  set_property(TARGET ${target} PROPERTY INTERFACE_LINK_LIBRARIES "${_new}")
endfunction()

_camreq_install_interface(CCamRequester)
_camreq_platform_links_as_installed(CCamRequester)
# The installed library finds its platform libraries beside it.
set_target_properties(CCamRequester PROPERTIES EXPORT_NAME CCamRequester INSTALL_RPATH "$ORIGIN")
add_library(CCamRequester::CCamRequester ALIAS CCamRequester)

install(TARGETS CCamRequester EXPORT CCamRequesterTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT CCamRequester
  NAMELINK_COMPONENT CCamRequester)
# On the device's libraries the device's own kxhttp.h serves instead.
if(NOT CAMREQ_DEVICE_PLATFORM)
  list(APPEND CAMREQ_PUBLIC_HEADERS ${CAMREQ_PLATFORM_HEADER_kxhttp})
endif()
install(FILES ${CAMREQ_PUBLIC_HEADERS}
  DESTINATION ${CAMREQ_INSTALL_INCLUDEDIR} COMPONENT CCamRequester)
install(EXPORT CCamRequesterTargets NAMESPACE CCamRequester::
  FILE CCamRequesterTargets.cmake
  DESTINATION ${CAMREQ_INSTALL_CMAKEDIR} COMPONENT CCamRequester)

if(NOT CAMREQ_DEVICE_PLATFORM)
  set(CAMREQ_PLATFORM_KIND replacement)
  foreach(_lib IN LISTS CAMREQ_PLATFORM_LIBS)
    _camreq_install_interface(${_lib})
    _camreq_platform_links_as_installed(${_lib})
    set_target_properties(${_lib} PROPERTIES EXPORT_NAME ${_lib} INSTALL_RPATH "$ORIGIN")
    add_library(CCamRequester::${_lib} ALIAS ${_lib})
    install(TARGETS ${_lib} EXPORT CCamRequester_${_lib}
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${_lib}
      NAMELINK_COMPONENT ${_lib})
    if(NOT _lib STREQUAL "kxhttp")
      install(FILES ${CAMREQ_PLATFORM_HEADER_${_lib}}
        DESTINATION ${CAMREQ_INSTALL_INCLUDEDIR} COMPONENT ${_lib})
    endif()
    install(EXPORT CCamRequester_${_lib} NAMESPACE CCamRequester::
      FILE CCamRequester_${_lib}.cmake
      DESTINATION ${CAMREQ_INSTALL_CMAKEDIR} COMPONENT ${_lib})
  endforeach()
  set(CAMREQ_PC_LIBDIRS "")
else()
  set(CAMREQ_PLATFORM_KIND device)
  set(CAMREQ_PC_LIBDIRS "-L${CAMREQ_DEVICE_LIB_DIR}")
endif()

configure_package_config_file(
  ${PROJECT_SOURCE_DIR}/cmake/CCamRequesterConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/CCamRequesterConfig.cmake
  INSTALL_DESTINATION ${CAMREQ_INSTALL_CMAKEDIR}
  PATH_VARS CAMREQ_INSTALL_INCLUDEDIR)
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/package/CCamRequesterConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/package/CCamRequesterConfig.cmake
  ${PROJECT_BINARY_DIR}/package/CCamRequesterConfigVersion.cmake
  DESTINATION ${CAMREQ_INSTALL_CMAKEDIR} COMPONENT CCamRequester)

# pkg-config: prefix-relative, so that a staged tree moved elsewhere works.
file(RELATIVE_PATH CAMREQ_PC_LIBDIR_REL "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(${PROJECT_SOURCE_DIR}/cmake/ccamrequester.pc.in
  ${PROJECT_BINARY_DIR}/package/ccamrequester.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/ccamrequester.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT CCamRequester)
