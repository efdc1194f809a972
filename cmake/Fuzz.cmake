# The fuzz targets and the replay of their seeds. A target is one source
# fuzz/<group>/fuzz_<name>.cpp that defines LLVMFuzzerTestOneInput, with its
# seeds in fuzz/<group>/corpus_<name>/ (real replies, and every input that
# once broke the library) and the keys it should try in
# fuzz/<group>/<name>.dict (libFuzzer's dictionary format).
#
# Every build replays the seeds: replay_<name> is the target's source with
# the plain driver fuzz/FuzzReplay.cpp, which any compiler builds, and the
# test fuzz_replay_<name> (label fuzz) runs it over the corpus. With
# CAMREQ_FUZZ (clang only) the build also makes fuzz_<name>, the libFuzzer
# program that fuzz/run-short.sh runs, and compiles the whole tree with the
# fuzzer's coverage and ASan+UBSan, so that the library's own code, not a
# copy of it, is what the fuzzer explores.

if(CAMREQ_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "CAMREQ_FUZZ needs clang (-DCMAKE_CXX_COMPILER=clang++)")
  endif()
  set(CAMREQ_SANITIZE "address,undefined")
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# camreq_fuzz_target(NAME [LIBRARIES libraries...])
# Called from the target's group folder.
function(camreq_fuzz_target name)
  cmake_parse_arguments(PARSE_ARGV 1 _fuzz "" "" "LIBRARIES")
  set(_source ${CMAKE_CURRENT_SOURCE_DIR}/fuzz_${name}.cpp)
  set(_corpus ${CMAKE_CURRENT_SOURCE_DIR}/corpus_${name})
  foreach(_needed ${_corpus} ${CMAKE_CURRENT_SOURCE_DIR}/${name}.dict)
    if(NOT EXISTS ${_needed})
      message(FATAL_ERROR "fuzz target ${name}: ${_needed} is missing")
    endif()
  endforeach()

  add_executable(replay_${name} ${_source} ${PROJECT_SOURCE_DIR}/fuzz/FuzzReplay.cpp)
  target_link_libraries(replay_${name} PRIVATE ${_fuzz_LIBRARIES})
  camreq_warnings(replay_${name})
  add_test(NAME fuzz_replay_${name} COMMAND replay_${name} ${_corpus})
  set_tests_properties(fuzz_replay_${name} PROPERTIES LABELS fuzz)

  if(CAMREQ_FUZZ)
    add_executable(fuzz_${name} ${_source})
    target_link_libraries(fuzz_${name} PRIVATE ${_fuzz_LIBRARIES})
    target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
    camreq_warnings(fuzz_${name})
  endif()
endfunction()
