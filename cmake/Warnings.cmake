# Our own code builds with every warning as an error.
function(camreq_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()
