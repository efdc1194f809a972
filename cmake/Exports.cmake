# What leaves the shared objects. The requester library and the replacement
# platform libraries are built with hidden visibility; only the classes marked
# CAMREQ_API (requester/CamRequesterExport.h) and the C calls of the platform
# headers are exported (checked by the abi_exports test, abi/check-exports.sh).
#
# Tests that reach the library's inner parts (builders, scanners, the session
# engine) link camreq_internal: the same objects as a static archive, so they
# test the very code that goes into the shared object.

# The headers of the replacement platform libraries: their exported calls.
set(CAMREQ_PLATFORM_HEADER_kxcom ${PROJECT_SOURCE_DIR}/platform/ipc/include/kxcom.h)
set(CAMREQ_PLATFORM_HEADER_almsnd ${PROJECT_SOURCE_DIR}/platform/alarm/include/almsnd.h)
set(CAMREQ_PLATFORM_HEADER_kxhttp ${PROJECT_SOURCE_DIR}/platform/http/include/kxhttp.h)

# Static and object libraries that are built into TARGET (followed through
# their own link libraries).
function(_camreq_linked_archives target out)
  set(_seen "")
  set(_todo "${target}")
  while(_todo)
    list(POP_FRONT _todo _t)
    get_target_property(_libs ${_t} LINK_LIBRARIES)
    if(NOT _libs)
      continue()
    endif()
    foreach(_l IN LISTS _libs)
      if(TARGET ${_l} AND NOT _l IN_LIST _seen)
        get_target_property(_type ${_l} TYPE)
        get_target_property(_imported ${_l} IMPORTED)
        if(NOT _imported AND _type MATCHES "^(STATIC|OBJECT)_LIBRARY$")
          list(APPEND _seen ${_l})
          list(APPEND _todo ${_l})
        endif()
      endif()
    endforeach()
  endwhile()
  set(${out} "${_seen}" PARENT_SCOPE)
endfunction()

function(camreq_hidden_visibility)
  foreach(_t IN LISTS ARGN)
    get_target_property(_imported ${_t} IMPORTED)
    if(NOT _imported)
      set_target_properties(${_t} PROPERTIES
        C_VISIBILITY_PRESET hidden
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    endif()
  endforeach()
endfunction()

_camreq_linked_archives(CCamRequester _camreq_archives)
camreq_hidden_visibility(CCamRequester ${_camreq_archives} kxcom almsnd kxhttp)

# A version script per shared object keeps out what the standard library's
# headers instantiate with default visibility (abi/*.map).
foreach(_t CCamRequester kxcom almsnd kxhttp)
  get_target_property(_imported ${_t} IMPORTED)
  if(NOT _imported)
    set(_map ${PROJECT_SOURCE_DIR}/abi/${_t}.map)
    target_link_options(${_t} PRIVATE "LINKER:--version-script=${_map}")
    set_property(TARGET ${_t} APPEND PROPERTY LINK_DEPENDS ${_map})
  endif()
endforeach()

# The inner parts for the tests: the library's objects (its own and, through
# its link libraries, those of the object libraries it is made of), with its
# include folders and link libraries, as a static archive. Nothing is
# compiled twice.
if(NOT CAMREQ_LIBRARY_ONLY)
  add_library(camreq_internal STATIC $<TARGET_OBJECTS:CCamRequester>)
  set_target_properties(camreq_internal PROPERTIES LINKER_LANGUAGE CXX)
  get_target_property(_inc CCamRequester INCLUDE_DIRECTORIES)
  target_include_directories(camreq_internal PUBLIC ${_inc})
  get_target_property(_libs CCamRequester LINK_LIBRARIES)
  target_link_libraries(camreq_internal PUBLIC ${_libs})
endif()

# On the device's libraries, a call that they lack fails the link here.
if(CAMREQ_DEVICE_PLATFORM)
  target_link_options(CCamRequester PRIVATE "LINKER:--no-undefined")
endif()

# The checks of what leaves the shared objects (ctest -L abi). The ABI
# baseline is the host's; sanitizer builds add names of their own and are
# not checked.
if(NOT CAMREQ_LIBRARY_ONLY AND NOT CAMREQ_SANITIZE AND NOT CMAKE_CROSSCOMPILING)
  add_test(NAME abi_exports_requester
    COMMAND bash ${PROJECT_SOURCE_DIR}/abi/check-exports.sh requester $<TARGET_FILE:CCamRequester>)
  foreach(_lib kxcom almsnd kxhttp)
    add_test(NAME abi_exports_${_lib}
      COMMAND bash ${PROJECT_SOURCE_DIR}/abi/check-exports.sh platform $<TARGET_FILE:${_lib}>
              ${CAMREQ_PLATFORM_HEADER_${_lib}})
  endforeach()
  set(CAMREQ_ABI_BASELINE ${PROJECT_SOURCE_DIR}/abi/CCamRequester-${CMAKE_SYSTEM_PROCESSOR}.abi)
  set(_abi_args ${CAMREQ_ABI_BASELINE} $<TARGET_FILE:CCamRequester> ${CMAKE_CXX_COMPILER}
      ${PROJECT_SOURCE_DIR}/requester ${PROJECT_SOURCE_DIR}/platform/http/include)
  add_test(NAME abi_baseline COMMAND bash ${PROJECT_SOURCE_DIR}/abi/check-abi.sh ${_abi_args})
  add_test(NAME abi_baseline_catches_a_moved_virtual
    COMMAND bash ${PROJECT_SOURCE_DIR}/abi/check-abi-catches-move.sh ${_abi_args})
  set_tests_properties(abi_exports_requester abi_exports_kxcom abi_exports_almsnd abi_exports_kxhttp
    abi_baseline abi_baseline_catches_a_moved_virtual PROPERTIES LABELS abi)
  # Rewrites the baseline after an intended change: cmake --build build --target abi-baseline
  add_custom_target(abi-baseline
    COMMAND ${CMAKE_COMMAND} -E env ABI_UPDATE=1 bash ${PROJECT_SOURCE_DIR}/abi/check-abi.sh ${_abi_args}
    DEPENDS CCamRequester VERBATIM)
endif()
