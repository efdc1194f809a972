# Our own code builds with every warning as an error. -Wformat=2 checks the
# varargs prints against their formats (and asks for literal formats);
# -Wshadow catches a local that hides a member or an outer name.
function(camreq_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wformat=2 -Wshadow -Werror)
endfunction()
