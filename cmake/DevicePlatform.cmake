# Builds the requester against the device's own platform libraries instead of
# the replacements in platform/: the IPC library (libkxcom), the alarm report
# (libalmsnd) and the HTTP client (libkxhttp), found by path.
#
#   cmake -S . -B build-board -DCAMREQ_DEVICE_PLATFORM=ON \
#         -DCAMREQ_DEVICE_PLATFORM_DIR=/path/to/device-sdk
#
# The folder holds include/ (kxcom.h, almsnd.h, kxhttp.h) and lib/ (the
# shared objects); CAMREQ_DEVICE_INCLUDE_DIR and CAMREQ_DEVICE_LIB_DIR name
# the two folders when they lie elsewhere. The libraries become imported
# targets under the replacements' names (kxcom, almsnd, kxhttp); the installed
# package calls them CCamRequester::kxcom and so on. The requester is linked
# with --no-undefined, so a call that the device's libraries do not have
# (an extension of the replacements) fails the link here, not on the board.
set(CAMREQ_DEVICE_PLATFORM_DIR "" CACHE PATH "Folder of the device's platform libraries (include/, lib/)")
set(CAMREQ_DEVICE_INCLUDE_DIR "${CAMREQ_DEVICE_PLATFORM_DIR}/include" CACHE PATH
    "Headers of the device's platform libraries")
set(CAMREQ_DEVICE_LIB_DIR "${CAMREQ_DEVICE_PLATFORM_DIR}/lib" CACHE PATH
    "Shared objects of the device's platform libraries")

foreach(_h kxcom.h almsnd.h kxhttp.h)
  if(NOT EXISTS "${CAMREQ_DEVICE_INCLUDE_DIR}/${_h}")
    message(FATAL_ERROR "CAMREQ_DEVICE_PLATFORM: ${_h} not found in '${CAMREQ_DEVICE_INCLUDE_DIR}'")
  endif()
endforeach()

foreach(_lib kxcom almsnd kxhttp)
  find_library(CAMREQ_DEVICE_${_lib}_LIBRARY NAMES ${_lib}
               PATHS "${CAMREQ_DEVICE_LIB_DIR}" NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
  if(NOT CAMREQ_DEVICE_${_lib}_LIBRARY)
    message(FATAL_ERROR "CAMREQ_DEVICE_PLATFORM: lib${_lib} not found in '${CAMREQ_DEVICE_LIB_DIR}'")
  endif()
  add_library(${_lib} SHARED IMPORTED GLOBAL)
  set_target_properties(${_lib} PROPERTIES
    IMPORTED_LOCATION "${CAMREQ_DEVICE_${_lib}_LIBRARY}"
    IMPORTED_NO_SONAME FALSE
    INTERFACE_INCLUDE_DIRECTORIES "${CAMREQ_DEVICE_INCLUDE_DIR}")
  message(STATUS "Device platform library ${_lib}: ${CAMREQ_DEVICE_${_lib}_LIBRARY}")
endforeach()
