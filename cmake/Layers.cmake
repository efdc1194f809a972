# The library's layers, lowest first. A layer sees its own folder and the
# folders of the layers below it, never one above: the requester core knows
# nothing of CGI lines, the CGI protocol nothing of sessions, the session
# glue nothing of either concrete requester, and the two requesters nothing
# of each other. A back-include therefore fails to compile.
#
#   requester  <  cgi  <  transport  <  rtp, http
#
# Each layer is an object library; the CCamRequester shared library links
# the objects of all of them. Tests, tools, benchmarks and fuzz targets see
# every header through CCamRequester's public include folders instead, and
# reach the inner parts through camreq_internal (cmake/Exports.cmake).

# camreq_layer(NAME [BELOW lower...] SOURCES files...)
# Adds the object library camreq_<NAME> from the calling folder's SOURCES,
# with that folder as its include folder and the layers named in BELOW
# (and, through them, theirs) beneath it.
function(camreq_layer name)
  cmake_parse_arguments(PARSE_ARGV 1 _layer "" "" "BELOW;SOURCES")
  set(_target camreq_${name})
  add_library(${_target} OBJECT ${_layer_SOURCES})
  target_include_directories(${_target} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  foreach(_lower IN LISTS _layer_BELOW)
    target_link_libraries(${_target} PUBLIC camreq_${_lower})
  endforeach()
  camreq_warnings(${_target})
  # Object libraries give their objects only to a direct consumer, so the
  # shared library links every layer itself.
  target_link_libraries(CCamRequester PRIVATE ${_target})
  set_property(GLOBAL APPEND PROPERTY CAMREQ_LAYERS ${_target})
endfunction()
