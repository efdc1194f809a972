# Adds every child folder of DIR that has a CMakeLists.txt, so that a new
# tool, test group or benchmark needs no edit of a shared list.
function(camreq_add_children dir)
  file(GLOB _children LIST_DIRECTORIES true "${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*")
  list(SORT _children)
  foreach(_child IN LISTS _children)
    if(IS_DIRECTORY "${_child}" AND EXISTS "${_child}/CMakeLists.txt")
      add_subdirectory("${_child}")
    endif()
  endforeach()
endfunction()
