# cmake -DNM=nm -DLIBRARY=libCCamRequester.so -DDEVICE_CALLS=libdevice_calls.so
#       -DREPLACEMENTS=libkxcom.so|libalmsnd.so|libkxhttp.so -P CheckDeviceCalls.cmake
#
# Fails when the library needs a symbol that the replacement platform
# libraries define but the device's calls (DEVICE_CALLS) do not: an
# extension, which the device's own libraries would not resolve.

cmake_minimum_required(VERSION 3.20)

function(dynamic_symbols file which out)
  execute_process(COMMAND ${NM} -D ${which} ${file}
                  OUTPUT_VARIABLE _text ERROR_VARIABLE _error RESULT_VARIABLE _result)
  if(NOT _result EQUAL 0)
    message(FATAL_ERROR "${NM} -D ${which} ${file} failed: ${_error}")
  endif()
  string(REGEX MATCHALL "[^\n]+" _lines "${_text}")
  set(_names)
  foreach(_line IN LISTS _lines)
    # "                 U name@VERSION" or "0000000000001234 T name"
    if(_line MATCHES "[ \t][A-Za-z][ \t]+([^ \t@]+)")
      list(APPEND _names "${CMAKE_MATCH_1}")
    endif()
  endforeach()
  set(${out} ${_names} PARENT_SCOPE)
endfunction()

dynamic_symbols(${LIBRARY} --undefined-only _needed)
dynamic_symbols(${DEVICE_CALLS} --defined-only _device)
string(REPLACE "|" ";" _replacement_files "${REPLACEMENTS}")
set(_replaced)
foreach(_file IN LISTS _replacement_files)
  dynamic_symbols(${_file} --defined-only _defined)
  list(APPEND _replaced ${_defined})
endforeach()

set(_platform_calls)
set(_extensions)
foreach(_name IN LISTS _needed)
  if(_name IN_LIST _replaced)
    list(APPEND _platform_calls ${_name})
    if(NOT _name IN_LIST _device)
      list(APPEND _extensions ${_name})
    endif()
  endif()
endforeach()

if(NOT _platform_calls)
  message(FATAL_ERROR "no platform call found among the undefined symbols of ${LIBRARY}")
endif()
list(LENGTH _platform_calls _count)
if(_extensions)
  list(JOIN _extensions ", " _list)
  message(FATAL_ERROR "${LIBRARY} needs extensions of the replacement libraries: ${_list}")
endif()
message(STATUS "${_count} platform calls, every one of them the device's")
